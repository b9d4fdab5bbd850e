#!/usr/bin/python3
"""Imports CSV files as a person would, and looks at the data file as an outsider.

usage: csv_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import csv
import io
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy as np

ORRERY = os.path.abspath(sys.argv.pop(1))
sys.argv.pop(1)
with open(ORRERY, "rb") as program:
    IS_SANITIZED = b"__asan_init" in program.read()


class CsvTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, content, name="x.csv"):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return name

    def run_orrery(self, *arguments, **options):
        return subprocess.run([ORRERY, *arguments], cwd=self.folder, capture_output=True, text=True, timeout=240,
                              **options)

    def good(self, *arguments):
        result = self.run_orrery(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""), arguments)
        return result.stdout

    def read(self, content, *options, name="x.csv"):
        """The variables that an import makes of the content: what stands in its listing, and the values as text."""
        self.write(content, name)
        self.assertEqual(self.good("import", name, "-o", "x.h5", *options), "")
        read = {}
        for line in self.good("ls", "x.h5", "x/table").splitlines():
            if "ExplVar" not in line:
                continue
            words = line.split()
            shown = self.good("show", "x.h5", "x/table/" + words[0], "--csv")
            read[words[0]] = (" ".join(words[2:]), list(csv.reader(io.StringIO(shown))))
        return read

    def column(self, entry):
        return [row[-1] for row in entry[1][1:]]

    def refuses(self, content, *words, options=(), code=1, name="x.csv"):
        self.write(content, name)
        result = self.run_orrery("import", name, "-o", "x.h5", *options)
        self.assertEqual((result.returncode, result.stdout), (code, ""), result.stderr)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        for word in words:
            self.assertIn(word, result.stderr)
        self.assertFalse(os.path.exists(self.path("x.h5")))


class ReadingTest(CsvTest):
    def test_names_units_types_and_the_axis(self):
        read = self.read("time [s], v(out) [V], i [mA],n,word,is\n0,1.5,1,3,foo,true\n1,-2e3,2,-4,b r,false\n")
        self.assertEqual(read["time"][0], "2 int64 [s]")
        self.assertEqual(read["v(out)"][0], "2 double [V] over time")
        self.assertEqual(read["i"][0], "2 int64 [mA] over time")
        self.assertEqual(read["n"][0], "2 int64 over time")
        self.assertEqual(read["word"][0], "2 text over time")
        self.assertEqual(read["is"][0], "2 bool over time")
        self.assertEqual(self.column(read["v(out)"]), ["1.5", "-2000"])
        self.assertEqual(self.column(read["word"]), ["foo", "b r"])
        with h5py.File(self.path("x.h5"), "r") as file:
            self.assertEqual(file["x/table/v(out)/Data"][()].tolist(), [1.5, -2000.0])
            self.assertEqual(file["x/table/n/Data"].dtype, np.int64)

    def test_types_of_columns(self):
        for cells, kind, expected in (
                (["1", "+2"], "int64", ["1", "2"]), (["1", "2.0"], "double", ["1", "2"]),
                (["1", ""], "double", ["1", "nan"]), (["", ""], "double", ["nan", "nan"]),
                (["9223372036854775807", "-9223372036854775808"], "int64", None),
                (["9223372036854775808", "0"], "uint64", None),
                (["9223372036854775808", "-1"], "double", ["9223372036854775808", "-1"]),
                (["18446744073709551616", "0"], "double", ["18446744073709551616", "0"]),
                (["-0", "1"], "double", None), (["nan", "-inf"], "double", None), (["1e5", "2"], "double", None),
                (["true", "false"], "bool", None), (["true", "1"], "text", None), (["true", ""], "text", None),
                (["1", "x"], "text", None), (["0x10", "1"], "text", None), (["1 2", "3"], "text", None),
                (["1,5", "2"], "text", None)):
            with self.subTest(cells):
                rows = "".join(f'{i},"{cell}"\n' for i, cell in enumerate(cells))
                read = self.read("t,x\n" + rows)["x"]
                self.assertEqual(read[0], f"2 {kind} over t")
                shown = self.column(read)
                if kind == "double":
                    self.assertEqual([float(text) for text in shown if text != "nan"],
                                     [float(text) for text in expected or cells if text not in ("nan", "")])
                else:
                    self.assertEqual(shown, expected or cells)

    def test_separators(self):
        for separator, name in ((",", "comma"), (";", "semicolon"), ("\t", "tab")):
            content = separator.join(["t [s]", "x [V]"]) + "\n" + separator.join(["1", "2.5"]) + "\n"
            self.assertEqual(self.column(self.read(content)["x"]), ["2.5"])
            self.assertEqual(self.column(self.read(content, "--separator", name)["x"]), ["2.5"])
        self.assertEqual(self.column(self.read("t;v(a,b) [V]\n1;2\n")["v(a,b)"]), ["2"])
        self.assertEqual(self.column(self.read('"a;b",x\n1,2\n')["x"]), ["2"])
        self.assertEqual(self.column(self.read("a;b,x\n1,2\n", "--separator", "comma")["x"]), ["2"])

    def test_decimal_commas_only_when_told(self):
        content = "t [s];x\n0,5;1,25e3\n1;-3\n"
        read = self.read(content, "--decimal-comma")
        self.assertEqual(self.column(read["x"]), ["1250", "-3"])
        self.assertEqual(self.column(read["t"]), ["0.5", "1"])
        self.assertEqual(self.column(self.read(content.replace(" [s]", ""))["x"]), ["1,25e3", "-3"])
        self.assertEqual(self.read("t;x\n1;1.5\n", "--decimal-comma")["x"][0], "1 text over t '1.5'")

    def test_quoted_fields(self):
        self.write('t,"a ""b"", c"\r\n1,"two\r\nlines, ""q"""\r\n 2 , plain \r\n"3",""\r\n')
        self.good("import", "x.csv", "-o", "x.h5")
        shown = self.good("show", "x.h5", 'x/table/a "b", c', "--csv")
        rows = list(csv.reader(io.StringIO(shown)))
        self.assertEqual(rows[0], ["offset", "t", 'a "b", c'])
        self.assertEqual([row[2] for row in rows[1:]], ['two\nlines, "q"', "plain", ""])

    def test_lines_that_are_no_records(self):
        read = self.read(b"\xef\xbb\xbf# first\n\n#second\nt,x\n\n1,2\n# third\n   \n3,4")
        self.assertEqual(self.column(read["x"]), ["2", "4"])
        self.assertIn("second", self.good("show", "x.h5", "x/Setup/table/Comment"))

    def test_carriage_returns(self):
        read = self.read('t,"x\ry" \r\n1,2\r\n\r\n3,"4"\r\n')
        self.assertEqual(self.column(read["x%0dy"]), ["2", "4"])

    def test_encodings(self):
        for content in ("t,x [µA]\n1,2\n".encode(), "t,x [µA]\n1,2\n".encode("latin-1"),
                        b"\xff\xfe" + "t,x [µA]\n1,2\n".encode("utf-16-le")):
            self.assertEqual(self.read(content)["x"][0], "1 int64 [µA] over t 2")
        self.assertEqual(self.column(self.read("t,x\n1,20 °C\n".encode("latin-1"))["x"]), ["20 °C"])

    def test_the_axis_that_is_wanted(self):
        content = "a,b,c\n1,2,3\n4,5,6\n"
        self.assertEqual({name: entry[0] for name, entry in self.read(content, "--axis", "b").items()},
                         {"a": "2 int64 over b", "b": "2 int64", "c": "2 int64 over b"})
        self.assertEqual({entry[0] for entry in self.read(content, "--no-axis").values()}, {"2 int64"})

    def test_units_in_brackets(self):
        for heading, name, units in (("x [kV]", "x", " [kV]"), ("x[kV]", "x", " [kV]"), ("x []", "x", ""),
                                     ("x [-]", "x", " [1]"), ("x [1]", "x", " [1]"), ("x [ mm^2 ]", "x", " [mm^2]"),
                                     ("x [degC]", "x", " [°C]"), ("x [dBm]", "x", " [dBm]"), ("x[3]", "x[3]", "")):
            with self.subTest(heading):
                read = self.read(f"t,{heading}\n1,2\n")
                self.assertEqual(read[name][0], f"1 int64{units} over t 2")

    def test_what_belongs_together(self):
        read = self.read("t,z.re [Ohm],z.im [Ohm],m[0],m[1],w.re,y[1],y[0]\n1,2,3,4,5.5,6,7,8\n2,-1,-2,6,7,8,9,10\n")
        self.assertEqual(read["z"][0], "2 complex<double> [Ω] over t")
        self.assertEqual([row[2:] for row in read["z"][1][1:]], [["2", "3"], ["-1", "-2"]])
        self.assertEqual(read["m"][0], "2 x 2 double over t")
        self.assertEqual([row[2:] for row in read["m"][1][1:]], [["4", "5.5"], ["6", "7"]])
        self.assertEqual(set(read) - {"t", "z", "m"}, {"w.re", "y[1]", "y[0]"})

    def test_names_that_are_taken_or_missing(self):
        self.write("t,x,x,\n1,2,3,4\n")
        result = self.run_orrery("import", "x.csv", "-o", "x.h5")
        self.assertEqual(result.returncode, 0)
        self.assertIn("the column 'x' is called 'x_2'", result.stderr)
        self.assertIn("column4", self.good("ls", "x.h5", "x/table"))

    def test_a_header_alone(self):
        read = self.read("t [s],x [V]\n")
        self.assertEqual(read["x"][0], "0 double [V] over t")

    def test_formats_by_name_content_and_option(self):
        for name, content, options in (("x.txt", "t;x\n1;2\n", ()), ("x.csv", "t\n1\n", ()), ("x", "t\n1\n", ("csv",)),
                                       ("x.dat", "# log\nt\tx\n1\t2\n", ()), ("x.s2p", "t,x\n1,2\n", ("csv",))):
            with self.subTest(name):
                self.write(content, name)
                self.good("import", name, "-o", "x.h5", *(("--format",) + options if options else ()))
                self.assertIn("table", self.good("ls", "x.h5"))
        self.write("! x\n# GHz S RI R 50\n1 0 0\n", "y.txt")
        self.good("import", "y.txt", "-o", "x.h5", "--ports", "1")
        self.assertIn("S11", self.good("ls", "x.h5"))


