#!/usr/bin/python3
"""Compiles and runs what the documents show, as a reader would.

    documents.py build --documents docs --install build/release --work <folder> [--cxx <compiler>]
    documents.py run   --documents docs --work <folder> [<page>]
    documents.py links <file>...

The rules by which code is taken from a page:
- A block under a line that is nothing but a file name in bold code (**`first.cpp`**) is the whole file of that name.
- A block under a line "`first` prints:" is all that the program first.cpp writes to standard output. It runs in a
  folder that the page's programs share, in the order of the page, must end with exit code 0 and write no warning.
- The other blocks of C++ of a page are one program: what they include comes first, the rest is the body of a function,
  in their order. It is compiled and not run.
- A page without a CMakeLists.txt and a host.h of its own is built with those of the tutorial.
"""

import argparse
import difflib
import pathlib
import re
import shutil
import subprocess
import sys
import textwrap

FENCE = re.compile(r"^( *)```(\w*)$")
FILE = re.compile(r"^\*\*`([\w.]+)`\*\*$")
PRINTS = re.compile(r"^.*`(\w+)` prints:$")
LINK = re.compile(r"\]\(([^)#]*)(?:#([^)]*))?\)")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)
SHARED = ("CMakeLists.txt", "host.h")


class Page:
    """The code of one page."""

    def __init__(self, path):
        self.name = path.stem
        self.files = {}
        self.prints = []  # (program, text), in the order of the page
        self.fragments = []
        self.read(path.read_text(encoding="utf-8"))

    def read(self, text):
        above = ""
        block = None
        for number, line in enumerate(text.split("\n"), start=1):
            fence = FENCE.match(line)
            if block is not None:
                if line.strip() == "```":
                    self.take(above, language, textwrap.dedent("\n".join(block) + "\n"))
                    block, above = None, ""
                else:
                    block.append(line)
            elif fence:
                block, language = [], fence.group(2)
            elif line.strip().startswith("```"):
                sys.exit(f"{self.name}:{number}: a fence with more than one word")
            elif line.strip():
                above = line.strip()
        if block is not None:
            sys.exit(f"{self.name}: a block has no end")

    def take(self, above, language, code):
        file, prints = FILE.match(above), PRINTS.match(above)
        if file:
            if file.group(1) in self.files:
                sys.exit(f"{self.name}: {file.group(1)} is there twice")
            self.files[file.group(1)] = code
        elif prints:
            self.prints.append((prints.group(1), code))
        elif language == "cpp":
            self.fragments.append(code)

    def hasPrograms(self):
        return bool(self.fragments) or any(name.endswith(".cpp") for name in self.files)

    def fragmentProgram(self):
        """The blocks without a file name as one program; none of a page that has no such blocks."""
        if not self.fragments:
            return {}
        lines = "".join(self.fragments).split("\n")
        includes = [line for line in lines if line.startswith("#include")]
        body = [line for line in lines if not line.startswith("#include")]
        function = ["void page();", "void page()", "{", *body, "}", "int main() { page(); }"]
        code = ['#include "host.h"', *includes, *function]
        return {f"{self.name}_snippets.cpp": "\n".join(code) + "\n"}

    def write(self, folder, shared):
        folder.mkdir(parents=True, exist_ok=True)
        files = {**shared, **self.files, **self.fragmentProgram()}
        for name, code in files.items():
            target = folder / name
            if not target.exists() or target.read_text(encoding="utf-8") != code:  # what is unchanged isn't built anew
                target.write_text(code, encoding="utf-8")
        for stale in set(folder.glob("*.*")) - {folder / name for name in files}:
            stale.unlink()


def pagesOf(folder):
    pages = {path.stem: Page(path) for path in sorted(folder.glob("*.md"))}
    pages = {name: page for name, page in pages.items() if page.hasPrograms()}
    if "tutorial" not in pages:
        sys.exit(f"{folder}: no tutorial")
    for page in pages.values():
        for program, _ in page.prints:
            if f"{program}.cpp" not in page.files:
                sys.exit(f"{page.name}: {program} prints something, but there is no {program}.cpp")
        for file in page.files:
            if file.endswith(".cpp") and file[:-4] not in dict(page.prints):
                sys.exit(f"{page.name}: what does {file} print?")
    return pages


