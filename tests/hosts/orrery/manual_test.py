#!/usr/bin/python3
"""Reads the manual pages and the completion that the build has made, as man and bash do.

usage: manual_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import os
import pty
import re
import select
import shutil
import subprocess
import tempfile
import time
import unittest

import command_test
from command_test import ORRERY, SAMPLE, SOURCES

MANUAL = os.environ.get("ORRERY_MANUAL", os.path.join(os.path.dirname(ORRERY), "manual"))  # in a build folder
VALUE_FILES = os.environ.get("ORRERY_VALUE_FILES", os.path.join(
    os.path.dirname(ORRERY), "../../tests/hosts/orrery/orrery_value_files"))
PAGES = os.path.join(MANUAL, "man1")
COMPLETION = os.path.join(MANUAL, "completions/orrery")


def commands():
    text = subprocess.run([ORRERY, "--help"], capture_output=True, check=True).stdout.decode()
    names = re.findall(r"^  (\S+) ", text.partition("\nCommands:\n")[2].partition("\n\n")[0], re.MULTILINE)
    assert len(names) > 5, names
    return names


class PageTest(unittest.TestCase):
    def pages(self):
        return sorted(os.listdir(PAGES))

    def shown(self, page):
        environment = {**os.environ, "LC_ALL": "C.UTF-8"}
        result = subprocess.run(["groff", "-ww", "-man", "-Tutf8", "-P-cbou", "-rLL=80n", os.path.join(PAGES, page)],
                                capture_output=True, env=environment)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""), page)
        return result.stdout.decode()

    def test_there_is_one_for_the_program_and_each_command(self):
        self.assertEqual(self.pages(), sorted(["orrery.1", *(f"orrery-{name}.1" for name in commands())]))

    def test_each_is_without_warnings_and_fits_a_terminal(self):
        for page in self.pages():
            for line in self.shown(page).splitlines():
                self.assertLessEqual(len(line), 80, page)

    def test_each_has_its_sections_in_order(self):
        ends = ["DESCRIPTION", "OPTIONS", "EXIT STATUS", "EXAMPLES", "SEE ALSO"]
        for page in self.pages():
            sections = re.findall(r"^([A-Z][A-Z ]+)$", self.shown(page), re.MULTILINE)
            if page == "orrery.1":
                self.assertEqual(sections, ["NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS",
                                            "ENVIRONMENT", "FILES", "EXAMPLES", "SEE ALSO"])
            else:
                self.assertEqual(sections, ["NAME", "SYNOPSIS", *ends], page)

    def test_each_says_what_the_help_says(self):
        for name in commands():
            words = " ".join(self.shown(f"orrery-{name}.1").replace("\N{HYPHEN}", "-").split())
            help_text = subprocess.run([ORRERY, name, "--help"], capture_output=True, check=True).stdout.decode()
            options = re.findall(r"(?<![\w-])--[a-z][a-z-]+", help_text)
            self.assertIn("--help", options)
            for option in options:
                self.assertIn(option, words, name)
            self.assertIn("(1)", words)
            examples = re.findall(r"^(?:Examples?:)? +(orrery [^\n]*)$", help_text, re.MULTILINE)
            self.assertTrue(examples, name)
            for example in examples:
                self.assertIn(" ".join(example.split()), words, name)

    def test_the_program_names_all_of_them(self):
        text = self.shown("orrery.1")
        for name in commands():
            self.assertGreaterEqual(text.count(f"orrery-{name}(1)"), 2, name)
        for word in ("NO_COLOR", "TERM", "--color", "h5dump(1)"):
            self.assertIn(word, text)

    def test_nothing_of_the_machine_and_of_the_day_is_in_them(self):
        for page in self.pages():
            with open(os.path.join(PAGES, page), encoding="ascii") as file:
                source = file.read()
            self.assertNotIn(SOURCES, source)
            title = re.search(r'^\.TH (\S+) 1 "([0-9-]*)" "orrery [0-9.]+" "Orrery Manual"$', source, re.MULTILINE)
            self.assertTrue(title, page)
            self.assertEqual(title[1].replace("\\", ""), page[:-2].upper())
            epoch = os.environ.get("SOURCE_DATE_EPOCH")
            if not epoch:
                self.assertEqual(title[2], "")

    def test_the_date_is_that_of_the_sources_where_it_is_told(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        writer = os.path.join(MANUAL, "orrery_manual_writer")
        for name in ("a", "b"):
            subprocess.run([writer, f"{folder}/{name}", f"{folder}/{name}.bash", "1.2.3"], check=True,
                           env={**os.environ, "SOURCE_DATE_EPOCH": "86400"})
        with open(f"{folder}/a/orrery.1", encoding="ascii") as file:
            self.assertIn('.TH ORRERY 1 "1970-01-02" "orrery 1.2.3" "Orrery Manual"\n', file.read())
        self.assertEqual(subprocess.run(["diff", "-r", f"{folder}/a", f"{folder}/b"]).returncode, 0)
        self.assertEqual(subprocess.run([writer], stderr=subprocess.PIPE).returncode, 2)
        self.assertEqual(subprocess.run([writer, "/dev/null/x", "/dev/null/y", "1"], stderr=subprocess.PIPE).returncode, 1)


class CompletionTest(command_test.CommandTest):
    def setUp(self):
        super().setUp()
        self.good("import", SAMPLE, "-o", "d.h5", "--sweep", "temperature=-40,0,27,85,125", "--sweep-units", "degC")
        subprocess.run([VALUE_FILES, "v.h5"], cwd=self.folder, check=True)
        for name in ("x.raw", "x.s2p", "x.csv", "x.txt", "X.H5", "a b.svg", "$(touch bad).raw"):
            self.write(name, b"")
        os.mkdir(self.path("folder"))

    def complete(self, line, words=None, environment=None):
        """What bash would offer for the last word of a line; `words` are those that it splits it into."""
        words = line.split(" ") if words is None else words
        script = f"""
            source {COMPLETION} || exit 3
            PATH={os.path.dirname(ORRERY)}:$PATH COMP_LINE=$1 COMP_POINT=${{#1}}
            shift
            COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
            _orrery
            printf '%s\\0' "${{COMPREPLY[@]}}"
        """
        result = subprocess.run(["bash", "--norc", "--noprofile", "-c", script, "bash", line, *words], cwd=self.folder,
                                capture_output=True, timeout=60, env={**os.environ, **(environment or {})})
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""), line)
        return [word for word in result.stdout.decode().split("\0") if word]

    def test_commands(self):
        self.assertEqual(self.complete("orrery "), commands())
        self.assertEqual(self.complete("orrery imp"), ["import"])
        self.assertEqual(self.complete("orrery -v --color never imp"), ["import"])
        self.assertEqual(self.complete("orrery frob"), [])
        self.assertNotIn("__complete", self.complete("orrery _"))

    def test_options_of_each_command_are_those_of_its_help(self):
        for name in commands():
            text = self.good(name, "--help")
            listed = re.findall(r"(?<=[ ,])--?[a-z][a-z-]*", text.partition("\nOptions:\n")[2].partition("\n\n")[0])
            offered = self.complete(f"orrery {name} -")
            for option in re.findall(r"^  (-\S+)", text, re.MULTILINE):
                for one in option.split(","):
                    self.assertIn(one, offered, name)
            self.assertTrue(set(listed) <= set(offered), name)
            self.assertEqual(len(set(offered)), len(offered), name)
        self.assertEqual(self.complete("orrery show d.h5 x --fun"), ["--function"])
        self.assertEqual(self.complete("orrery convert -- -"), [])

    def test_files_by_kind(self):
        self.assertEqual(self.complete("orrery ls "), ["X.H5", "d.h5", "folder", "v.h5"])
        self.assertEqual(self.complete("orrery watch "), ["$(touch bad).raw", "folder", "x.raw"])
        self.assertIn("x.s2p", self.complete("orrery import "))
        self.assertNotIn("x.txt", self.complete("orrery import "))
        self.assertEqual(self.complete("orrery plot d.h5 x -o "), ["a b.svg", "folder"])
        self.assertEqual(self.complete("orrery copy d.h5 --output=d", ["orrery", "copy", "d.h5", "--output", "=", "d"]),
                         ["d.h5"])
        self.assertEqual(self.complete("orrery diff d.h5 v"), ["v.h5"])
        self.assertEqual(self.complete("orrery ls x.t"), ["x.txt"])  # better than nothing
        self.assertEqual(self.complete("orrery ls none"), [])

    def test_files_with_any_name(self):
        self.assertEqual(self.complete("orrery plot d.h5 x -o a\\ ", ["orrery", "plot", "d.h5", "x", "-o", "a\\ "]),
                         ["a b.svg"])
        self.assertEqual(self.complete("orrery watch '$(", ["orrery", "watch", "'$("]), ["$(touch bad).raw"])
        self.assertEqual(self.complete("orrery watch $(touch evil)", ["orrery", "watch", "$(touch evil)"]), [])
        self.assertEqual(self.complete("orrery ls ~/d", environment={"HOME": self.folder}), ["~/d.h5"])
        self.assertEqual(self.complete("orrery ls ~/d.h5 dio", environment={"HOME": self.folder}), ["diode/"])
        self.assertFalse({"bad", "evil"} & set(os.listdir(self.folder)))

    def test_nodes(self):
        self.assertEqual(self.complete("orrery show d.h5 dio"), ["diode/"])
        self.assertEqual(self.complete("orrery show d.h5 /dio"), ["/diode/"])
        variables = [f"diode/dc1/{name}" for name in ("i(vd)", "temperature", "v(anode)", "v(v-sweep)")]
        self.assertEqual(self.complete("orrery show d.h5 diode/dc1/"), variables)
        self.assertEqual(self.complete("orrery show --csv d.h5 --units mA diode/dc1/"), variables)
        for word in ("'diode/dc1/i(", '"diode/dc1/i(', "diode/dc1/i\\("):
            self.assertEqual(self.complete(f"orrery show d.h5 {word}", ["orrery", "show", "d.h5", word]), variables[:1])
        self.assertEqual(self.complete("orrery plot d.h5 diode/dc1 diode/dc2/t"), ["diode/dc2/temperature"])
        for file_name in ("none.h5", "x.raw", "folder"):
            self.assertEqual(self.complete(f"orrery show {file_name} x"), [])
        self.assertEqual(self.complete("orrery show d.h5 nowhere/"), [])
        self.assertEqual(self.complete("orrery show d.h5 diode/dc1/temperature/"), ["diode/dc1/temperature/Unit/"])

    def test_nodes_with_any_name(self):
        self.assertEqual(self.complete("orrery show v.h5 a"), ["a b%2Fc'd/"])
        self.assertEqual(self.complete("orrery show v.h5 x", ["orrery", "show", "v.h5", "a\\ b%2Fc\\'d/"]),
                         ["a\\ b%2Fc\\'d/q\\\"\\$x"])  # readline doesn't quote a $
        self.assertEqual(self.complete("orrery show v.h5 x", ["orrery", "show", "v.h5", "\"a b%2Fc'd/q\\\""]),
                         ["a b%2Fc'd/q\"$x"])
        self.assertEqual(self.complete("orrery show v.h5 it"), ["it\\'s\\ \\(50%25\\)\\ \\\"big\\\"\\ \\&\\ \\$HOME"])
        self.assertEqual(self.complete("orrery show v.h5 \"it", ["orrery", "show", "v.h5", '"it']),
                         ["it's (50%25) \"big\" & $HOME"])
        self.assertEqual(self.complete("orrery show v.h5 half"), ["half%01"])
        self.assertNotIn("hidden", self.complete("orrery show v.h5 h"))

    def test_units_types_and_choices(self):
        self.assertIn("mA", self.complete("orrery show d.h5 x --units m"))
        self.assertIn("mA", self.complete("orrery show d.h5 x --units=m", ["orrery", "show", "d.h5", "x", "--units", "=", "m"]))
        self.assertIn("degC", self.complete("orrery convert 5 deg"))
        self.assertIn("mA,kV", self.complete("orrery import x.raw --display-units mA,k"))
        self.assertEqual(self.complete("orrery units --type magnetic\\ flux\\ d",
                                       ["orrery", "units", "--type", "magnetic\\ flux\\ d"]), ["magnetic flux density"])
        self.assertEqual(self.complete("orrery --color "), ["auto", "always", "never"])
        self.assertEqual(self.complete("orrery --color=a", ["orrery", "--color", "=", "a"]), ["auto", "always"])
        self.assertEqual(self.complete("orrery --color=", ["orrery", "--color", "="]), ["auto", "always", "never"])
        self.assertEqual(self.complete("orrery --color=a", ["orrery", "--color=a"]), ["--color=auto", "--color=always"])
        self.assertEqual(self.complete("orrery show d.h5 x --at "), [])

    def test_the_program_answers_for_it(self):
        self.assertEqual(self.good("__complete", "nodes", "d.h5", "dio"), "diode/\n")
        self.assertEqual(self.good("__complete", "types", "mass"), "mass\n")
        self.assertEqual(self.good("__complete", "frob", "x"), "")
        self.assertNotIn("__complete", self.good("--help"))

    def typed(self, keys):
        """What a bash of a terminal prints after some keys."""
        master, slave = pty.openpty()
        environment = {"PATH": f"{os.path.dirname(ORRERY)}:{os.environ['PATH']}", "TERM": "dumb", "HOME": self.folder,
                       "PS1": "$ ", "LC_ALL": "C.UTF-8", "INPUTRC": "/dev/null"}
        process = subprocess.Popen(["bash", "--norc", "--noprofile", "-i"], cwd=self.folder, stdin=slave, stdout=slave,
                                   stderr=slave, env=environment, start_new_session=True)
        os.close(slave)
        os.write(master, f"source '{COMPLETION}'; echo re''ady\n".encode())
        shown = self.read_until(master, b"ready\r\n")
        os.write(master, keys + b"\necho do''ne\n")
        shown = self.read_until(master, b"done\r\n")
        os.write(master, b"exit\n")
        process.wait(timeout=60)
        os.close(master)
        return shown.decode()

    def read_until(self, master, end):
        shown = b""
        limit = time.monotonic() + 100
        while end not in shown:
            self.assertTrue(select.select([master], [], [], max(0, limit - time.monotonic()))[0], shown)
            shown += os.read(master, 65536)
        return shown

    def test_a_completed_line_runs(self):
        for keys, result in ((b"orrery show d.h5 'diode/dc1/te\t", "\r\n-40\r\n"),
                             (b"orrery show d.h5 diode/dc1/te\t", "\r\n-40\r\n"),
                             (b"orrery show d.h5 diode/dc1/i\t --at 0 --csv", "offset,v(v-sweep) [V],i(vd) [A]\r\n"),
                             (b"orrery show v.h5 it\t", "\r\n3.5\r\n"),
                             (b"orrery show v.h5 a\tq\t", "\r\n1.5\r\n"), (b"orrery show v.h5 'a\tq\t", "\r\n1.5\r\n"),
                             (b"orrery show v.h5 hal\t", "\r\n2.5\r\n"),
                             (b"orrery units --type magnetic\\ flux\\ d\t --color=ne\t", "magnetic flux density (T)\r\n")):
            self.assertIn(result, self.typed(keys), keys)


if __name__ == "__main__":
    unittest.main()