class RefusalTest(CsvTest):
    def test_what_is_malformed_is_refused_with_its_place(self):
        for content, words in (
                ("", ["line 1", "a header line"]), ("# only\n\n", ["line 3", "a header line"]),
                ("a,b\r1,2\r3,4\r", ["line 1", "a line feed at the end of the header", "'a,b\\r1,2\\r3,4'"]),
                ("a,b\n1,2\n3\n", ["line 3", "2 fields", "found 1"]),
                ("a,b\n1,2\n\n3,4,5\n", ["line 4", "2 fields", "found 3"]),
                ("a [quux],b\n1,2\n", ["line 1", "column 1", "'a [quux]'"]),
                ("a,b [V]\n1,2\n2,x\n", ["line 3", "a number in column 2, 'b'", "'x'"]),
                ("a,b [V]\n1,true\n", ["line 2", "a number in column 2"]),
                ("a,b.re,b.im\n1,2,x\n", ["line 2", "a number in column 3"]),
                ('a,b\n1,"x\ny\n', ["the closing quote", "line 2", "the end of the file"]),
                ('a,b\n1,x"y"\n', ["line 2", "field 2"]), ('a,b\n1,"x"y\n', ["line 2", "field 2"]),
                (b"a,b\n1,\0\n", ["line 2", "a line of text"]),
                ("a;b [V]\n1;1,5\n", ["line 2", "a number in column 2, 'b'", "'1,5'"]),
                (",".join(f"c{i}" for i in range(16385)) + "\n", ["line 1", "at most 16384 columns"]),
                ("a,b\n1," + "x" * (17 << 20) + "\n", ["line 2", "16777216 bytes"])):
            with self.subTest(content[:40]):
                self.refuses(content, "orrery: x.csv: ", *words)

    def test_units_may_be_ignored(self):
        self.assertEqual(self.read("a [quux],b [V]\n1,2\n", "--ignore-units")["b"][0], "1 int64 [V] over a 2")

    def test_wrong_usage(self):
        for options, word in ((("--axis", "c"), "there is no column 'c'"), (("--axis", "z"), "more than one number")):
            self.refuses("a,z.re,z.im\n1,2,3\n", word, options=options)
        for options, word in ((("--axis", "a", "--no-axis"), "--no-axis"), (("--separator", "dot"), "--separator"),
                              (("--separator", "comma", "--decimal-comma"), "--decimal-comma"),
                              (("--ports", "2"), "--ports"), (("--sweep", "a=1"), "--sweep"),
                              (("--format", "xml"), "--format")):
            self.refuses("a,b\n1,2\n", word, "--help", options=options, code=2)
        self.refuses("# Hz\n1 0 0\n", "--axis: is for a CSV file", options=("--axis", "a"), code=2, name="x.s1p")
        self.refuses("# Hz\n1 0 0\n", "--ports", options=("--ports", "100"), code=2, name="x.s1p")


