#!/usr/bin/python3
"""Exports variables, and reads what comes out as an outsider: with Python's csv, netCDF4, xarray and h5netcdf, and by
importing it again.

usage: export_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import csv
import os
import re
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

import h5py
import netCDF4
import numpy as np
import xarray

ORRERY = os.path.abspath(sys.argv.pop(1))
SOURCES = os.path.abspath(sys.argv.pop(1))
PROGRAMS = os.path.join(os.path.dirname(ORRERY), "../../tests/hosts/orrery")  # in a build folder
ODD_FILES = os.environ.get("ORRERY_ODD_FILES", os.path.join(PROGRAMS, "orrery_odd_files"))
VALUE_FILES = os.environ.get("ORRERY_VALUE_FILES", os.path.join(PROGRAMS, "orrery_value_files"))
SAMPLE = os.path.join(SOURCES, "hosts/orrery/samples/diode.raw")
TABLE = ("t [ms],v(out) [V],n [mA],word,is,z.re [Ohm],z.im [Ohm],m[0],m[1],m[2],big\n"
         "0.1,1.1,-3,foo,true,1,0.1,1,2,3,18446744073709551615\n"
         "0.2,,4,\"two\nlines, \"\"q\"\"\",false,-2e-300,3,4,5.5,6,0\n"
         "0.30000000000000004,-inf,5,,true,nan,-0,7,8,9,1\n")


class ExportTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "w", encoding="utf-8", newline="") as file:
            file.write(content)

    def run_orrery(self, *arguments, **options):
        return subprocess.run([ORRERY, *arguments], cwd=self.folder, capture_output=True, text=True, timeout=120,
                              **options)

    def good(self, *arguments):
        result = self.run_orrery(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""), arguments)
        return result.stdout

    def fails(self, code, *arguments, **options):
        result = self.run_orrery(*arguments, **options)
        self.assertEqual((result.returncode, result.stdout), (code, ""), (arguments, result.stderr))
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        return result.stderr

    def import_table(self, content=TABLE, name="x"):
        self.write(name + ".csv", content)
        self.good("import", name + ".csv", "-o", name + ".h5")

    def stored(self, path):
        with h5py.File(self.path(path.split(":")[0]), "r") as file:
            return self.as_numpy(file[path.split(":")[1] + "/Data"])

    def as_numpy(self, data):
        values = data.asstr()[()] if h5py.check_string_dtype(data.dtype) else data[()]
        return values["r"] + 1j * values["i"] if values.dtype.names else values


class CsvExportTest(ExportTest):
    def test_the_axis_stands_before_the_values(self):
        self.import_table()
        self.assertEqual(self.good("export", "x.h5", "x/table/v(out)", "--to", "out.csv"), "")
        with open(self.path("out.csv"), newline="") as file:
            self.assertEqual(file.read(), "t [ms],v(out) [V]\n0.1,1.1\n0.2,nan\n0.30000000000000004,-inf\n")
        self.good("export", "x.h5", "x/table/z", "--to", "z.csv")
        with open(self.path("z.csv"), newline="") as file:
            self.assertEqual([row for row in csv.reader(file)][0], ["t [ms]", "z.re [Ω]", "z.im [Ω]"])

    def test_importing_it_again_brings_the_same_values(self):
        self.import_table()
        for name in ("v(out)", "n", "word", "is", "z", "m", "big"):
            with self.subTest(name):
                self.good("export", "x.h5", "x/table/" + name, "--to", "again.csv", "--force")
                self.good("import", "again.csv", "-o", "again.h5")
                for column in ("t", name):
                    first = self.good("show", "x.h5", "x/table/" + column, "--csv")
                    self.assertEqual(self.good("show", "again.h5", "again/table/" + column, "--csv"), first)
                self.assertEqual(self.listed("again.h5", "again/table", name), self.listed("x.h5", "x/table", name))

    def listed(self, file, folder, name):
        lines = [line.split() for line in self.good("ls", file, folder).splitlines()]
        return [words for words in lines if words[0] == name][0]

    def test_a_simulation_with_every_bit(self):
        self.good("import", SAMPLE, "-o", "d.h5")
        self.good("export", "d.h5", "diode/dc1/i(vd)", "--to", "i.csv")
        self.good("import", "i.csv", "-o", "i.h5")
        expected = self.stored("d.h5:diode/dc1/i(vd)")
        self.assertGreater(expected.size, 100)
        self.assertEqual(self.stored("i.h5:i/table/i(vd)").tobytes(), expected.tobytes())

    def test_floats_and_integers_of_all_sizes(self):
        subprocess.run([VALUE_FILES, "v.h5"], cwd=self.folder, check=True, timeout=60)
        for name in ("int8", "uint64", "int64", "double", "float", "complex", "complex-float"):
            with self.subTest(name):
                self.good("export", "v.h5", name, "--to", "again.csv", "--force")
                self.good("import", "again.csv", "-o", "again.h5")
                expected = self.stored("v.h5:" + name)
                np.testing.assert_array_equal(self.stored("again.h5:again/table/" + name), expected)

    def test_values_in_other_units_and_no_display_units(self):
        self.good("import", SAMPLE, "-o", "d.h5", "--display-units", "mA,mV")
        self.good("export", "d.h5", "diode/dc1/i(vd)", "--to", "a.csv")
        self.good("export", "d.h5", "diode/dc1/i(vd)", "--to", "b.csv", "--units", "uA")
        rows = {}
        for name in ("a", "b"):
            with open(self.path(name + ".csv"), newline="") as file:
                rows[name] = list(csv.reader(file))
        self.assertEqual(rows["a"][0], ["v(v-sweep) [V]", "i(vd) [A]"])
        self.assertEqual(rows["b"][0], ["v(v-sweep) [V]", "i(vd) [µA]"])
        self.assertAlmostEqual(float(rows["b"][-1][1]), 1e6 * float(rows["a"][-1][1]))

    def test_text_that_looks_like_a_comment_or_nothing(self):
        self.import_table('word\n"#a"\n""\nb\n')
        self.good("export", "x.h5", "x/table/word", "--to", "again.csv")
        self.good("import", "again.csv", "-o", "again.h5")
        self.assertEqual(self.stored("again.h5:again/table/word").tolist(), ["#a", "", "b"])

    def test_no_values(self):
        self.import_table("t [s],x [V]\n")
        self.good("export", "x.h5", "x/table/x", "--to", "again.csv")
        with open(self.path("again.csv"), newline="") as file:
            self.assertEqual(file.read(), "t [s],x [V]\n")


class NetcdfExportTest(ExportTest):
    def export(self, path, *options):
        self.good("export", path.split(":")[0], path.split(":")[1], "--to", "out.nc", "--force", *options)

    def test_dimensions_coordinates_units_and_values(self):
        self.good("import", SAMPLE, "-o", "d.h5")
        self.export("d.h5:diode/dc1/i(vd)")
        values = self.stored("d.h5:diode/dc1/i(vd)")
        axis = self.stored("d.h5:diode/dc1/v(v-sweep)")
        with netCDF4.Dataset(self.path("out.nc")) as file:
            self.assertEqual({name: len(dimension) for name, dimension in file.dimensions.items()},
                             {"v(v-sweep)": len(axis)})
            self.assertEqual(list(file.variables), ["v(v-sweep)", "i(vd)"])
            variable = file.variables["i(vd)"]
            self.assertEqual((variable.dimensions, variable.units, variable.long_name),
                             (("v(v-sweep)",), "A", "i(vd)"))
            self.assertEqual(file.variables["v(v-sweep)"].units, "V")
            self.assertEqual(np.asarray(variable[:]).tobytes(), values.tobytes())
            self.assertEqual(np.asarray(file.variables["v(v-sweep)"][:]).tobytes(), axis.tobytes())
        for engine in ("netcdf4", "h5netcdf"):
            with xarray.open_dataset(self.path("out.nc"), engine=engine) as data:
                self.assertEqual(list(data.coords), ["v(v-sweep)"])
                np.testing.assert_array_equal(data["i(vd)"].sel({"v(v-sweep)": axis[5]}), values[5])
                self.assertEqual(data.attrs["title"], "diode/dc1/i(vd)")

    def test_every_kind_of_value(self):
        self.import_table()
        expected = {name: self.stored("x.h5:x/table/" + name) for name in ("v(out)", "n", "word", "m", "big", "z")}
        for name, values in expected.items():
            with self.subTest(name):
                self.export("x.h5:x/table/" + name)
                with xarray.open_dataset(self.path("out.nc"), engine="netcdf4") as data:
                    if name == "z":
                        read = data["z_re"].values + 1j * data["z_im"].values
                        self.assertEqual((data["z_re"].units, data["z_im"].long_name), ("Ω", "z, imaginary part"))
                    else:
                        read = data[name].values
                        self.assertEqual(data[name].dims, ("t", "dim_1") if name == "m" else ("t",))
                    if name not in ("word", "z"):
                        self.assertEqual(read.dtype, values.dtype)
                    np.testing.assert_array_equal(read, values)
                    self.assertEqual(data["t"].values.tolist(), [0.1, 0.2, 0.30000000000000004])
                    self.assertEqual(data["t"].units, "ms")
        self.export("x.h5:x/table/is")
        with xarray.open_dataset(self.path("out.nc")) as data:
            self.assertEqual((data["is"].dtype, data["is"].values.tolist()), (np.bool_, [True, False, True]))

    def test_every_type_of_number_to_its_limits(self):
        subprocess.run([VALUE_FILES, "v.h5"], cwd=self.folder, check=True, timeout=60)
        for name in ("int8", "int16", "int32", "int64", "uint8", "uint16", "uint32", "uint64", "double", "float",
                     "special", "complex", "complex-float", "complex-int"):
            with self.subTest(name):
                self.export("v.h5:" + name)
                with h5py.File(self.path("v.h5"), "r") as file:
                    stored = file[name + "/Data"][()]
                if np.iscomplexobj(stored):
                    parts = {"_re": stored.real, "_im": stored.imag}
                else:
                    parts = {"_re": stored["r"], "_im": stored["i"]} if stored.dtype.names else {"": stored}
                with xarray.open_dataset(self.path("out.nc"), mask_and_scale=False) as data:
                    for ending, values in parts.items():
                        read = data[name + ending].values
                        self.assertEqual((read.dtype, read.tobytes()), (values.dtype, values.tobytes()))

    def test_without_an_axis_and_with_one_that_is_no_number(self):
        self.import_table("x [V]\n1\n2\n")
        self.export("x.h5:x/table/x")
        with xarray.open_dataset(self.path("out.nc")) as data:
            self.assertEqual((data["x"].dims, data["x"].values.tolist(), list(data.coords)), (("offset",), [1, 2], []))
        self.import_table("word,x [V]\na,1\nb,2\n")
        self.export("x.h5:x/table/x")
        with xarray.open_dataset(self.path("out.nc")) as data:
            self.assertEqual(data["word"].values.tolist(), ["a", "b"])

    def test_several_axes(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True, timeout=60)
        result = self.run_orrery("export", "odd.h5", "many", "--to", "out.nc")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (0, 1), result.stderr)
        self.assertIn("of 1000 axes the first 64 are written", result.stderr)
        with xarray.open_dataset(self.path("out.nc")) as data:
            self.assertEqual((data["many"].dims, data["many"].values.tolist()), (("offset",), [7, 8]))
            self.assertEqual(set(data.coords), {"own"} | {f"own_{number}" for number in range(2, 65)})
            for name in data.coords:
                self.assertEqual((data[name].values.tolist(), data[name].units), ([3, 4], "°C"))

    def test_an_axis_that_does_not_fit_is_left_out(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True, timeout=60)
        for name, word in (("lost", "leads nowhere"), ("long", "has 1 values where the variable has 2")):
            result = self.run_orrery("export", "odd.h5", name, "--to", "out.nc", "--force")
            self.assertEqual((result.returncode, result.stderr.count("\n")), (0, 1), result.stderr)
            self.assertIn(word, result.stderr)
            with xarray.open_dataset(self.path("out.nc")) as data:
                self.assertEqual((data[name].dims, data[name].values.tolist()), (("offset",), [1, 2]))

    def test_arrays_in_any_order(self):
        subprocess.run([VALUE_FILES, "v.h5"], cwd=self.folder, check=True, timeout=60)
        for name, shape in (("cube", (2, 3, 4)), ("column-major", (6, 4)), ("row", (24,))):
            self.export("v.h5:" + name)
            with xarray.open_dataset(self.path("out.nc")) as data:
                self.assertEqual(data[name].shape, shape)
                self.assertEqual(data[name].values.ravel().tolist(), list(range(24)))
            self.good("export", "v.h5", name, "--to", "again.csv", "--force")
            self.good("import", "again.csv", "-o", "again.h5", "--no-axis")
            self.assertEqual(self.stored("again.h5:again/table/" + name).tolist(),
                             np.arange(24).reshape(shape).tolist())

    def test_names_that_netcdf_does_not_take(self):
        self.import_table("a/b [s],=x [V]\n1,2\n")
        self.export("x.h5:x/table/%3dx" if "%3d" in self.good("ls", "x.h5", "x/table") else "x.h5:x/table/=x")
        with netCDF4.Dataset(self.path("out.nc")) as file:
            self.assertEqual(list(file.variables), ["a_b", "_=x"])
            self.assertEqual(file.variables["a_b"].long_name, "a/b")

    def test_no_values(self):
        self.import_table("t [s],x [V]\n")
        self.assertIn("has no values", self.fails(1, "export", "x.h5", "x/table/x", "--to", "out.nc"))
        self.assertFalse(os.path.exists(self.path("out.nc")))


class OutputTest(ExportTest):
    def test_what_is_there_is_replaced_when_told(self):
        self.import_table()
        for name in ("out.csv", "out.nc"):
            self.write(name, "mine")
            os.chmod(self.path(name), 0o640)
            self.assertIn("exists; --force replaces it", self.fails(1, "export", "x.h5", "x/table/n", "--to", name))
            with open(self.path(name)) as file:
                self.assertEqual(file.read(), "mine")
            self.good("export", "x.h5", "x/table/n", "--to", name, "--force")
            self.assertEqual(stat.S_IMODE(os.stat(self.path(name)).st_mode), 0o640)
            with open(self.path(name), "rb") as file:
                self.assertNotEqual(file.read(4), b"mine")
        self.assertEqual(sorted(os.listdir(self.folder)), ["out.csv", "out.nc", "x.csv", "x.h5"])

    def test_a_link_stays_one(self):
        self.import_table()
        self.write("real.csv", "")
        os.symlink("real.csv", self.path("link.csv"))
        self.good("export", "x.h5", "x/table/n", "--to", "link.csv", "--force")
        self.assertTrue(os.path.islink(self.path("link.csv")))
        self.assertGreater(os.path.getsize(self.path("real.csv")), 0)

    def test_a_full_disk_leaves_nothing_behind(self):
        self.good("import", SAMPLE, "-o", "d.h5")
        before = sorted(os.listdir(self.folder))
        for name in ("out.csv", "out.nc"):
            result = subprocess.run(["bash", "-c", f"ulimit -f 4; trap '' XFSZ; exec '{ORRERY}' export d.h5 "
                                     f"'diode/dc1/i(vd)' --to {name}"], cwd=self.folder, capture_output=True, text=True)
            self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1), result.stderr)
            self.assertRegex(result.stderr, f"^orrery: {re.escape(name)}: .*File too large")
            self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_refusals(self):
        self.import_table()
        for code, arguments, word in (
                (1, ("x.h5", "x/table", "--to", "o.csv"), "is a folder"),
                (1, ("x.h5", "x/nothing", "--to", "o.csv"), "there is nothing of that name"),
                (1, ("x.h5", "x/AppID", "--to", "o.csv"), "is a single value"),
                (1, ("no.h5", "x", "--to", "o.csv"), "no.h5"),
                (1, ("x.h5", "x/table/n", "--to", "nowhere/o.csv"), "the folder 'nowhere'"),
                (1, ("x.h5", "x/table/n", "--to", "x.h5", "--csv", "-f"), "is the file to read"),
                (1, ("x.h5", "x/table/n", "--to", "o.csv", "--units", "V"), "can't convert mA"),
                (2, ("x.h5", "x/table/n", "--to", "o.txt"), "--netcdf"),
                (2, ("x.h5", "x/table/n", "--to", "o.txt", "--csv", "--netcdf"), "--csv"),
                (2, ("x.h5", "x/table/n"), "--to")):
            with self.subTest(arguments):
                self.assertIn(word, self.fails(code, "export", *arguments))
        self.good("export", "x.h5", "x/table/n", "--to", "o.txt", "--csv")
        self.good("export", "x.h5", "x/table/n", "--to", "o.dat", "--netcdf")
        self.assertEqual(sorted(os.listdir(self.folder)), ["o.dat", "o.txt", "x.csv", "x.h5"])


if __name__ == "__main__":
    unittest.main()