def build(arguments):
    pages = pagesOf(arguments.documents)
    source = arguments.work / "source"
    shared = {name: pages["tutorial"].files[name] for name in SHARED}
    for page in pages.values():
        page.write(source / page.name, shared)
    lines = ["cmake_minimum_required(VERSION 3.25)", "project(documents LANGUAGES CXX)"]
    lines += [f"add_subdirectory({name})" for name in pages]
    (source / "CMakeLists.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")

    prefix = arguments.work / "prefix"
    shutil.rmtree(prefix, ignore_errors=True)
    for component in ("runtime", "development"):
        call(["cmake", "--install", arguments.install, "--prefix", prefix, "--component", component])
    options = [f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_CXX_FLAGS=-O0 -Wall -Wextra -Werror"]
    if arguments.cxx:
        options.append(f"-DCMAKE_CXX_COMPILER={arguments.cxx}")
    if shutil.which("ccache"):
        options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    call(["cmake", "-S", source, "-B", arguments.work / "build", "-G", "Ninja", *options])
    call(["cmake", "--build", arguments.work / "build"])


def call(command):
    """Runs a command; shows what it has written only when it fails."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(str(word) for word in command)}\n{done.stdout}")


def run(arguments):
    pages = pagesOf(arguments.documents)
    chosen = [pages[arguments.page]] if arguments.page else pages.values()
    sys.exit(1 if sum([runPage(page, arguments.work) for page in chosen]) else 0)


def runPage(page, work):
    """Runs the programs of a page, and returns how many don't do what it says."""
    folder = work / "run" / page.name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    failed = 0
    for program, expected in page.prints:
        path = work / "build" / page.name / program
        done = subprocess.run([path], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8",
                              timeout=120, check=False)
        if (done.returncode, done.stdout, done.stderr) == (0, expected, ""):
            print(f"{page.name}: {program} prints what the page says")
            continue
        failed += 1
        print(f"{page.name}: {program} ends with code {done.returncode}\n{done.stderr}")
        print("".join(difflib.unified_diff(expected.splitlines(True), done.stdout.splitlines(True), "the page",
                                           "the program")))
    return failed


def textOf(path):
    """A page without its listings."""
    return re.sub(r"^( *)```.*?^ *```$", "", path.read_text(encoding="utf-8"), flags=re.DOTALL | re.MULTILINE)


def anchorsOf(path):
    """The anchors of the headings of a page, as the usual viewers make them."""
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in HEADING.findall(textOf(path))}


def links(arguments):
    """Whether every relative link leads to a file, and to a heading in it."""
    broken = []
    for path in arguments.files:
        for target, anchor in LINK.findall(textOf(path)):
            if "://" in target:
                continue
            file = path.parent / target if target else path
            if not file.exists():
                broken.append(f"{path}: no such file: {target}")
            elif anchor and anchor not in anchorsOf(file):
                broken.append(f"{path}: no such heading: {target}#{anchor}")
    for line in broken:
        print(line)
    sys.exit(1 if broken else 0)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(required=True)
    for name, action in (("build", build), ("run", run)):
        command = commands.add_parser(name)
        command.set_defaults(action=action)
        command.add_argument("--documents", type=pathlib.Path, required=True)
        command.add_argument("--work", type=pathlib.Path, required=True)
        if action is build:
            command.add_argument("--install", type=pathlib.Path, required=True)
            command.add_argument("--cxx")
        else:
            command.add_argument("page", nargs="?")
    command = commands.add_parser("links")
    command.set_defaults(action=links)
    command.add_argument("files", type=pathlib.Path, nargs="+")
    arguments = parser.parse_args()
    for name in ("documents", "work", "install"):
        if getattr(arguments, name, None):
            setattr(arguments, name, getattr(arguments, name).resolve())
    arguments.action(arguments)


if __name__ == "__main__":
    main()
