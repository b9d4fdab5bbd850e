#!/usr/bin/python3
"""Runs the commands that compare, join and draw data files, as a person would.

usage: analysis_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import math
import os
import unittest

import command_test
from command_test import LOCALES, SAMPLE, raw


class DiffTest(command_test.CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.raw", raw(3, [1, 2, 3, math.nan, 5, 6]))
        self.good("import", "a.raw", "-o", "a.h5")

    def differences(self, content, *options, other="b"):
        """The lines of a comparison with a file that holds this, in both directions."""
        os.makedirs(self.path("other"), exist_ok=True)
        self.write("other/a.raw", content)  # of the same name, so that the results have it too
        self.good("import", "other/a.raw", "-o", f"{other}.h5")
        return tuple(self.different(*files, *options) for files in (("a.h5", f"{other}.h5"), (f"{other}.h5", "a.h5")))

    def different(self, *arguments, **options):
        result = self.run_orrery("diff", *arguments, **options)
        self.assertEqual(result.stderr, b"")
        lines = result.stdout.decode().splitlines()
        self.assertEqual(result.returncode, 1 if lines else 0, lines)
        return lines

    def test_a_file_is_the_same_as_itself_and_its_copy(self):
        self.import_sample()
        self.good("import", SAMPLE, "-o", "copy.h5")
        self.assertEqual(self.good("diff", "d.h5", "d.h5"), "")
        self.assertEqual(self.good("diff", "d.h5", "copy.h5"), "")

    def test_one_changed_element(self):
        there, back = self.differences(raw(3, [1, 2, 3, math.nan, 5.5, 6]))
        self.assertEqual(len(there), 1)
        self.assertRegex(there[0], "/x/Data: 1 of 3 values differs: at 2, 5 and 5.5; largest relative difference 0.0909$")
        self.assertRegex(back[0], "/x/Data: 1 of 3 values differs: at 2, 5.5 and 5; largest relative difference 0.0909$")
        self.assertEqual(self.differences(raw(3, [1, 2, 3, math.nan, 5.5, 6]), "--tolerance", "0.1"), ([], []))

    def test_a_nan_is_the_same_as_itself_only(self):
        there, _ = self.differences(raw(3, [1, 2, 3, 4, 5, 6]))
        self.assertRegex("\n".join(there), "/y/Data: 1 of 3 values differs: at 1, nan and 4; ")

    def test_a_renamed_vector(self):
        there, back = self.differences(raw(3, [1, 2, 3, math.nan, 5, 6], names=("x", "z")))
        self.assertEqual([line.split("/")[-1] for line in there], ["y: is named 'z' in b.h5"])
        self.assertEqual([line.split("/")[-1] for line in back], ["z: is named 'y' in a.h5"])

    def test_a_missing_vector_on_either_side(self):
        there, back = self.differences(raw(3, [1, 2, 9, 3, math.nan, 9, 5, 6, 9], names=("x", "y", "z")))
        for lines in (there, back):
            self.assertEqual([line.split("/")[-1] for line in lines], ["z: only in b.h5"])

    def test_another_element_type(self):
        content = raw(3, [1, 0, 2, 0, 3, 0, math.nan, 0, 5, 0, 6, 0], flags="complex")
        there, back = self.differences(content)
        self.assertTrue(any(line.endswith("/x/Data: elements double and complex<double>") for line in there), there)
        self.assertTrue(any(line.endswith("/x/Data: elements complex<double> and double") for line in back), back)
        there, _ = self.differences(content, "--ignore-types")
        self.assertEqual([line.split("/")[-1] for line in there], ["Flags: value 'real' and 'complex'"])

    def test_another_shape(self):
        there, _ = self.differences(raw(2, [1, 2, 3, math.nan]))
        self.assertEqual([line.split("/")[-1] for line in there], ["Data: shape 3 and 2"] * 2)

    def test_results_of_other_names_are_compared(self):
        self.write("b.raw", raw(3, [1, 2, 3, math.nan, 5.5, 6]))
        self.good("import", "b.raw", "-o", "b.h5")
        lines = self.different("a.h5", "b.h5")
        self.assertEqual(lines[0], "/a: is named 'b' in b.h5")
        self.assertTrue(lines[1].startswith("/a/dc1/x/Data: 1 of 3 values differs: "), lines)
        self.assertEqual(len(lines), 2)

    def test_trouble_is_2(self):
        self.write("text", b"hello\n")
        self.assertEqual(self.fails(2, "diff", "a.h5", "none.h5"), "none.h5: No such file or directory")
        self.assertEqual(self.fails(2, "diff", "none.h5", "a.h5"), "none.h5: No such file or directory")
        self.assertTrue(self.fails(2, "diff", "a.h5", "text").startswith("text: "))
        self.assertEqual(self.fails(2, "diff", "a.h5"), "B is required; try 'orrery diff --help'")
        for tolerance in ("-1", "nan", "x"):
            self.assertEqual(self.fails(2, "diff", "a.h5", "a.h5", f"--tolerance={tolerance}"),
                             f"--tolerance: expected a number from 0, found '{tolerance}'; try 'orrery diff --help'")

    def test_values_that_are_damaged_are_trouble_that_names_the_file(self):
        self.write("many.raw", raw(10_000, range(10_000), names=("x",)))
        self.good("import", "many.raw", "-o", "many.h5")
        with open(self.path("many.h5"), "rb") as file:
            content = bytearray(file.read())
        place = content.index(b"\x00\x00\x00\x00\x00\x88\xb3\x40")  # 5000.0
        content[place] = 1
        self.write("damaged.h5", content)
        for files in (("many.h5", "damaged.h5"), ("damaged.h5", "many.h5")):
            self.assertRegex(self.fails(2, "diff", *files), "^damaged.h5: .*/x/Data")

    def test_output_that_can_not_be_written_is_trouble(self):
        self.differences(raw(1, [1, 2]))
        with open("/dev/full", "wb") as full:
            result = command_test.subprocess.run([command_test.ORRERY, "diff", "a.h5", "b.h5"], cwd=self.folder,
                                                 stdout=full, stderr=command_test.subprocess.PIPE, timeout=60)
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (2, "orrery: standard output: No space left on device\n"))

    def test_numbers_are_the_same_in_any_locale(self):
        self.differences(raw(3, [1, 2, 3, math.nan, 5.5, 6]))
        texts = {"\n".join(self.different("a.h5", "b.h5", environment=environment)) for environment in LOCALES}
        self.assertEqual(len(texts), 1)


if __name__ == "__main__":
    unittest.main()
