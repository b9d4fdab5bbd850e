"""A variable that is larger than the memory: it opens, and a part of it is read without the rest.

The file is sparse: 8 GiB of zeros that take no place on the disk, put into a small file of ours in the place of one
of its arrays.
"""

import os
import resource
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy

from catalogue_file import BLOCK, PLAIN, Catalogue, checksum

TOOL = None
GIBIBYTE = 1024 ** 3
ELEMENTS = 8 * GIBIBYTE // 8
LITTLE = 256 * 1024


def enlarge(path):
    """Make the array "a" of a small file one of 8 GiB of zeros, but for the last elements, 1 to 4."""
    tail = numpy.arange(1.0, 5.0)
    with h5py.File(path, "r+", libver=("v108", "v108")) as file:
        creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
        creation.set_layout(h5py.h5d.CONTIGUOUS)
        creation.set_alloc_time(h5py.h5d.ALLOC_TIME_EARLY)
        creation.set_fill_time(h5py.h5d.FILL_TIME_NEVER)
        del file["a"]
        space = h5py.h5s.create_simple((ELEMENTS,))
        h5py.h5d.create(file.id, b"a", h5py.h5t.IEEE_F64LE, space, creation)
        file["a"][ELEMENTS - len(tail):] = tail
        sums = [checksum(bytes(BLOCK))] * (8 * GIBIBYTE // BLOCK - 1)
        sums.append(checksum(bytes(BLOCK - tail.nbytes) + tail.tobytes()))
        catalogue = Catalogue(file)
        catalogue.set_array(catalogue.row_of(b"a"), [ELEMENTS], PLAIN, 8 * GIBIBYTE, sums)
        catalogue.store()


def within_a_gibibyte():
    resource.setrlimit(resource.RLIMIT_AS, (GIBIBYTE, GIBIBYTE))


class LargeArrays(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = os.path.join(self.folder.name, "large.h5")
        subprocess.run([TOOL, "small", self.path], check=True)
        enlarge(self.path)

    def run_tool(self, *arguments, limit=within_a_gibibyte):
        return subprocess.run([TOOL, *map(str, arguments)], capture_output=True, text=True, check=False,
                              preexec_fn=limit)

    def part(self, first, count):
        done = self.run_tool("part", self.path, first, count)
        self.assertEqual(done.returncode, 0, done.stderr)
        opening, reading, *numbers = done.stdout.split()
        return int(opening), int(reading), [float(number) for number in numbers]

    def test_takes_little_place_on_the_disk(self):
        self.assertLess(os.stat(self.path).st_blocks * 512, 64 * 1024 * 1024)
        self.assertGreater(os.stat(self.path).st_size, 8 * GIBIBYTE)

    def test_opens_and_gives_its_last_elements_within_a_gibibyte(self):
        opening, reading, numbers = self.part(ELEMENTS - 5, 5)
        self.assertEqual(numbers, [0, 1, 2, 3, 4])
        self.assertLess(opening, LITTLE)
        self.assertLess(reading, BLOCK + LITTLE)

    def test_reads_two_blocks_for_a_part_across_their_border(self):
        _, reading, numbers = self.part(BLOCK // 8 * 1000 - 2, 4)
        self.assertEqual(numbers, [0, 0, 0, 0])
        self.assertGreater(reading, 2 * BLOCK)
        self.assertLess(reading, 2 * BLOCK + LITTLE)

    def test_fails_with_one_clear_line_when_all_of_it_is_wanted(self):
        done = self.run_tool("open", self.path)
        self.assertEqual(done.stdout.count("\n"), 1, done.stdout)
        self.assertIn(self.path + ": /a: there isn't enough memory for the array", done.stdout)


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
