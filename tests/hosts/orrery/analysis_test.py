#!/usr/bin/python3
"""Runs the commands that compare, join and draw data files, as a person would.

usage: analysis_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import math
import os
import re
import shutil
import struct
import subprocess
import unittest
import xml.etree.ElementTree
import zlib

import h5py
import numpy as np

import command_test
from command_test import LOCALES, ODD_FILES, ORRERY, SAMPLE, SOURCES, raw

AC_SAMPLE = os.path.join(SOURCES, "hosts/orrery/samples/rlc.raw")
TEMPERATURES = [-40, 0, 27, 85, 125]
RESISTORS = [10, 30, 100, 300]


def plots_of(path):
    """The vectors of each plot of a binary raw file; one that is shorter is padded to the length of the others."""
    with open(path, "rb") as file:
        content = file.read()
    plots = []
    while content:
        head, _, content = content.partition(b"Binary:\n")
        lines = head.decode().splitlines()
        fields = dict(line.split(": ", 1) for line in lines if ": " in line)
        names = [line.split()[1] for line in lines if line.startswith("\t")]
        type_ = np.dtype("<c16" if fields["Flags"] == "complex" else "<f8")
        points = int(fields["No. Points"])
        size = points * len(names) * type_.itemsize
        table = np.frombuffer(content[:size], type_).reshape(points, len(names))
        plots.append({name: table[:, column] for column, name in enumerate(names)})
        content = content[size:]
    return plots


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

    def test_computed_variables_are_compared_by_what_they_are_made_from(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True, timeout=60)
        self.good("copy", "odd.h5", "-o", "copy.h5")
        self.assertEqual(self.good("diff", "odd.h5", "copy.h5"), "")
        lines = self.different("odd.h5", "a.h5")
        self.assertIn("/huge: only in odd.h5", lines)
        self.assertIn("/itself: only in odd.h5", lines)
        self.assertIn("/a: only in a.h5", lines)

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
            result = subprocess.run([ORRERY, "diff", "a.h5", "b.h5"], cwd=self.folder, stdout=full,
                                    stderr=subprocess.PIPE, timeout=60)
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (2, "orrery: standard output: No space left on device\n"))

    def test_numbers_are_the_same_in_any_locale(self):
        self.differences(raw(3, [1, 2, 3, math.nan, 5.5, 6]))
        texts = {"\n".join(self.different("a.h5", "b.h5", environment=environment)) for environment in LOCALES}
        self.assertEqual(len(texts), 1)


class SweepCommandTest(command_test.CommandTest):
    """Commands on the two samples and on sweeps that no import makes."""

    def import_diode(self):
        self.good("import", SAMPLE, "-o", "d.h5", "--sweep", "temperature=" + ",".join(map(str, TEMPERATURES)),
                  "--sweep-units", "degC")

    def import_rlc(self):
        self.write("values", "10 30\n100, 300\n".encode())
        self.good("import", AC_SAMPLE, "-o", "r.h5", "--sweep", "r1=@values", "--sweep-units", "Ohm")

    def write_odd_files(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True, timeout=60)

    def content(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()


class ImportSweepTest(SweepCommandTest):
    def test_the_result_names_application_header_and_sweep(self):
        self.import_diode()
        listing = self.good("ls", "d.h5")
        self.assertRegex(listing, r"(?m)^diode/ +Result$")
        self.assertRegex(listing, r"(?m)^    temperature +ExplVar +5 +double +\[°C\]$")
        self.assertRegex(listing, r"(?m)^  dc-sweep/ +ParameterizedResultData +5 members +over temperature$")
        self.assertEqual(self.good("show", "d.h5", "diode/AppID"), "SPICE\n")
        self.assertEqual(self.good("show", "d.h5", "diode/Setup/dc3/Title"),
                         "diode current against voltage at five temperatures\n")
        self.assertEqual(self.good("show", "d.h5", "diode/Setup/temperature"), "-40\n0\n27\n85\n125\n")

    def test_values_in_a_file(self):
        self.import_rlc()
        self.assertEqual(self.good("show", "r.h5", "rlc/Setup/r1"), "10\n30\n100\n300\n")

    def test_a_sweep_that_does_not_fit_leaves_nothing(self):
        self.assertEqual(self.fails(1, "import", SAMPLE, "-o", "d.h5", "--sweep", "t=1,2,3"),
                         "--sweep: 't' has 3 values, but the file has these plots: 5 dc")
        self.assertEqual(self.fails(2, "import", SAMPLE, "-o", "d.h5", "--sweep", "t=1,x"),
                         "--sweep: expected a number, found 'x'; try 'orrery import --help'")
        self.assertEqual(self.fails(2, "import", SAMPLE, "-o", "d.h5", "--sweep-units", "V"),
                         "--sweep-units: there is no --sweep to have them; try 'orrery import --help'")
        self.assertEqual(self.fails(1, "import", SAMPLE, "-o", "d.h5", "--sweep", "t=@none"),
                         "none: No such file or directory")
        self.assertEqual(os.listdir(self.folder), [])

    def test_vectors_that_would_be_parts_of_a_sweep_are_renamed_and_told(self):
        self.write("v.raw", raw(1, [1, 2, 3, 4], names=("0", "Parameter", "x_Indeps", "x")))
        result = self.run_orrery("import", "v.raw", "-o", "v.h5", "--sweep", "p=7")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr.decode(),
                         "orrery: warning: the vector '0' is called '0_', since its name is taken\n"
                         "orrery: warning: the vector 'Parameter' is called 'Parameter_', since its name is taken\n"
                         "orrery: warning: the vector 'x_Indeps' is called 'x_Indeps_', since its name is taken\n")
        for name, value in (("0_", 1), ("Parameter_", 2), ("x_Indeps_", 3), ("x", 4)):
            lines = self.good("join", "v.h5", "v/dc-sweep", name).splitlines()
            self.assertEqual(lines[-1].split()[-1], str(value))


class CopyTest(SweepCommandTest):
    def test_a_copy_is_the_same(self):
        self.import_diode()
        self.good("copy", "d.h5", "-o", "c.h5")
        self.assertEqual(self.good("diff", "d.h5", "c.h5"), "")
        self.assertEqual(self.good("join", "d.h5", "diode/dc-sweep", "i(vd)"),
                         self.good("join", "c.h5", "diode/dc-sweep", "i(vd)"))
        with h5py.File(self.path("c.h5"), "r") as file:
            self.assertEqual(file["diode/dc2/i(vd)/Data"].shape, (201,))

    def test_what_is_refused(self):
        self.import_diode()
        self.write("text", b"hello\n")
        self.assertEqual(self.fails(1, "copy", "d.h5", "-o", "d.h5"),
                         "d.h5: is the file to read; write to another one")
        self.assertEqual(self.fails(1, "copy", "none.h5", "-o", "c.h5"), "none.h5: No such file or directory")
        self.assertEqual(self.fails(1, "copy", "d.h5", "-o", "text"),
                         "text: exists and is not an HDF5 file; --force replaces it")
        self.good("copy", "d.h5", "-o", "text", "--force")
        self.assertEqual(self.good("diff", "d.h5", "text"), "")


class JoinTest(SweepCommandTest):
    def rows(self, *arguments):
        lines = self.good("join", *arguments, "--csv").splitlines()
        return lines[0], np.array([[float(field) for field in line.split(",")] for line in lines[1:]])

    def test_the_diode_is_what_the_raw_file_says(self):
        self.import_diode()
        plots = plots_of(SAMPLE)
        heading, rows = self.rows("d.h5", "diode/dc-sweep", "i(vd)")
        self.assertEqual(heading, "offset,v(v-sweep) [V],temperature [°C],i(vd) [A]")
        self.assertEqual(len(plots), 5)
        self.assertTrue(np.array_equal(rows[:, 0], np.arange(1005)))
        self.assertTrue(np.array_equal(rows[:, 1], np.concatenate([plot["v(v-sweep)"] for plot in plots])))
        self.assertTrue(np.array_equal(rows[:, 2], np.repeat(TEMPERATURES, 201)))
        self.assertTrue(np.array_equal(rows[:, 3], np.concatenate([plot["i(vd)"] for plot in plots])))

    def test_complex_vectors_over_a_stepped_resistor(self):
        self.import_rlc()
        plots = plots_of(AC_SAMPLE)
        heading, rows = self.rows("r.h5", "rlc/ac-sweep", "v(out)")
        self.assertEqual(heading, "offset,frequency [Hz],r1 [Ω],v(out).re [V],v(out).im [V]")
        self.assertEqual(len(plots), 4)
        self.assertTrue(np.array_equal(rows[:, 1], np.concatenate([plot["frequency"].real for plot in plots])))
        self.assertTrue(np.array_equal(rows[:, 2], np.repeat(RESISTORS, 201)))
        self.assertTrue(np.array_equal(rows[:, 3] + 1j * rows[:, 4], np.concatenate([plot["v(out)"] for plot in plots])))

    def test_the_values_are_what_the_circuit_gives(self):
        self.import_rlc()
        _, rows = self.rows("r.h5", "rlc/ac-sweep", "v(out)")
        s = 2j * np.pi * rows[:, 1]
        expected = 1 / (1 + s * rows[:, 2] * 2.5e-6 + s * s * 10e-3 * 2.5e-6)
        self.assertTrue(np.allclose(rows[:, 3] + 1j * rows[:, 4], expected, rtol=1e-9))

    def test_a_range_and_other_units(self):
        self.import_diode()
        _, whole = self.rows("d.h5", "diode/dc-sweep", "i(vd)")
        heading, rows = self.rows("d.h5", "diode/dc-sweep", "i(vd)", "--range", "199:203", "--units", "mA")
        self.assertEqual(heading, "offset,v(v-sweep) [V],temperature [°C],i(vd) [mA]")
        self.assertTrue(np.array_equal(rows[:, :3], whole[199:203, :3]))
        self.assertTrue(np.allclose(rows[:, 3], whole[199:203, 3] * 1e3, rtol=1e-15, atol=0))

    def test_no_file_is_changed(self):
        self.import_diode()
        before = self.content("d.h5")
        self.good("join", "d.h5", "diode/dc-sweep", "i(vd)")
        self.assertEqual(self.content("d.h5"), before)

    def test_sweeps_of_sweeps(self):
        self.write_odd_files()
        heading, rows = self.rows("odd.h5", "nested-sweep", "v")
        self.assertEqual(heading, "offset,t,pair,outer,v")
        self.assertEqual(list(rows[:, 1]), [0, 1, 2] * 4)
        self.assertEqual(list(rows[:, 2]), [10, 10, 10, 20, 20, 20] * 2)
        self.assertEqual(list(rows[:, 3]), [1] * 6 + [2] * 6)
        self.assertEqual(list(rows[:, 4]), [5, 6, 7] * 4)

    def test_huge_members_are_read_where_they_are_asked_for(self):
        self.write_odd_files()
        _, rows = self.rows("odd.h5", "sweep", "huge-in-run", "--range", "99999999999:100000000001")
        self.assertEqual(list(rows[:, 1]), [10, 20])
        self.assertEqual(list(rows[:, 2]), [99999999999.5, 0.5])

    def test_what_can_not_be_joined(self):
        self.write_odd_files()
        cases = [("y", "v", "y: is no sweep"),
                 ("run0", "v", "run0: is no sweep"),
                 ("none", "v", "none: there is nothing of that name"),
                 ("bare-sweep", "v", "bare-sweep: the sweep has no parameter"),
                 ("short-sweep", "v", "short-sweep: the parameter 'one' has 1 value for 2 members"),
                 ("circle-sweep", "v", "circle-sweep: the sweep contains itself, through '/circle-sweep'"),
                 ("empty-sweep", "v", "empty-sweep: there is no variable 'v'; the sweep has none"),
                 ("sweep", "0", "sweep: '0' can't be joined: '0' is a part of the sweep itself"),
                 ("sweep", "Parameter", "sweep: 'Parameter' can't be joined: 'Parameter' is a part of the sweep itself")]
        for path, name, line in cases:
            self.assertEqual(self.fails(1, "join", "odd.h5", path, name), "odd.h5: " + line)
        line = self.fails(1, "join", "odd.h5", "sweep", "z")
        self.assertTrue(line.startswith("odd.h5: sweep: there is no variable 'z'; the sweep has '0', "), line)

    def test_members_with_matrices_are_one_line_and_1(self):
        self.write_odd_files()
        line = self.fails(1, "join", "odd.h5", "sweep", "matrix")
        self.assertEqual(line, "odd.h5: appendValues currently supports only vector arguments")


def svg_texts(content):
    root = xml.etree.ElementTree.fromstring(content)
    return ["".join(node.itertext()).strip() for node in root.iter() if node.tag.endswith("}text")]


def png_rows(content):
    """The pixels of a PNG of 8 bits a channel, after every test that its chunks allow."""
    assert content[:8] == b"\x89PNG\r\n\x1a\n"
    at, data, size = 8, b"", None
    while at < len(content):
        length, = struct.unpack(">I", content[at:at + 4])
        chunk = content[at + 4:at + 8 + length]
        assert zlib.crc32(chunk) == struct.unpack(">I", content[at + 8 + length:at + 12 + length])[0]
        if chunk[:4] == b"IHDR":
            size = struct.unpack(">IIBB", chunk[4:14])
        if chunk[:4] == b"IDAT":
            data += chunk[4:]
        at += 12 + length
    assert size[2] == 8
    channels = {2: 3, 6: 4}[size[3]]
    return size, channels, zlib.decompress(data)


class PlotTest(SweepCommandTest):
    def texts(self, *arguments, **options):
        self.assertEqual(self.good("plot", *arguments, "-o", "p.svg", **options), "")
        return svg_texts(self.content("p.svg"))

    def test_a_sweep_is_one_line_for_each_member(self):
        self.import_diode()
        texts = self.texts("d.h5", "diode/dc-sweep/i(vd)")
        for text in ("i(vd) [A]", "v(v-sweep) [V]", "temperature", *[f"{t} °C" for t in TEMPERATURES]):
            self.assertEqual(texts.count(text), 1, texts)

    def test_complex_values_are_drawn_as_magnitudes_on_logarithmic_axes(self):
        self.import_rlc()
        texts = self.texts("r.h5", "rlc/ac-sweep/v(out)", "--log-x", "--log-y")
        for text in ("magnitude of v(out) [V]", "frequency [Hz]", "r1", "10 Ω", "300 Ω", "0.01", "10000"):
            self.assertIn(text, texts)

    def test_several_variables_have_a_legend_with_their_names(self):
        self.import_diode()
        texts = self.texts("d.h5", "diode/dc1/i(vd)", "diode/dc5/i(vd)")
        self.assertIn("diode/dc1/i(vd)", texts)
        self.assertIn("diode/dc5/i(vd)", texts)
        self.write("two.raw", raw(3, [0, 1, 2, 1, 2, 3, 2, 3, 4], names=("x", "y", "<b>z</b>")))
        self.good("import", "two.raw", "-o", "two.h5")
        texts = self.texts("two.h5", "two/dc1/y", "two/dc1/<b>z<%2Fb>")
        self.assertEqual([text for text in texts if text in ("y", "<b>z</b>", "[V]")].count("y"), 1)
        self.assertIn("<b>z</b>", texts)

    def test_a_line_stays_on_the_points(self):
        self.write("l.raw", raw(3, [0, 0, 1, 10, 2, 20]))
        self.good("import", "l.raw", "-o", "l.h5")
        self.texts("l.h5", "l/dc1/y")
        points = re.findall(rb'<polyline[^>]* points="([^"]*)"', self.content("p.svg"))
        lines = [np.array([[float(part) for part in pair.split(b",")] for pair in text.split()]) for text in points]
        line = max(lines, key=len)
        self.assertEqual(line.shape, (3, 2))
        self.assertTrue(np.allclose(line[2] - line[1], line[1] - line[0], atol=1e-6))
        self.assertGreater(line[2, 0], line[0, 0])
        self.assertLess(line[2, 1], line[0, 1])  # upward

    def test_a_png_is_white_with_coloured_lines(self):
        self.import_diode()
        self.good("plot", "d.h5", "diode/dc-sweep/i(vd)", "-o", "p.PNG")
        (width, height, _, _), channels, data = png_rows(self.content("p.PNG"))
        self.assertEqual((width, height), (1760, 1040))
        self.assertEqual(len(data), height * (1 + width * channels))
        self.assertGreater(len(set(data)), 50)

    def test_neither_display_nor_locale_nor_style_has_a_say(self):
        self.import_diode()
        pictures = set()
        for environment in [*LOCALES, {"QT_QPA_PLATFORM": "xcb", "DISPLAY": ""}, {"QT_STYLE_OVERRIDE": "none"}]:
            self.texts("d.h5", "diode/dc-sweep/i(vd)", environment=environment)
            pictures.add(self.content("p.svg"))
        self.assertEqual(len(pictures), 1)

    def test_many_points_are_thinned_and_keep_their_extremes(self):
        values = [0.0] * 1_000_000
        values[777_777], values[222_222] = 1.0, -1.0
        self.write("many.raw", raw(len(values), values, names=("x",)))
        self.good("import", "many.raw", "-o", "many.h5")
        texts = self.texts("many.h5", "many/dc1/x")
        self.assertIn("offset", texts)
        self.assertIn("1", texts)
        self.assertIn("-1", texts)
        self.assertLess(len(self.content("p.svg")), 1_000_000)

    def test_sweeps_of_sweeps_name_both_parameters(self):
        self.write_odd_files()
        texts = self.texts("odd.h5", "nested-sweep/v")
        for text in ("outer, pair", "1, 10", "1, 20", "2, 10", "2, 20"):
            self.assertEqual(texts.count(text), 1, texts)

    def test_points_that_are_no_numbers_interrupt_the_line(self):
        self.write("n.raw", raw(5, [0, 1, 1, 2, 2, math.nan, 3, 4, 4, math.inf]))
        self.good("import", "n.raw", "-o", "n.h5")
        self.assertIn("4", self.texts("n.h5", "n/dc1/y"))
        self.write("z.raw", raw(2, [0, -1, 1, 0]))
        self.good("import", "z.raw", "-o", "z.h5")
        self.assertEqual(self.fails(1, "plot", "z.h5", "z/dc1/y", "--log-y", "-o", "p.svg"),
                         "z.h5: z/dc1/y: there are no values to draw")

    def test_what_can_not_be_drawn(self):
        self.write_odd_files()
        cases = {"huge": "huge: 'huge' has 100000000000 values; at most 100000000 can be drawn",
                 "joined": "joined: 'joined' has 100000000003 values; at most 100000000 can be drawn",
                 "sweep/huge-in-run": "sweep/huge-in-run: 'huge-in-run' has 100000000000 values; "
                                      "at most 100000000 can be drawn",
                 "lost": "lost: the axis of 'lost' leads nowhere",
                 "long": "long: 'long' has 2 values, but its axis 'short' has 1",
                 "itself": "itself: there are no values to draw",
                 "sweep": "sweep: is a sweep; put the name of one of its variables behind the path",
                 "run0": "run0: is no variable",
                 "run0/matrix": "run0/matrix: 'matrix' holds arrays, one at each offset",
                 "run0/words": "run0/words: 'words' holds no numbers but text",
                 "sweep/z": None, "none": "none: there is nothing of that name",
                 "circle-sweep/v": "circle-sweep/v: the sweep contains itself, through '/circle-sweep'"}
        for path, line in cases.items():
            actual = self.fails(1, "plot", "odd.h5", path, "-o", "p.svg")
            if line:
                self.assertEqual(actual, "odd.h5: " + line)
        self.assertFalse(os.path.exists(self.path("p.svg")))

    def test_units_that_do_not_fit_each_other(self):
        self.import_diode()
        self.assertIn("can't convert A, electric current (A), to V, ",
                      self.fails(1, "plot", "d.h5", "diode/dc1/v(anode)", "diode/dc1/i(vd)", "-o", "p.svg"))

    def test_output_that_can_not_be_written(self):
        self.import_diode()
        self.assertEqual(self.fails(2, "plot", "d.h5", "diode/dc1/i(vd)", "-o", "p.gif"),
                         "--output: expected a name that ends in .svg or .png, found 'p.gif'; try 'orrery plot --help'")
        line = self.fails(1, "plot", "d.h5", "diode/dc1/i(vd)", "-o", "none/p.svg")
        self.assertTrue(line.startswith("none/p.svg: "), line)
        shutil.copy(self.path("d.h5"), self.path("d.png"))
        self.assertEqual(self.fails(1, "plot", "d.png", "diode/dc1/i(vd)", "-o", "d.png"),
                         "d.png: is the file to read; write to another one")


if __name__ == "__main__":
    unittest.main()
