"""Files that no program of ours has made: each is refused with one clear line or read whole, without a crash, a hang
or more memory than the file is worth.

Run with the path of storage_tool as the argument. The forgeries are those of make_hostile_files.py. Many are looked at
by one process, since the start of one takes longer than most of them; a line that is missing names the one that ended it.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy

import make_hostile_files
from catalogue_file import Catalogue
from make_hostile_files import (A, B, CASES, EITHER, F, G, NUMBERS, P, R, S, SOUND, T, WHOLE_FILES, X, Y, Z, chain,
                                flipped, forge, packed, replaced, truncated)

TOOL = None

# What a sound small file takes, with what the sanitizers add to it.
MEMORY = 64e6


class Probe:
    """What became of one file: "sound", "refused" when it was opened, or "unread" later; its memory; the reason."""

    def __init__(self, line):
        self.end, peak, self.why = line.split("\t", 2)
        self.peak = int(peak)


def probe(paths):
    """The probe of each file; one that the process hasn't survived ends the list."""
    # What a sanitizer keeps of freed memory would count as the file's.
    options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
    run = subprocess.run([TOOL, "probe", *paths], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                         env={**os.environ, "ASAN_OPTIONS": options})
    lines = run.stdout.decode("utf-8", "replace").split("\n")[:-1]
    if run.returncode != 0 or len(lines) != len(paths):
        raise AssertionError("%s ended the process with %d" % (paths[min(len(lines), len(paths) - 1)],
                                                              run.returncode))
    return [Probe(line) for line in lines]


class HostileFiles(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.base = os.path.join(cls.folder.name, "base.h5")
        subprocess.run([TOOL, "small", cls.base], check=True)
        # So much memory does a sound file take; a forged one may take little more.
        cls.peak_of_base = probe([cls.base])[0].peak
        with open(cls.base, "rb") as file:
            cls.bytes = file.read()

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def expect_sound(self, name, make):
        path = self.path(name + ".h5")
        forge(self.base, path, make)
        found, = probe([path])
        self.assertEqual((found.end, found.why), ("sound", ""))
        return path

    def expect(self, path, found, reason):
        """Judge one probe by what the table of forgeries tells."""
        size = os.stat(path, follow_symlinks=False).st_blocks * 512
        self.assertLess(found.peak, self.peak_of_base + MEMORY + 20 * size, found.why)
        if reason is SOUND or reason is EITHER and found.end == "sound":
            self.assertEqual((found.end, found.why), ("sound", ""))
            return
        self.assertIn(found.end, ("refused", "unread"))
        self.assertRegex(found.why, r"\A[^\n\r]{8,}\Z")
        if found.end == "refused":
            self.assertTrue(found.why.startswith(path + ": "), found.why)
        if reason is not EITHER:
            self.assertIn(reason, found.why)

    def test_a_file_that_is_only_stored_anew_is_opened(self):
        """The forger's tools change nothing by themselves, so that it is the forgery that is refused."""
        path = self.expect_sound("stored_anew", lambda file: Catalogue(file).store())
        with h5py.File(path) as file:
            catalogue = Catalogue(file)
            self.assertEqual([catalogue.name(i) for i in (A, B, F, G, X, Y, P, R, S, T, Z)],
                             [b"a", b"b", b"f", b"g", b"x", b"y", b"p", b"r", b"s", b"t", b"z"])

    def test_a_dataset_that_is_only_made_anew_is_opened(self):
        self.expect_sound("made_anew", replaced(h5py.h5t.IEEE_F64LE, (2, 3), NUMBERS))

    def test_packed_texts_that_are_only_made_anew_are_opened(self):
        self.expect_sound("packed_anew", packed(b"abcd", [1, 3]))

    def test_the_deepest_folder_there_may_be_is_opened(self):
        def deep(file):
            catalogue = Catalogue(file)
            chain(catalogue, 999)
            catalogue.store()
        self.expect_sound("deep", deep)

    def test_strange_datasets_beside_the_tree_are_no_matter(self):
        def strange(file):
            file["stranger"] = numpy.arange(10)
            file["f/loop"] = file["/"]
            file["f/nowhere"] = h5py.SoftLink("/nowhere")
            file["f/passwd"] = h5py.ExternalLink("/etc/passwd", "/")
        self.expect_sound("stranger", strange)

    def test_every_forgery_is_refused_with_one_clear_line(self):
        self.assertGreater(len(CASES) + len(WHOLE_FILES), 190)
        folder = self.path("forged")
        os.mkdir(folder)
        forged = list(make_hostile_files.make_all(self.base, folder))
        probes = probe([path for _, path, _ in forged])
        for (name, path, reason), found in zip(forged, probes):
            with self.subTest(name):
                self.expect(path, found, reason)
        shutil.rmtree(folder)

    def test_no_file_without_its_end_is_read(self):
        self.expect_damage(truncated(self.bytes), ("refused",))

    def test_a_flipped_byte_is_noticed_or_without_effect(self):
        """Which tree a file with a flipped bit gives, if it gives one, is a matter of another test."""
        self.expect_damage(flipped(self.bytes), ("refused", "unread", "sound"))

    def expect_damage(self, damaged, ends):
        folder = self.path("damaged")
        os.mkdir(folder)
        paths = []
        for name, data in damaged:
            paths.append(os.path.join(folder, name))
            with open(paths[-1], "wb") as file:
                file.write(data)
        self.assertGreater(len(paths), 8)
        for path, found in zip(paths, probe(paths)):
            with self.subTest(os.path.basename(path)):
                self.assertIn(found.end, ends)
                self.assertLess(found.peak, self.peak_of_base + MEMORY)
                self.assertRegex(found.why, r"\A[^\n\r]*\Z")
        shutil.rmtree(folder)

    def test_a_device_is_refused(self):
        found, = probe(["/dev/zero"])
        self.assertEqual((found.end, found.why), ("refused", "/dev/zero: is not a regular file"))

    def test_a_reader_of_the_former_file_is_no_obstacle_to_a_save(self):
        path = self.path("read.h5")
        shutil.copyfile(self.base, path)
        with h5py.File(path, "r") as reader:
            subprocess.run([TOOL, "resave", path], check=True)
            self.assertEqual(reader["a"][()].tolist(), NUMBERS.tolist())
        self.assertEqual(probe([path])[0].end, "sound")


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
