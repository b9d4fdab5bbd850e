#!/usr/bin/python3
"""Runs 'orrery verify' on sound, damaged and forged files, the other commands on what only a forger makes, and 'orrery
repack'.

usage: verify_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import os
import pty
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy

ORRERY = os.path.abspath(sys.argv.pop(1))
SOURCES = os.path.abspath(sys.argv.pop(1))
BUILD = os.path.join(os.path.dirname(ORRERY), "../..")  # when this is run by hand
ODD_FILES = os.environ.get("ORRERY_ODD_FILES", os.path.join(BUILD, "tests/hosts/orrery/orrery_odd_files"))
STORAGE_TOOL = os.environ.get("ORRERY_STORAGE_TOOL", os.path.join(BUILD, "tests/foundations/storage/storage_tool"))
BREAKING_HDF5 = os.environ.get("ORRERY_BREAKING_HDF5", os.path.join(BUILD, "tests/hosts/orrery/libbreaking_hdf5.so"))
SAMPLE = os.path.join(SOURCES, "hosts/orrery/samples/diode.raw")

sys.path.insert(0, os.path.join(SOURCES, "tests/foundations/storage"))
import make_hostile_files  # noqa: E402
from catalogue_file import COMPRESSED, PADDED, PLAIN, POOLED, Catalogue, checksums  # noqa: E402
from make_hostile_files import SOUND, A, R, contiguous, forge, reference_record  # noqa: E402

with open(ORRERY, "rb") as program:
    IS_SANITIZED = b"__asan_init" in program.read()


class VerifyTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def small(self, name="small.h5", make=lambda file: None):
        """A file with one node of each kind, forged."""
        base = self.path("base-of-" + name)
        subprocess.run([STORAGE_TOOL, "small", base], check=True)
        forge(base, self.path(name), make)
        os.remove(base)
        return name

    def run_orrery(self, *arguments, environment=None, **options):
        return subprocess.run([ORRERY, *arguments], cwd=self.folder, capture_output=True, timeout=300,
                              env={**os.environ, **(environment or {})}, **options)

    def verify(self, code, *arguments, **options):
        """The lines on standard output; nothing may stand on standard error."""
        result = self.run_orrery("verify", *arguments, **options)
        self.assertEqual((result.returncode, result.stderr.decode()), (code, ""), result.stdout.decode())
        return result.stdout.decode().splitlines()

    def kilobytes(self, name):
        """The length of a small file, as the program tells it."""
        return f"{os.path.getsize(self.path(name)) / 1000:.1f} kB"


class SoundFiles(VerifyTest):
    def test_a_sound_file_gets_one_line(self):
        self.run_orrery("import", SAMPLE, "-o", "d.h5", check=True)
        line, = self.verify(0, "d.h5")
        self.assertRegex(line, r"^d\.h5: sound, \d+ folders, \d+ values, \d+\.\d kB$")
        self.assertEqual(self.verify(0, "--quiet", "d.h5"), [])

    def test_every_type_shape_and_name_is_read(self):
        subprocess.run([STORAGE_TOOL, "sample", self.path("s.h5")], check=True)
        line, = self.verify(0, "s.h5")
        self.assertRegex(line, r"^s\.h5: sound, 6 folders, 71 values, 5\.\d MB$")

    def test_one_of_a_thing_is_told_in_the_singular(self):
        def lonely(file):
            catalogue = Catalogue(file)
            catalogue.rows = catalogue.rows[[0, 1, 3]]
            catalogue.store()
            del file["b"], file["p"], file["t"], file["f"]
        name = self.small(make=lonely)
        self.assertEqual(self.verify(0, name), [f"small.h5: sound, 1 folder, 1 value, {self.kilobytes(name)}"])

    def test_the_file_is_as_before_and_nothing_lies_beside_it(self):
        name = self.small()
        before = os.stat(self.path(name))
        with open(self.path(name), "rb") as file:
            data = file.read()
        self.verify(0, name)
        after = os.stat(self.path(name))
        self.assertEqual((before.st_ino, before.st_mtime_ns), (after.st_ino, after.st_mtime_ns))
        with open(self.path(name), "rb") as file:
            self.assertEqual(file.read(), data)
        self.assertEqual(os.listdir(self.folder), [name])

    def test_a_file_may_be_called_like_an_option(self):
        self.small("--quiet")
        self.assertEqual(self.verify(0, "--", "--quiet"), [f"--quiet: sound, 2 folders, 8 values, {self.kilobytes('--quiet')}"])

    def test_each_of_several_files_is_judged(self):
        self.small("one.h5")
        self.small("two.h5", lambda file: file.__delitem__("a"))
        self.small("three.h5")
        self.assertEqual(self.verify(1, "one.h5", "two.h5", "three.h5"), [
            f"one.h5: sound, 2 folders, 8 values, {self.kilobytes('one.h5')}",
            "two.h5: error: /a: the array's dataset is missing",
            "two.h5: not sound, 1 error",
            f"three.h5: sound, 2 folders, 8 values, {self.kilobytes('three.h5')}"])
        self.assertEqual(self.verify(1, "-q", "one.h5", "two.h5", "three.h5"),
                         ["two.h5: error: /a: the array's dataset is missing"])


class UnsoundFiles(VerifyTest):
    def test_all_damaged_arrays_are_told(self):
        def damage(file):
            file["a"][1, 1] = 99
            file["f/g/x"][0] = 99
            file["p"][3] = 1
            file["t"][0] = b"two"
        damaged = "the array is damaged: its checksum doesn't fit its bytes"
        self.assertEqual(self.verify(1, self.small(make=damage)), [
            *(f"small.h5: error: {path}: {damaged}" for path in ("/a", "/f/g/x", "/p", "/t")),
            "small.h5: not sound, 4 errors"])

    def test_damage_of_the_catalogue_is_told(self):
        def damage(file):
            row = file["catalogue"][3]
            row["flags"] = 7
            file["catalogue"][3] = row
        self.assertEqual(self.verify(1, self.small(make=damage)), [
            "small.h5: error: the catalogue is damaged: its checksum doesn't fit its bytes",
            "small.h5: not sound, 1 error"])

    def test_what_is_no_data_file_is_told(self):
        with open(self.path("letter"), "w") as file:
            file.write("Dear friend\n")
        os.mkfifo(self.path("fifo"))
        os.mkdir(self.path("folder"))
        for name, reason in (("letter", "is not an HDF5 file"), ("fifo", "is not a regular file"),
                             ("folder", "is not a regular file"), ("/dev/zero", "is not a regular file"),
                             ("missing", "No such file or directory")):
            self.assertEqual(self.verify(1, name), [f"{name}: error: {reason}", f"{name}: not sound, 1 error"])

    def test_what_leads_out_of_the_file_is_told(self):
        def lead_out(file):
            file["link"] = h5py.ExternalLink("/etc/passwd", "/x\n")
            file["f/link"] = h5py.ExternalLink("other.h5", "/y")
            file.create_dataset("stranger/outside", shape=(3,), dtype="u1", external=[("/etc/passwd", 0, 3)])
            layout = h5py.VirtualLayout(shape=(2,), dtype="f8")
            layout[:] = h5py.VirtualSource("/etc/passwd", "a", shape=(2,))
            file.create_virtual_dataset("stranger/virtual", layout)
        self.assertEqual(sorted(self.verify(1, self.small(make=lead_out))), sorted([
            "small.h5: error: /link: a link that leads out of the file, to /etc/passwd, object /x\\x0a",
            "small.h5: error: /f/link: a link that leads out of the file, to other.h5, object /y",
            "small.h5: warning: /stranger: a group that the tree doesn't know",
            "small.h5: error: /stranger/outside: the dataset's bytes lie in another file",
            "small.h5: error: /stranger/virtual: the dataset is put together from other ones",
            "small.h5: not sound, 4 errors, 1 warning"]))

    def test_what_stands_beside_the_tree_is_a_warning(self):
        def add(file):
            file["strange"] = 1
            file["f/type"] = numpy.dtype("f8")
            file["f/soft"] = h5py.SoftLink("/nowhere")
            file["f/circle"] = file["/"]
        lines = [
            "small.h5: warning: /strange: a dataset that the tree doesn't know",
            "small.h5: warning: /f/type: an object that the tree doesn't know",
            "small.h5: warning: /f/soft: a soft link that the tree doesn't know, to /nowhere",
            "small.h5: warning: /f/circle: another link to an object that has one already"]
        name = self.small(make=add)
        self.assertEqual(sorted(self.verify(0, name)),
                         sorted([*lines, f"small.h5: sound, 2 folders, 8 values, {self.kilobytes(name)}, 4 warnings"]))
        self.assertEqual(self.verify(0, name, "--quiet"), [])
        self.assertEqual(sorted(self.verify(1, name, "--strict")),
                         sorted([*lines, "small.h5: not sound, 0 errors, 4 warnings"]))
        self.assertEqual(sorted(self.verify(1, name, "--strict", "--quiet")), sorted(lines))

    def test_references_that_lead_nowhere_are_warnings(self):
        def lead(record):
            def change(file):
                catalogue = Catalogue(file)
                catalogue.rows[R]["value"] = catalogue.append(record)
                catalogue.store()
            return change
        name = self.small(make=lead(reference_record(b"../no/such", b"", b"", b"", b"")))
        self.assertEqual(self.verify(0, name), [
            "small.h5: warning: /r: the reference leads nowhere: to ../no/such",
            f"small.h5: sound, 2 folders, 8 values, {self.kilobytes(name)}, 1 warning"])
        self.small("target.h5")
        for path, found in ((b"/f/g", True), (b"/f/h", False)):
            self.small("from.h5", lead(reference_record(path, b"target.h5", b"/nowhere/target.h5", b"", b"HDF5")))
            lines = self.verify(0, "from.h5")
            self.assertEqual(len(lines), 1 if found else 2, lines)
            if not found:
                self.assertRegex(lines[0], r"^from\.h5: warning: /r: the reference leads nowhere: to /f/h in the file "
                                           r".*/target\.h5$")
        os.remove(self.path("target.h5"))
        self.assertEqual(len(self.verify(0, "from.h5")), 2)

    def test_an_unreadable_attribute_is_a_warning(self):
        def add(file):
            file["a"].attrs["notes"] = ["one", "two"]
            file["a"].attrs["more"] = numpy.arange(5)
        name = self.small(make=add)
        self.assertEqual(len(self.verify(0, name)), 1)
        with open(self.path(name), "r+b") as file:
            data = file.read()
            file.seek(data.index(b"GCOL"))
            file.write(b"LOCG")
        line, _ = self.verify(0, name)
        self.assertTrue(line.startswith("small.h5: warning: /a: the attribute notes can't be read: "), line)

    def test_what_a_file_says_can_not_steer_the_terminal(self):
        def add(file):
            file["x\x1b[31m\u0085"] = 1
        self.assertIn(r"small.h5: warning: /x\x1b[31m\x85: a dataset that the tree doesn't know",
                      self.verify(0, self.small(make=add)))


class ProcessOfItsOwn(VerifyTest):
    """HDF5 breaks down as it opens the file."""

    def broken(self, how, *arguments):
        preloaded = {"LD_PRELOAD": BREAKING_HDF5, "ORRERY_BREAK": how, "ASAN_OPTIONS": "verify_asan_link_order=0"}
        return self.verify(1, self.small(), *arguments, environment=preloaded)

    def test_a_crash_is_an_error_of_the_file(self):
        self.assertEqual(self.broken("crash"), [
            "small.h5: error: the check was ended by a signal: Aborted", "small.h5: not sound, 1 error"])

    def test_an_early_end_is_an_error_of_the_file(self):
        self.assertEqual(self.broken("exit"), [
            "small.h5: error: the check ended early, with the code 7", "small.h5: not sound, 1 error"])

    def test_a_hang_is_an_error_of_the_file(self):
        self.assertEqual(self.broken("hang", "--timeout", "1"), [
            "small.h5: error: the check made no progress for 1 s and was ended", "small.h5: not sound, 1 error"])

    if not IS_SANITIZED:  # a sanitizer takes terabytes of addresses for itself
        def test_want_of_memory_is_an_error_of_the_file(self):
            def many_texts(file):
                count = 20_000_000
                del file["a"]
                kind = h5py.h5t.C_S1.copy()
                kind.set_size(1)
                kind.set_cset(h5py.h5t.CSET_UTF8)
                kind.set_strpad(h5py.h5t.STR_NULLPAD)
                texts = numpy.full(count, b"x", dtype="S1")
                contiguous(file, "/a", kind, (count,), texts)
                catalogue = Catalogue(file)
                catalogue.rows[A]["element"] = 16
                catalogue.set_array(A, [count], PADDED, count, checksums(texts.tobytes()))
                catalogue.store()
            name = self.small(make=many_texts)
            little = 400 << 20
            lines = self.verify(1, name, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (little, little)))
            self.assertEqual(lines, ["small.h5: error: /a: there isn't enough memory for the array",
                                     "small.h5: not sound, 1 error"])
            self.assertEqual(len(self.verify(0, name)), 1)

    def test_a_reader_that_goes_away_ends_it(self):
        self.small()
        read, write = os.pipe()
        os.close(read)
        result = subprocess.run([ORRERY, "verify", "small.h5"], cwd=self.folder, stdout=write, stderr=subprocess.PIPE,
                                timeout=60)
        os.close(write)
        self.assertIn(result.returncode, (0, -signal.SIGPIPE))
        self.assertEqual(result.stderr, b"")


class Repack(VerifyTest):
    """'orrery repack' stores the same tree in another way."""

    def sample(self):
        """A file of every type, shape and name, and an array that compresses well; OUT is what it is repacked to."""
        subprocess.run([STORAGE_TOOL, "sample", self.path("in.h5")], check=True)

    def repack(self, *arguments):
        result = self.run_orrery("repack", *arguments)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""))
        return result.stdout.decode()

    def refused(self, *arguments, code=1, **options):
        result = self.run_orrery("repack", *arguments, **options)
        self.assertEqual((result.returncode, result.stdout), (code, b""))
        line = result.stderr.decode()
        self.assertRegex(line, r"\Aorrery: [^\n]+\n\Z")
        return line[len("orrery: "):-1]

    def structure(self, name):
        """All that the catalogue tells, but for the uid and how arrays are stored."""
        with h5py.File(self.path(name)) as file:
            catalogue = Catalogue(file)
            told = []
            for number, row in enumerate(catalogue.rows):
                fields = {field: row[field].item() for field in ("parent", "flags", "kind", "form", "element",
                                                                 "ordering", "cell_array", "reserved")}
                value = tuple(row["value"])
                if fields["form"] == 3:
                    value = catalogue.array(number)[0]
                elif fields["form"] in (2, 4):
                    value = catalogue.value_bytes(number)
                told.append((catalogue.name(number), catalogue.type_name(number), fields, value))
            return told

    def layouts(self, name):
        with h5py.File(self.path(name)) as file:
            catalogue = Catalogue(file)
            return {catalogue.array(number)[1] for number, row in enumerate(catalogue.rows) if row["form"] == 3}

    def expect_same_tree(self, a, b):
        self.assertEqual(self.structure(a), self.structure(b))
        result = self.run_orrery("diff", a, b)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
        self.assertEqual(len(self.verify(0, b)), 1)

    def size(self, name):
        return os.path.getsize(self.path(name))

    def test_a_compressed_file_is_smaller_and_holds_the_same(self):
        self.sample()
        said = self.repack("in.h5", "out.h5", "--compress", "6")
        self.assertRegex(said, r"\Aout\.h5: \d+\.\d kB, before 5\.\d MB\n\Z")
        self.assertLess(self.size("out.h5"), self.size("in.h5") / 10)
        self.assertIn(COMPRESSED, self.layouts("out.h5"))
        self.expect_same_tree("in.h5", "out.h5")

    def test_the_ways_lead_back(self):
        self.sample()
        for there, back, layout in ((("--compress", "9"), ("--compress", "0"), COMPRESSED),
                                    (("--packed",), ("--no-packed",), POOLED),
                                    (("--packed", "--compress=1"), ("--no-packed", "--compress=0"), POOLED)):
            self.repack("in.h5", "out.h5", *there)
            self.assertIn(layout, self.layouts("out.h5"))
            self.expect_same_tree("in.h5", "out.h5")
            self.repack("out.h5", "back.h5", *back)
            self.assertEqual(self.layouts("back.h5"), self.layouts("in.h5"))
            self.expect_same_tree("in.h5", "back.h5")

    def test_what_no_option_tells_stays_as_it_is(self):
        self.sample()
        self.repack("in.h5", "packed.h5", "--packed")
        self.repack("packed.h5", "both.h5", "--compress", "1")
        self.repack("both.h5", "same.h5")
        self.assertLessEqual({COMPRESSED, POOLED}, self.layouts("same.h5"))
        self.expect_same_tree("in.h5", "same.h5")

    def test_types_that_this_program_knows_come_through(self):
        self.run_orrery("import", SAMPLE, "-o", "in.h5", "--sweep", "temperature=-40,0,27,85,125", check=True)
        self.repack("in.h5", "out.h5", "--packed", "--compress", "1")
        self.expect_same_tree("in.h5", "out.h5")
        subprocess.run([ODD_FILES, self.path("odd.h5")], check=True)
        self.repack("odd.h5", "odd-out.h5", "--packed")
        self.assertEqual(self.structure("odd.h5"), self.structure("odd-out.h5"))

    def test_a_damaged_array_ends_it_and_the_former_file_stays(self):
        self.small("in.h5", lambda file: file["f/g/x"].__setitem__(2, 9))
        for arguments in ((), ("--packed",), ("--compress", "1")):
            self.assertEqual(self.refused("in.h5", "out.h5", *arguments),
                             "in.h5: /f/g/x: the array is damaged: its checksum doesn't fit its bytes")
            self.assertEqual(os.listdir(self.folder), ["in.h5"])
        self.small("out.h5")
        with open(self.path("out.h5"), "rb") as file:
            before = file.read()
        self.refused("in.h5", "out.h5")
        with open(self.path("out.h5"), "rb") as file:
            self.assertEqual(file.read(), before)
        self.assertEqual(sorted(os.listdir(self.folder)), ["in.h5", "out.h5"])

    def test_a_damaged_header_is_one_line_of_every_command(self):
        with open(self.path(self.small("in.h5")), "rb") as file:
            content = file.read()
        headers = [match.start() for match in re.finditer(b"OHDR", content)]
        self.assertGreater(len(headers), 2)
        # HDF5 never frees what it had made of a header before it found the damage.
        leaks = {"environment": {"ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}}
        for place in headers:
            damaged = bytearray(content)
            damaged[place + 10] ^= 1
            with open(self.path("in.h5"), "wb") as file:
                file.write(damaged)
            self.refused("in.h5", "out.h5", **leaks)
            for command in (["ls", "-la", "in.h5"], ["copy", "in.h5", "-o", "out.h5"]):
                line = self.run_orrery(*command, **leaks).stderr.decode()
                self.assertRegex(line, r"\A(orrery: [^\n]+\n)?\Z", command)

    def test_a_file_may_take_its_own_place_however_it_is_spelled(self):
        self.sample()
        shutil.copyfile(self.path("in.h5"), self.path("copy.h5"))
        os.symlink("in.h5", self.path("link.h5"))
        for output, option in (("in.h5", "--compress=6"), ("./in.h5", "--compress=0"), ("link.h5", "--compress=6")):
            self.repack("in.h5", output, option)
            self.assertEqual(COMPRESSED in self.layouts("in.h5"), option == "--compress=6")
            self.expect_same_tree("copy.h5", "in.h5")
        self.assertTrue(os.path.islink(self.path("link.h5")))
        self.assertEqual(sorted(os.listdir(self.folder)), ["copy.h5", "in.h5", "link.h5"])
        self.small("damaged.h5", lambda file: file["a"].__setitem__((0, 0), 9))
        with open(self.path("damaged.h5"), "rb") as file:
            before = file.read()
        self.refused("damaged.h5", "damaged.h5", "--packed")
        with open(self.path("damaged.h5"), "rb") as file:
            self.assertEqual(file.read(), before)

    def test_a_file_of_another_kind_is_replaced_with_force_only(self):
        self.small("in.h5")
        with open(self.path("letter"), "w") as file:
            file.write("Dear friend\n")
        self.assertEqual(self.refused("in.h5", "letter"),
                         "letter: exists and is not an HDF5 file; --force replaces it")
        self.repack("in.h5", "letter", "--force")
        self.expect_same_tree("in.h5", "letter")

    def test_wrong_usage(self):
        for arguments in ([], ["in.h5"], ["a", "b", "c"], ["in.h5", "out.h5", "--compress", "10"],
                          ["in.h5", "out.h5", "--compress", "-1"], ["in.h5", "out.h5", "--compress", "x"]):
            self.assertIn("try 'orrery repack --help'", self.refused(*arguments, code=2))
        self.assertEqual(self.refused("missing.h5", "out.h5"), "missing.h5: No such file or directory")


class Progress(VerifyTest):
    def large(self):
        """A file with an array of 16 MB."""
        def change(file):
            numbers = numpy.arange(2_000_000.0)
            del file["a"]
            contiguous(file, "/a", h5py.h5t.IEEE_F64LE, numbers.shape, numbers)
            catalogue = Catalogue(file)
            catalogue.set_array(A, numbers.shape, PLAIN, numbers.nbytes, checksums(numbers.tobytes()))
            catalogue.store()
        return self.small("large.h5", change)

    def on_a_terminal(self, *arguments):
        """What a person sees on standard error."""
        leader, follower = pty.openpty()
        result = subprocess.run([ORRERY, *arguments], cwd=self.folder, stdout=subprocess.PIPE, stderr=follower,
                                timeout=60)
        os.close(follower)
        seen = b""
        try:
            while piece := os.read(leader, 4096):
                seen += piece
        except OSError:  # the end, on a terminal that nobody has open any more
            pass
        os.close(leader)
        self.assertEqual(result.returncode, 0)
        return seen.decode()

    def test_a_long_work_shows_how_far_it_is(self):
        name = self.large()
        for arguments, shown in ((["verify", name], [name]), (["repack", name, "out.h5"], [name, "saving out.h5"])):
            seen = self.on_a_terminal(*arguments)
            for file in shown:
                self.assertIn(f"orrery: {file}: 100 %", seen)
            self.assertTrue(seen.endswith("\r\033[K"), seen)
            self.assertEqual(self.run_orrery(*arguments).stderr, b"")

    def test_a_short_work_shows_nothing(self):
        self.assertEqual(self.on_a_terminal("verify", self.small()), "")


class Usage(VerifyTest):
    def test_wrong_usage(self):
        for arguments in ([], ["--timeout", "0", "f"], ["--timeout", "x", "f"], ["--timeout", "86401", "f"]):
            result = self.run_orrery("verify", *arguments)
            self.assertEqual((result.returncode, result.stdout), (2, b""), arguments)
            self.assertRegex(result.stderr.decode(), r"\Aorrery: [^\n]*; try 'orrery verify --help'\n\Z")

    def test_the_help_fits_a_terminal_and_keeps_the_inside_to_itself(self):
        for command, usage in (("verify", "FILE..."), ("repack", "IN OUT")):
            text = self.run_orrery(command, "--help").stdout.decode()
            self.assertIn(f"Usage: orrery {command} [OPTIONS] {usage}", text)
            self.assertNotIn("in-child", text)
            for line in text.splitlines():
                self.assertLessEqual(len(line), 80, line)


class HostileFiles(VerifyTest):
    """What only a forger makes: each command ends by itself, with an answer or one line of refusal."""

    def expect_an_end(self, *arguments):
        result = subprocess.run([ORRERY, *arguments], cwd=self.folder, capture_output=True, timeout=60)
        self.assertIn(result.returncode, (0, 1, 2), (arguments, result.stderr))
        self.assertLessEqual(result.stderr.count(b"\n"), 3, (arguments, result.stderr))
        return result

    def test_every_forgery_is_borne_by_every_command(self):
        base = self.path("base.h5")
        subprocess.run([STORAGE_TOOL, "small", base], check=True)
        os.mkdir(self.path("forged"))
        forged = list(make_hostile_files.make_all(base, self.path("forged")))
        result = self.run_orrery("verify", *(path for _, path, _ in forged))
        self.assertEqual((result.returncode, result.stderr), (1, b""))
        verdicts = dict(re.findall(r"^([^\n]*\.h5): (sound|not sound), ", result.stdout.decode(), re.M))
        for name, path, reason in forged:
            with self.subTest(name):
                if not isinstance(reason, str):
                    self.assertIn(path, verdicts)
                else:
                    self.assertEqual(verdicts[path], "not sound")
                if reason is SOUND:
                    self.assertEqual(verdicts[path], "sound")
                self.expect_an_end("ls", path)
                if name.startswith(("reference", "deflated", "external", "type", "unknown", "all")):
                    self.expect_an_end("show", path, "a")
                    self.expect_an_end("diff", path, base)

    def test_trees_whose_nodes_are_of_other_kinds_are_borne(self):
        """A folder where a value belongs, and nothing where a folder does, in every place."""
        subprocess.run([ODD_FILES, self.path("odd.h5")], check=True)
        with h5py.File(self.path("odd.h5")) as file:
            count = len(Catalogue(file).rows)
        self.assertGreater(count, 100)
        for number in range(1, count, 5):
            def change(file):
                catalogue = Catalogue(file)
                row = catalogue.rows[number]
                row["form"], row["element"], row["value"] = 0, 0, (0, 0)
                has_children = (catalogue.rows["parent"] == number).any()
                row["kind"] = 1 if row["kind"] == 0 and not has_children else 0
                catalogue.store()
            forge(self.path("odd.h5"), self.path("absurd.h5"), change)
            with self.subTest(number):
                self.expect_an_end("ls", "absurd.h5")


if __name__ == "__main__":
    unittest.main()