class SizeTest(CsvTest):
    def test_memory_is_that_of_the_values(self):
        records = 1_000_000
        with open(self.path("x.csv"), "w") as file:
            file.write("t [s],v [V],n\n")
            for start in range(0, records, 1000):
                file.write("".join(f"{i}e-6,{i % 977}.25,{i}\n" for i in range(start, start + 1000)))
        self.write("t [s],v [V],n\n1,2,3\n", "small.csv")
        small = self.peak("small.csv")
        values = 3 * 8 * records
        # the address sanitizer keeps what was freed, up to 256 MiB, and notes beside what is in use
        limit = 2 * values + (320 << 20) if IS_SANITIZED else 1.1 * values + (16 << 20)
        self.assertLess(self.peak("x.csv") - small, limit)
        with h5py.File(self.path("x.h5"), "r") as file:
            self.assertEqual(file["x/table/n/Data"][-1], records - 1)
            np.testing.assert_array_equal(file["x/table/v/Data"][()], np.arange(records) % 977 + 0.25)

    def peak(self, name):
        """Bytes of memory that an import has taken at most."""
        pid = os.posix_spawn(ORRERY, [ORRERY, "import", self.path(name), "-o", self.path("x.h5")], os.environ)
        _, status, usage = os.wait4(pid, 0)
        self.assertEqual(status, 0)
        return usage.ru_maxrss * 1024


if __name__ == "__main__":
    unittest.main()
