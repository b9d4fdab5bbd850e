#!/usr/bin/python3
"""Whether documents.py notices what it is there to notice."""

import argparse
import contextlib
import io
import pathlib
import tempfile
import unittest

import documents

LISTING = "**`greet.cpp`**\n\n```cpp\nint main() {}\n```\n\n"
PRINTS = "`greet` prints:\n\n```text\nhello\n```\n"


class Pages(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, text):
        path = self.folder / f"{name}.md"
        path.write_text(text, encoding="utf-8")
        return path

    def program(self, script):
        """What greet.cpp of the page would have been built to."""
        path = self.folder / "build" / "tutorial" / "greet"
        path.parent.mkdir(parents=True)
        path.write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
        path.chmod(0o755)

    def failures(self):
        page = documents.Page(self.write("tutorial", LISTING + PRINTS))
        with contextlib.redirect_stdout(io.StringIO()):
            return documents.runPage(page, self.folder)

    def broken(self, *paths):
        with contextlib.redirect_stdout(io.StringIO()) as out, self.assertRaises(SystemExit) as end:
            documents.links(argparse.Namespace(files=paths))
        return end.exception.code, out.getvalue()

    def test_a_listing_under_a_file_name_is_that_file(self):
        page = documents.Page(self.write("tutorial", LISTING + PRINTS))
        self.assertEqual(page.files, {"greet.cpp": "int main() {}\n"})
        self.assertEqual(page.prints, [("greet", "hello\n")])
        self.assertEqual(page.fragments, [])

    def test_other_listings_are_one_program_whose_includes_come_first(self):
        first = "```cpp\n#include <a>\nint x;\n```\n"
        second = "- item\n\n  ```cpp\n  #include <b>\n  x = 1;\n  ```\n"
        page = documents.Page(self.write("units", first + second))
        code = page.fragmentProgram()["units_snippets.cpp"]
        order = [code.index(part) for part in ("#include <a>", "#include <b>", "void page()", "int x;", "x = 1;")]
        self.assertEqual(order, sorted(order))

    def test_a_program_that_prints_what_the_page_says_passes(self):
        self.program("echo hello")
        self.assertEqual(self.failures(), 0)

    def test_a_program_that_prints_something_else_fails(self):
        self.program("echo good day")
        self.assertEqual(self.failures(), 1)

    def test_a_warning_fails(self):
        self.program("echo hello; echo careful >&2")
        self.assertEqual(self.failures(), 1)

    def test_an_exit_code_fails(self):
        self.program("echo hello; exit 3")
        self.assertEqual(self.failures(), 1)

    def test_a_program_without_its_output_is_refused(self):
        self.write("tutorial", LISTING)
        self.assertRaisesRegex(SystemExit, "what does greet.cpp print", documents.pagesOf, self.folder)

    def test_an_output_without_its_program_is_refused(self):
        self.write("tutorial", "**`host.h`**\n\n```cpp\n```\n" + PRINTS + "```cpp\n```\n")
        self.assertRaisesRegex(SystemExit, "there is no greet.cpp", documents.pagesOf, self.folder)

    def test_a_file_that_is_there_twice_is_refused(self):
        self.assertRaisesRegex(SystemExit, "greet.cpp is there twice", documents.Page,
                               self.write("tutorial", LISTING + LISTING))

    def test_a_block_without_an_end_is_refused(self):
        self.assertRaisesRegex(SystemExit, "no end", documents.Page, self.write("tutorial", "```cpp\nint x;\n"))

    def test_links_to_files_and_headings_pass(self):
        other = self.write("other", "## It's `here`: == too\n")
        page = self.write("page", "[a](other.md) [b](other.md#its-here--too) [c](https://example.org) [d](#own)\n# Own")
        self.assertEqual(self.broken(page, other), (0, ""))

    def test_links_that_lead_nowhere_fail(self):
        page = self.write("page", "[a](nothing.md) [b](#nowhere)\n")
        code, told = self.broken(page)
        self.assertEqual(code, 1)
        self.assertIn("no such file: nothing.md", told)
        self.assertIn("no such heading: #nowhere", told)


if __name__ == "__main__":
    unittest.main()
