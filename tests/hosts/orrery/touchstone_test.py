#!/usr/bin/python3
"""Compares what the program makes of Touchstone files with scikit-rf's reading of them, and with the rules of the
format where scikit-rf doesn't keep them.

usage: touchstone_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import cmath
import decimal
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy as np
import skrf
from skrf.io.touchstone import Touchstone

ORRERY = os.path.abspath(sys.argv.pop(1))
sys.argv.pop(1)
UNITS = {"Hz": 0, "kHz": 3, "MHz": 6, "GHz": 9}


def in_hertz(text, unit):
    """The double next to the number as it is written."""
    return float(decimal.Decimal(text).scaleb(UNITS[unit]))


class TouchstoneTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.random = np.random.default_rng(7)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return name

    def run_import(self, name, *options, environment=None):
        return subprocess.run([ORRERY, "import", name, "-o", "out.h5", *options], cwd=self.folder,
                              capture_output=True, text=True, timeout=120,
                              env={**os.environ, **(environment or {})})

    def values(self, name, *options, warns="", **more):
        """What an import must make of the file: the folders with their variables, as NumPy arrays."""
        result = self.run_import(name, *options, **more)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout, "")
        if warns:
            self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
            self.assertIn(warns, result.stderr)
        else:
            self.assertEqual(result.stderr, "")
        return {folder: self.read_folder(folder) for folder in self.folders()}

    def show(self, *arguments):
        return subprocess.run([ORRERY, *arguments], cwd=self.folder, capture_output=True, text=True,
                              check=True).stdout

    def folders(self):
        listing = self.show("ls", "out.h5").splitlines()
        return [line.split("/")[0].strip() for line in listing if line.startswith("  ") and "/" in line.split()[0]
                and "Setup" not in line]

    def read_folder(self, folder):
        with h5py.File(self.path("out.h5"), "r") as file:
            root = file[[name for name in file if name in self.show("ls", "out.h5").split("/")[0]][0]]
            read = {}
            for name in root[folder]:
                data = root[folder][name]["Data"][()]
                read[name] = data["r"] + 1j * data["i"] if data.dtype.names else data
            return read

    def refuses(self, name, *words, options=()):
        """A file that must be refused with one line that names file and place, leaving nothing behind."""
        result = self.run_import(name, *options)
        self.assertEqual((result.returncode, result.stdout), (1, ""), result.stderr)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertTrue(result.stderr.startswith(f"orrery: {name}: "), result.stderr)
        for word in words:
            self.assertIn(word, result.stderr)
        self.assertFalse(os.path.exists(self.path("out.h5")))

    def network(self, ports, points=7):
        values = self.random.normal(size=(points, ports, ports)) + 1j * self.random.normal(size=(points, ports, ports))
        return skrf.Network(f=np.linspace(1.1, 2.3, points) * 1e9, s=values, z0=50, f_unit="Hz")

    def compare(self, read, expected, parameter="S"):
        ports = expected.shape[1]
        between = "_" if ports > 9 else ""
        for row in range(ports):
            for column in range(ports):
                name = f"{parameter}{row + 1}{between}{column + 1}"
                np.testing.assert_allclose(read[name], expected[:, row, column], rtol=4e-15, atol=1e-15, err_msg=name)


class FilesOfScikitRfTest(TouchstoneTest):
    def test_its_files_of_one_to_four_ports_in_all_formats(self):
        count = 0
        for ports in (1, 2, 3, 4):
            for form in ("ri", "ma", "db"):
                with self.subTest(ports=ports, form=form):
                    self.network(ports).write_touchstone("x", dir=self.folder, form=form)
                    name = f"x.s{ports}p"
                    frequencies, values = Touchstone(self.path(name)).get_sparameter_arrays()
                    read = self.values(name)["network"]
                    np.testing.assert_allclose(read["frequency"], frequencies, rtol=3e-16)
                    self.compare(read, values)
                    self.assertEqual(read["reference"].tolist(), [50.0] * ports)
                    count += 1
        self.assertEqual(count, 12)

    def test_more_than_nine_ports(self):
        self.network(12, points=3).write_touchstone("x", dir=self.folder)
        read = self.values("x.s12p")["network"]
        self.assertEqual(len(read), 12 * 12 + 2)
        self.compare(read, Touchstone(self.path("x.s12p")).get_sparameter_arrays()[1])

    def test_version_2_of_scikit_rf(self):
        text = ("[Version] 2.0\n# MHz S RI R 50\n[Number of Ports] 3\n[Number of Frequencies] 2\n"
                "[Reference]\n50 75 25.5\n[Network Data]\n")  # on a line of their own, as scikit-rf wants them
        for frequency in ("1.1", "2.7"):
            rows = self.random.normal(size=(3, 6))
            text += frequency + "".join(" ".join(f" {value!r}" for value in row) + "\n" for row in rows)
        self.write("x.ts", text + "[End]\n")
        oracle = Touchstone(self.path("x.ts"))
        read = self.values("x.ts")["network"]
        self.compare(read, oracle.get_sparameter_arrays()[1])
        self.assertEqual(read["reference"].tolist(), oracle.reference)

    def test_noise(self):
        text = ("# GHz S MA R 75\n1 .5 10 2 20 .1 30 .4 40\n2 .5 11 2 21 .1 31 .4 41\n"
                "3 .5 12 2 22 .1 32 .4 42\n! noise\n1 1.5 .3 45 .2\n2 1.75 .35 -50 .25\n4 2 .4 170 .3\n")
        self.write("x.s2p", text)
        oracle = Touchstone(self.path("x.s2p"))
        read = self.values("x.s2p")
        self.compare(read["network"], oracle.get_sparameter_arrays()[1])
        noise = read["noise"]
        self.assertEqual(noise["frequency"].tolist(), (oracle.noise[:, 0] * 1e9).tolist())
        self.assertEqual(noise["NFmin"].tolist(), oracle.noise[:, 1].tolist())
        expected = oracle.noise[:, 2] * np.exp(1j * np.deg2rad(oracle.noise[:, 3]))
        np.testing.assert_allclose(noise["Gamma_opt"], expected, rtol=4e-15)
        self.assertEqual(noise["Rn"].tolist(), (oracle.noise[:, 4] * 75).tolist())


class RulesTest(TouchstoneTest):
    def test_frequencies_are_rounded_once(self):
        words = ["0.1", "0.3", "1.1", "1.7", "2.3e0", "3.000000001", "4.35", "12.345678901234567", "77.77E+1"]
        for unit in UNITS:
            self.write("x.s1p", f"# {unit} S RI R 50\n" + "".join(f"{word} 1 0\n" for word in words))
            read = self.values("x.s1p")["network"]["frequency"].tolist()
            self.assertEqual(read, [in_hertz(word, unit) for word in words])

    def test_options_in_any_order_and_case_and_left_out(self):
        for line, frequency, resistance in (("#", 1e9, 50.0), ("# hz", 1.0, 50.0), ("#r 75 Db s MhZ", 1e6, 75.0),
                                            ("# RI KHZ", 1e3, 50.0), ("#  S   GHZ\tMA  R  1e1", 1e9, 10.0)):
            with self.subTest(line):
                self.write("x.s1p", f"! comment\n\n{line} ! more\n1 0.5 180\n")
                read = self.values("x.s1p")["network"]
                self.assertEqual(read["frequency"].tolist(), [frequency])
                self.assertEqual(read["reference"].tolist(), [resistance])
                value = {"d": -10 ** (0.5 / 20), "r": 0.5 + 180j}.get("d" if "Db" in line else line[2:3].lower(), -0.5)
                self.assertEqual(read["S11"].tolist(), [value])

    def test_quarter_turns_are_exact(self):
        for degrees, value in ((0, 2), (90, 2j), (-90, -2j), (180, -2), (-180, -2), (270, -2j), (360, 2), (450, 2j)):
            self.write("x.s1p", f"# GHz S MA R 50\n1 2 {degrees}\n")
            self.assertEqual(self.values("x.s1p")["network"]["S11"].tolist(), [value], degrees)

    def test_two_ports_of_version_1_have_21_before_12(self):
        self.write("x.s2p", "# GHz S RI\n1 11 0 21 0 12 0 22 0\n")
        read = self.values("x.s2p")["network"]
        self.assertEqual([read[name].tolist() for name in ("S11", "S12", "S21", "S22")], [[11], [12], [21], [22]])

    def version_2(self, more="[Two-Port Data Order] 12_21\n", data="1 11 0 12 0 21 0 22 0\n", options="# GHz S RI",
                  ports=2, count=1, end="[End]\n"):
        return (f"[Version] 2.0\n{options}\n[Number of Ports] {ports}\n{more}[Number of Frequencies] {count}\n"
                f"[Network Data]\n{data}{end}")

    def test_orders_and_halves_of_version_2(self):
        for more, data, expected in (
                ("[Two-Port Data Order] 12_21\n", "1 1 0 2 0 3 0 4 0\n", [1, 2, 3, 4]),
                ("[two-port  data order] 21_12\n", "1 1 0 2 0 3 0 4 0\n", [1, 3, 2, 4]),
                ("[Matrix Format] Lower\n", "1 1 0\n 2 0 4 0\n", [1, 2, 2, 4]),
                ("[Matrix Format] UPPER\n", "1 1 0 2 0\n 4 0\n", [1, 2, 2, 4])):
            with self.subTest(more):
                self.write("x.s2p", self.version_2(more, data))
                read = self.values("x.s2p")["network"]
                self.assertEqual([read[f"S{name}"].tolist()[0] for name in (11, 12, 21, 22)], expected)

    def test_three_ports_in_halves(self):
        for kind, order in (("Lower", "11 21 22 31 32 33"), ("Upper", "11 12 13 22 23 33")):
            data = "1 " + " ".join(f"{element} 0" for element in order.split()) + "\n"
            self.write("x.s3p", self.version_2(f"[Matrix Format] {kind}\n", data, ports=3))
            read = self.values("x.s3p")["network"]
            for element in order.split():
                self.assertEqual(read["S" + element].tolist(), [float(element)])
                self.assertEqual(read["S" + element[::-1]].tolist(), [float(element)])

    def test_references_over_several_lines_and_information(self):
        more = ("[Reference]\n50 75 ! two\n\n0.01 1e3\n[Begin Information]\n[Manufacturer] nobody\nmore\n"
                "[End Information]\n")
        data = "1 " + "\n".join(" ".join(f"{row}{column} 0" for column in range(4)) for row in range(4)) + "\n"
        self.write("x.s4p", self.version_2(more, data, ports=4))
        self.assertEqual(self.values("x.s4p")["network"]["reference"].tolist(), [50, 75, 0.01, 1000])
        self.assertIn("nobody", self.show("show", "out.h5", "x/Setup/network/Information"))

    def test_units_and_normalization(self):
        cases = {"S": [1, 1, 1, 1], "Z": [50, 50, 50, 50], "Y": [.02, .02, .02, .02], "H": [50, 1, 1, .02],
                 "G": [.02, 1, 1, 50]}
        labels = {1: "[1]", 50: "[Ω]", .02: "[S]"}
        for parameter, factors in cases.items():
            with self.subTest(parameter):
                self.write("x.s2p", f"# GHz {parameter} RI R 50\n1 3 4 3 4 3 4 3 4\n")
                read = self.values("x.s2p")["network"]
                listing = self.show("ls", "out.h5", "x/network")
                for element, factor in zip(("11", "12", "21", "22"), factors):
                    expected = (3 + 4j) / 50 if factor == .02 else (3 + 4j) * factor
                    self.assertEqual(read[parameter + element].tolist(), [expected])
                    line = [line for line in listing.splitlines() if parameter + element in line][0]
                    self.assertIn(labels[factor], line)
                self.write("y.s2p", self.version_2(data="1 3 4 3 4 3 4 3 4\n", options=f"# GHz {parameter} RI R 50"))
                read = self.values("y.s2p")["network"]
                self.assertEqual({read[parameter + element].tolist()[0] for element in ("11", "12", "21", "22")},
                                 {3 + 4j})

    def test_noise_of_version_2_is_in_ohm(self):
        more = "[Two-Port Data Order] 12_21\n[Number of Noise Frequencies] 2\n"
        end = "[Noise Data]\n1 1.5 .5 90 12\n2 1.5 .5 90 13\n[End]\n"
        self.write("x.s2p", self.version_2(more, end=end))
        noise = self.values("x.s2p")["noise"]
        self.assertEqual(noise["Rn"].tolist(), [12, 13])
        self.assertEqual(noise["Gamma_opt"].tolist(), [0.5j, 0.5j])
        self.assertIn("dB10", self.show("ls", "out.h5", "x/noise"))

    def test_values_that_are_no_finite_numbers(self):
        self.write("x.s1p", "# GHz S DB\n1 -inf 0\n2 -Inf 30\n")
        self.assertEqual(self.values("x.s1p")["network"]["S11"].tolist(), [0, 0])
        self.write("x.s1p", "# GHz S RI\n1 NaN inf\n2 1 2\n")
        value = self.values("x.s1p")["network"]["S11"].tolist()[0]
        self.assertTrue(cmath.isnan(value.real) and value.imag == float("inf"))

    def test_line_ends_wrapping_comments_and_encodings_make_no_difference(self):
        plain = "# GHz S RI R 50\n1 1 2 3 4 5 6\n7 8 9 10 11 12\n13 14 15 16 17 18\n"
        self.write("x.s3p", plain)
        expected = self.values("x.s3p")
        for name, content in (
                ("crlf", plain.replace("\n", "\r\n").encode()),
                ("bom", b"\xef\xbb\xbf" + plain.encode()),
                ("latin", b"! 50 \xb5m, 20 \xb0C\n" + plain.replace("6\n", "6 ! \xe4\n").encode("latin-1")),
                ("tabs", plain.replace(" ", "\t").encode()),
                ("one line", plain.replace("\n7", " 7").replace("\n13", " 13").encode()),
                ("narrow", plain.replace("9 10", "9 10\n").replace("3 4", "3 4\n\n! x\n").encode()),
                ("utf-16", b"\xff\xfe" + plain.encode("utf-16-le"))):
            with self.subTest(name):
                self.write("x.s3p", content)
                read = self.values("x.s3p")
                self.assertEqual({key: value.tolist() for key, value in read["network"].items()},
                                 {key: value.tolist() for key, value in expected["network"].items()})

    def test_no_locale_has_a_say(self):
        self.write("x.s1p", "# GHz S RI\n1.5 0.25 -1.75\n")
        for locale in ("C", "de_DE.UTF-8", "tr_TR.UTF-8"):
            read = self.values("x.s1p", environment={"LC_ALL": locale, "LANG": locale})["network"]
            self.assertEqual((read["frequency"].tolist(), read["S11"].tolist()), ([1.5e9], [0.25 - 1.75j]))

    def test_the_number_of_ports_from_an_option(self):
        self.write("x.dat", "# GHz S RI\n1 11 0 21 0 12 0 22 0\n")
        self.assertEqual(self.values("x.dat", "--ports", "2")["network"]["S21"].tolist(), [21])
        os.remove(self.path("out.h5"))
        self.refuses("x.dat", "line 1", "--ports")

    def test_what_is_odd_but_readable_is_a_warning(self):
        self.write("x.s1p", "# GHz S RI\n1 1 0\n1 2 0\n1 3 0\n")
        self.assertEqual(self.values("x.s1p", warns="line 3: the frequency '1' comes again")["network"]["S11"].tolist(),
                         [1, 2, 3])
        self.write("x.s1p", "# GHz S RI\n1 1 0\n# MHz S RI\n2 2 0\n")
        read = self.values("x.s1p", warns="line 3: another option line")["network"]
        self.assertEqual(read["frequency"].tolist(), [1e9, 2e9])
        self.write("x.s1p", "# GHz S RI\n1 1 0")
        self.values("x.s1p", warns="the last line has no end")
        self.write("x.s3p", self.version_2())
        self.values("x.s3p", warns="there are 2 ports")


class MalformedTest(TouchstoneTest):
    """scikit-rf takes some of these for something else, and refuses others without a place."""

    HEAD = "[Version] 2.0\n# GHz S RI\n[Number of Ports] 2\n[Two-Port Data Order] 12_21\n[Number of Frequencies] 2\n"
    ROW = " 1 0 2 0 3 0 4 0\n"
    CASES = [
        ("empty", "x.s2p", "", ["line 1", "the end of the file"]),
        ("only comments", "x.s2p", "! a\n!b\n", ["line 3", "option line"]),
        ("no option line", "x.s1p", "1 0 0\n", ["line 1", "option line"]),
        ("no values", "x.s1p", "# GHz S RI\n", ["the values of a frequency"]),
        ("unknown option", "x.s1p", "# GHz S RI Q\n1 0 0\n", ["line 1", "'Q'"]),
        ("unknown unit", "x.s1p", "# THz S RI\n1 0 0\n", ["line 1", "'THz'"]),
        ("two formats", "x.s1p", "# GHz S RI MA\n1 0 0\n", ["line 1", "one format"]),
        ("no resistance", "x.s1p", "# GHz S RI R\n1 0 0\n", ["line 1", "a resistance above 0"]),
        ("resistance 0", "x.s1p", "# GHz S RI R 0\n1 0 0\n", ["line 1", "a resistance above 0", "'0'"]),
        ("complex resistance", "x.s1p", "# GHz S RI R 50+j10\n1 0 0\n", ["line 1", "a resistance above 0"]),
        ("too few numbers", "x.s2p", "# GHz S RI\n1 1 0 2 0 3 0\n2 1 0 2 0 3 0 4 0\n",
         ["line 3", "2 more numbers of the point that begins in line 2"]),
        ("too many numbers", "x.s2p", "# GHz S RI\n1" + ROW[:-1] + " 5 0\n", ["line 2", "8 numbers", "2 more"]),
        ("an even line", "x.s1p", "# GHz S RI\n1 0\n", ["line 2", "a frequency and pairs of numbers"]),
        ("cut off", "x.s2p", "# GHz S RI\n1" + ROW + "2 1 0 2 0", ["4 more numbers", "line 3", "end of the file"]),
        ("text", "x.s1p", "# GHz S RI\n1 zero 0\n", ["line 2", "a number", "'zero'"]),
        ("decimal comma", "x.s1p", "# GHz S RI\n1 0,5 0\n", ["line 2", "'0,5'"]),
        ("fortran", "x.s1p", "# GHz S RI\n1 1.0D+01 0\n", ["line 2", "'1.0D+01'"]),
        ("hexadecimal", "x.s1p", "# GHz S RI\n1 0x10 0\n", ["line 2", "'0x10'"]),
        ("frequency no number", "x.s1p", "# GHz S RI\nnan 0 0\n", ["line 2", "a frequency", "'nan'"]),
        ("frequency infinite", "x.s1p", "# GHz S RI\n1e308 0 0\n", ["line 2", "a frequency", "'1e308'"]),
        ("frequency below 0", "x.s1p", "# GHz S RI\n-1 0 0\n", ["line 2", "a frequency", "'-1'"]),
        ("descending", "x.s1p", "# GHz S RI\n2 0 0\n1 0 0\n", ["line 3", "above the one before", "'1'"]),
        ("descending two-port", "x.s2p", "# GHz S RI\n2" + ROW + "1" + ROW, ["line 3", "above the one before"]),
        ("noise of 4 numbers", "x.s2p", "# GHz S RI\n2" + ROW + "1 1 1 1 1\n1.5 1 1 1\n", ["line 4", "5 numbers"]),
        ("noise descending", "x.s2p", "# GHz S RI\n2" + ROW + "1 1 1 1 1\n.5 1 1 1 1\n", ["line 4", "above"]),
        ("hybrid three-port", "x.s3p", "# GHz H RI\n1 0 0\n", ["line 1", "two ports"]),
        ("keyword in version 1", "x.s1p", "# GHz S RI\n[Reference] 50\n1 0 0\n", ["line 2", "[Version] 2.0"]),
        ("NUL", "x.s1p", b"# GHz S RI\n1 0\0 0\n", ["line 2", "a line of text"]),
        ("version 3", "x.s1p", "[Version] 3.0\n# GHz\n", ["line 1", "'3.0'"]),
        ("no version", "x.s1p", "[Number of Ports] 1\n# GHz\n", ["line 1", "[Version] 2.0"]),
        ("no bracket", "x.s1p", "[Version 2.0\n# GHz\n", ["line 1", "']'"]),
        ("mixed mode", "x.s2p", HEAD + "[Mixed-Mode Order] D1,2 C1,2\n", ["line 6", "mixed-mode"]),
        ("unknown keyword", "x.s2p", HEAD + "[Colour] red\n", ["line 6", "a keyword of version 2"]),
        ("twice", "x.s2p", HEAD + "[Number of Ports] 2\n", ["line 6", "each keyword once"]),
        ("no ports", "x.s2p", "[Version] 2.0\n# GHz\n[Number of Frequencies] 1\n[Network Data]\n",
         ["line 4", "[Number of Ports]"]),
        ("ports 0", "x.s2p", "[Version] 2.0\n# GHz\n[Number of Ports] 0\n", ["line 3", "1 or more"]),
        ("ports huge", "x.s2p", "[Version] 2.0\n# GHz\n[Number of Ports] 4000000000\n", ["line 3", "at most 99"]),
        ("no count", "x.s1p", "[Version] 2.0\n# GHz\n[Number of Ports] 1\n[Network Data]\n",
         ["line 4", "[Number of Frequencies]"]),
        ("no order", "x.s2p", HEAD.replace("[Two-Port Data Order] 12_21\n", "") + "[Network Data]\n",
         ["line 5", "[Two-Port Data Order]"]),
        ("bad order", "x.s2p", HEAD.replace("12_21", "11_22"), ["line 4", "'11_22'"]),
        ("references short", "x.s2p", HEAD + "[Reference] 50\n[Network Data]\n", ["line 7", "port 2"]),
        ("references long", "x.s2p", HEAD + "[Reference] 50 50 50\n", ["line 6", "2 ports"]),
        ("reference text", "x.s2p", HEAD + "[Reference] 50 x\n", ["line 6", "port 2", "'x'"]),
        ("too few points", "x.s2p", HEAD + "[Network Data]\n1" + ROW + "[End]\n", ["line 8", "1 more of 2 frequencies"]),
        ("too many points", "x.s2p", HEAD + "[Network Data]\n1" + ROW + "2" + ROW + "3" + ROW + "[End]\n",
         ["line 9", "'[Noise Data]' or '[End]'"]),
        ("no end", "x.s2p", HEAD + "[Network Data]\n1" + ROW + "2" + ROW, ["'[End]'", "the end of the file"]),
        ("after the end", "x.s2p", HEAD + "[Network Data]\n1" + ROW + "2" + ROW + "[End]\n3\n", ["line 10"]),
        ("noise unannounced", "x.s2p", HEAD + "[Network Data]\n1" + ROW + "2" + ROW + "[Noise Data]\n",
         ["line 9", "[Number of Noise Frequencies]"]),
        ("information without end", "x.s2p", HEAD + "[Begin Information]\nx\n", ["[End Information]"]),
        ("long line", "x.s1p", "# GHz S RI\n" + "1 " * 1000000 + "\n", ["line 2", "1048576 bytes"]),
    ]

    def test_each_is_refused_with_its_place(self):
        self.assertGreater(len(self.CASES), 45)
        for story, name, content, words in self.CASES:
            with self.subTest(story):
                self.write(name, content)
                self.refuses(name, *words)

    def test_where_the_oracle_reads_on_without_a_word(self):
        version_2 = self.HEAD.replace("[Two-Port Data Order] 12_21\n", "").replace("Ports] 2", "Ports] 1")
        for name, content, shape, word in (
                ("broken lines", "# GHz S RI\n1 1\n0 2 2 0\n", (2, 1, 1), "line 2"),
                ("descending", "# GHz S RI\n2 0 0\n1 0 0\n", (2, 1, 1), "line 3"),
                ("frequency below 0", "# GHz S RI\n-2 0 0\n", (1, 1, 1), "line 2"),
                ("fewer points than announced", version_2 + "[Network Data]\n1 1 0\n[End]\n", (1, 1, 1), "line 7"),
                ("no end", version_2 + "[Network Data]\n1 1 0\n2 1 0\n", (2, 1, 1), "'[End]'")):
            with self.subTest(name):
                self.write("x.s1p", content)
                self.assertEqual(Touchstone(self.path("x.s1p")).get_sparameter_arrays()[1].shape, shape)
                self.refuses("x.s1p", word)


if __name__ == "__main__":
    unittest.main(warnings="ignore")  # scikit-rf leaves its files open
