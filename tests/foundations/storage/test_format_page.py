"""The page on the file format, tried: its dump and its program are those of a file that is made anew, and other programs
read values, units and axes without knowing of it.

Run with the paths of format_tool and of the page as arguments; "--write" as a third one brings the page up to date.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy
import xarray

TOOL = None
PAGE = None


def block(kind):
    with open(PAGE, encoding="utf-8") as page:
        found = re.findall("```" + kind + "\n(.*?)```\n", page.read(), re.DOTALL)
    assert len(found) == 1, f"{len(found)} blocks of {kind}"
    return found[0]


def run(*command, folder):
    done = subprocess.run(command, check=True, capture_output=True, text=True, cwd=folder)
    return "\n".join(line.rstrip() for line in done.stdout.splitlines()) + "\n"


class FormatPage(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = holder.name
        self.path = os.path.join(self.folder, "small.h5")

    def make(self, *options):
        subprocess.run([TOOL, self.path, *options], check=True)

    def dump(self):
        self.make()
        return run("h5dump", "-g", "/run", "small.h5", folder=self.folder)

    def example(self):
        self.make()
        return run(sys.executable, "-c", block("python"), "small.h5", folder=self.folder)

    def test_the_dump_is_that_of_the_file(self):
        self.assertEqual(block("h5dump"), self.dump())

    def test_the_program_prints_what_the_page_says(self):
        self.assertEqual(block("text"), self.example())

    def test_h5py_reads_values_units_and_axis(self):
        for options in ((), ("more",), ("more", "compressed")):
            self.make(*options)
            with h5py.File(self.path, "r") as file:
                speed = file["run/speed/Data"]
                self.assertEqual(speed[:].tolist(), [2.0, 2.25, 2.5])
                self.assertEqual(speed.attrs["units"], b"m/s")
                self.assertEqual(speed.attrs["type"], b"Variable")
                self.assertEqual(speed.attrs["axes"].tolist(), [b"/run/time/Data"])
                self.assertEqual(file[speed.attrs["axes"][0]][:].tolist(), [0.0, 0.5, 1.0])
                self.assertNotIn("axes", file["run/time/Data"].attrs)

    def test_an_axis_is_named_by_the_path_of_its_dataset_if_it_has_one(self):
        self.make("more")
        with h5py.File(self.path, "r") as file:
            both = file["a%2Fb/both/Data"]
            self.assertEqual(both.attrs["axes"].tolist(), [b"/a%2Fb/1%2Ff/Data", b""])
            self.assertNotIn("units", both.attrs, "a plain number has none")
            self.assertEqual(file[both.attrs["axes"][0]].attrs["units"], b"kg*m^2/(A*s^3)")

    def test_xarray_reads_values_and_units(self):
        for options in ((), ("more", "compressed")):
            self.make(*options)
            with xarray.open_dataset(self.path, group="run/speed", engine="h5netcdf", phony_dims="sort") as data:
                self.assertEqual(data["Data"].values.tolist(), [2.0, 2.25, 2.5])
                self.assertEqual(data["Data"].attrs["units"], "m/s")
                self.assertEqual(data["Data"].attrs["axes"], "/run/time/Data")

    def test_large_arrays_are_compressed_when_that_is_chosen(self):
        self.make("more")
        plain = os.path.getsize(self.path)
        self.make("more", "compressed")
        self.assertLess(os.path.getsize(self.path), plain / 4)
        with h5py.File(self.path, "r") as file:
            both = file["a%2Fb/both/Data"]
            self.assertEqual((both.compression, both.compression_opts, both.shuffle), ("gzip", 4, True))
            self.assertGreaterEqual(both.chunks[0] * 8, 1024 * 1024)
            self.assertTrue((both[:] == numpy.arange(300_000.0)).all())
            self.assertIsNone(file["run/speed/Data"].chunks, "small arrays stay plain")
            self.assertEqual(file["catalogue"].attrs["compression"], 4)

    def test_small_arrays_share_the_pool_when_that_is_chosen(self):
        self.make("more", "packed")
        with h5py.File(self.path, "r") as file:
            self.assertEqual(sorted(file), ["a%2Fb", "catalogue", "catalogue-heap", "catalogue-pool"])
            pool = numpy.frombuffer(file["catalogue-pool"][:].tobytes(), dtype="<f8")
            self.assertEqual(pool.tolist(), [1.0, 2.0, 2.0, 2.25, 2.5, 0.0, 0.5, 1.0])
            self.assertEqual(file["a%2Fb/both/Data"].attrs["axes"].tolist(), [b"", b""])
            self.assertEqual(file["catalogue"].attrs["packed"], 1)


def write_page():
    test = FormatPage()
    test.setUp()
    for kind, text in (("h5dump", test.dump()), ("text", test.example())):
        with open(PAGE, encoding="utf-8") as page:
            whole = page.read().replace(block(kind), text)
        with open(PAGE, "w", encoding="utf-8") as page:
            page.write(whole)
    test.doCleanups()


if __name__ == "__main__":
    TOOL, PAGE = (os.path.abspath(path) for path in (sys.argv.pop(1), sys.argv.pop(1)))
    if sys.argv[1:] == ["--write"]:
        write_page()
    else:
        unittest.main()
