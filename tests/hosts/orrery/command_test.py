#!/usr/bin/python3
"""Runs the program as a person would: exit codes, what stands on which stream, and what is left on the disk.

usage: command_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import ctypes
import os
import pty
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import unittest

ORRERY = os.path.abspath(sys.argv.pop(1))
SOURCES = os.path.abspath(sys.argv.pop(1))
ODD_FILES = os.environ.get("ORRERY_ODD_FILES", os.path.join(
    os.path.dirname(ORRERY), "../../tests/hosts/orrery/orrery_odd_files"))  # in a build folder
SAMPLE = os.path.join(SOURCES, "hosts/orrery/samples/diode.raw")
DATA = os.path.join(SOURCES, "tests/hosts/orrery/data")

# The library's own output would not be the same under these, if a locale had a say.
LOCALES = [{}, {"LC_ALL": "de_DE.UTF-8", "LANG": "de_DE.UTF-8"}, {"LC_ALL": "C"}, {"LC_ALL": "tr_TR.UTF-8"}]


def raw(points, values, plot="DC transfer characteristic", names=("x", "y"), flags="real"):
    """A raw file of doubles, in binary."""
    header = f"Title: test\nDate: today\nPlotname: {plot}\nFlags: {flags}\nNo. Variables: {len(names)}\n"
    header += f"No. Points: {points}\nVariables:\n"
    for number, name in enumerate(names):
        header += f"\t{number}\t{name}\tvoltage\n"
    return (header + "Binary:\n").encode() + struct.pack(f"={len(values)}d", *values)


class CommandTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return name

    def run_orrery(self, *arguments, environment=None, **options):
        return subprocess.run([ORRERY, *arguments], cwd=self.folder, capture_output=True, timeout=120,
                              env={**os.environ, **(environment or {})}, **options)

    def good(self, *arguments, **options):
        """Standard output of a run that must go well without a word on standard error."""
        result = self.run_orrery(*arguments, **options)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""), arguments)
        return result.stdout.decode()

    def fails(self, code, *arguments, **options):
        """The one line on standard error of a run that must fail."""
        result = self.run_orrery(*arguments, **options)
        line = result.stderr.decode()
        self.assertEqual((result.returncode, result.stdout), (code, b""), (arguments, line))
        self.assertEqual(line.count("\n"), 1, line)
        self.assertTrue(line.startswith("orrery: ") and line.endswith("\n"), line)
        return line[len("orrery: "):-1]

    def commands(self):
        """The names of those that the help lists."""
        listed = self.good("--help").partition("\nCommands:\n")[2].partition("\n\n")[0]
        names = re.findall(r"^  (\S+) ", listed, re.MULTILINE)
        self.assertGreater(len(names), 5)
        return names

    def import_sample(self):
        self.good("import", SAMPLE, "-o", "d.h5")
        return "d.h5"


class HelpTest(CommandTest):
    def test_help_is_there_for_the_program_and_each_command(self):
        text = self.good("--help")
        self.assertIn("Usage: orrery [OPTIONS] COMMAND", text)
        for command in self.commands():
            self.assertIn(f"\n  {command} ", text)
            for flag in ("--help", "-h"):
                self.assertIn(f"Usage: orrery {command} ", self.good(command, flag))
            self.assertIn(f"Usage: orrery {command} ", self.good(command, "some", "--help"))

    def test_version(self):
        self.assertRegex(self.good("--version"), r"^orrery \d+\.\d+\.\d+\n$")

    def test_help_lines_fit_a_terminal(self):
        for command in ([], *([name] for name in self.commands())):
            for line in self.good(*command, "--help").splitlines():
                self.assertLessEqual(len(line), 80, line)


class UsageTest(CommandTest):
    def test_wrong_usage_is_one_line_and_2(self):
        names = self.commands()
        cases = [
            ([], f"expected a command: {', '.join(names[:-1])} or {names[-1]}; try 'orrery --help'"),
            (["--color=maybe", "ls"], "--color: expected auto, always or never, found 'maybe'; try 'orrery --help'"),
            (["frobnicate"], "there is no command 'frobnicate'; try 'orrery --help'"),
            (["--frobnicate"], "there is no option '--frobnicate'; try 'orrery --help'"),
            (["ls"], "FILE is required; try 'orrery ls --help'"),
            (["show", "f"], "PATH is required; try 'orrery show --help'"),
            (["import", "f"], "--output is required; try 'orrery import --help'"),
            (["import", "-o", "f"], "FILE is required; try 'orrery import --help'"),
            (["import", "f", "-o", ""], "--output: expected the name of a file; try 'orrery import --help'"),
            (["show", "f", "p", "--at", "-1"],
             "--at: expected an offset from 0, found '-1'; try 'orrery show --help'"),
            (["show", "f", "p", "--at=1.5"],
             "--at: expected an offset from 0, found '1.5'; try 'orrery show --help'"),
            (["show", "f", "p", "--range", "5:2"],
             "--range: expected A:B with A at or before B, found '5:2'; try 'orrery show --help'"),
            (["show", "f", "p", "--range", "5"],
             "--range: expected A:B, offsets from 0 with A up to but not including B, found '5'; "
             "try 'orrery show --help'"),
            (["convert", "1", "m"], "TO is required; try 'orrery convert --help'"),
            (["convert", "1;5", "m", "cm"],
             "VALUE must be a number such as 20, -1.5e3 or 1+2i, not '1;5'; try 'orrery convert --help'"),
            (["show", "f", "p", "--function", "frob"],
             "--function: there is no function 'frob'; there are decibel, derivative, magnitude, moving-average, "
             "phase, polynomial-1, polynomial-2, polynomial-3; try 'orrery show --help'"),
            (["show", "f", "p", "--function", "polynomial-1:1"],
             "--function: 'polynomial-1' takes 2 parameters (C-0, C-1), found 1; try 'orrery show --help'"),
            (["show", "f", "p", "--function", "moving-average:1,2"],
             "--function: 'moving-average' takes 1 parameter (window), found 2; try 'orrery show --help'"),
            (["show", "f", "p", "--function", "magnitude:1"],
             "--function: 'magnitude' takes no parameters, found 1; try 'orrery show --help'"),
            (["show", "f", "p", "--function=moving-average:x"],
             "--function: expected a number, found 'x'; try 'orrery show --help'"),
            (["watch"], "FILE is required; try 'orrery watch --help'"),
            (["watch", "f", "--plot", "0"],
             "--plot: expected a number from 1, found '0'; try 'orrery watch --help'"),
            (["watch", "f", "--step", "-1"],
             "--step: expected a number from 1, found '-1'; try 'orrery watch --help'"),
            (["watch", "f", "--step", "0"],
             "--step: expected a number from 1, found '0'; try 'orrery watch --help'"),
            (["watch", "f", "--step=2x"],
             "--step: expected a number from 1, found '2x'; try 'orrery watch --help'"),
            (["watch", "f", "--plot", "18446744073709551616"],
             "--plot: expected a number from 1, found '18446744073709551616'; try 'orrery watch --help'"),
        ]
        for arguments, line in cases:
            self.assertEqual(self.fails(2, *arguments), line)

    def test_wrong_usage_of_options(self):
        for arguments in (["ls", "f", "--bad"], ["ls", "f", "p", "q"], ["import", "f", "g", "-o", "h"],
                          ["show", "f", "p", "--at", "1", "--range", "1:2"], ["show", "f", "p", "--at"],
                          ["watch", "f", "g"], ["watch", "f", "--queued=maybe"], ["watch", "f", "--step"],
                          ["convert", "1", "m", "cm", "mm"], ["convert", "1", "m", "cm", "--digits", "18"],
                          ["convert", "1", "m", "cm", "--digits", "0"], ["convert", "--frob", "1", "m", "cm"],
                          ["units", "power"], ["units", "--type", "power", "--like", "W"],
                          ["import", "f", "-o"], ["import", "f", "-o", "a", "-o", "b"]):
            self.assertIn("; try 'orrery ", self.fails(2, *arguments))


class ImportTest(CommandTest):
    def test_sample_has_five_plots(self):
        self.assertEqual(self.good("import", SAMPLE, "-o", "d.h5"), "")
        self.assertEqual(os.listdir(self.folder), ["d.h5"])
        listing = self.good("ls", "d.h5")
        folders = [line.split()[0] for line in listing.splitlines() if not line.startswith("    ")]
        self.assertEqual(folders, ["diode/", "Setup/", "dc1/", "dc2/", "dc3/", "dc4/", "dc5/"])
        temperatures = [self.good("show", "d.h5", f"diode/dc{i}/temperature").strip() for i in range(1, 6)]
        self.assertEqual(temperatures, ["-40", "0", "27", "85", "125"])

    def test_an_existing_data_file_is_replaced(self):
        self.import_sample()
        self.good("import", os.path.join(DATA, "rc-ac-text.raw"), "-o", "d.h5")
        self.assertIn("  ac1/", self.good("ls", "d.h5"))
        self.assertNotIn("  dc1/", self.good("ls", "d.h5"))

    def test_any_other_existing_file_is_replaced_by_force_only(self):
        self.write("thesis.doc", b"years of work")
        self.assertEqual(self.fails(1, "import", SAMPLE, "-o", "thesis.doc"),
                         "thesis.doc: exists and is not an HDF5 file; --force replaces it")
        with open(self.path("thesis.doc"), "rb") as file:
            self.assertEqual(file.read(), b"years of work")
        self.good("import", SAMPLE, "-o", "thesis.doc", "--force")
        self.assertIn("  dc1/", self.good("ls", "thesis.doc"))

    def test_an_empty_file_is_replaced(self):
        self.write("new.h5", b"")
        self.good("import", SAMPLE, "-o", "new.h5")

    def test_the_input_is_never_replaced(self):
        shutil.copy(SAMPLE, self.path("a.raw"))
        os.symlink("a.raw", self.path("link"))
        for output in ("a.raw", "./a.raw", "link"):
            for force in ([], ["--force"]):
                self.assertEqual(self.fails(1, "import", "a.raw", "-o", output, *force),
                                 f"{output}: is the file to read; write to another one")
        with open(self.path("a.raw"), "rb") as copy, open(SAMPLE, "rb") as sample:
            self.assertEqual(copy.read(), sample.read())

    def test_what_is_no_regular_file_is_never_replaced(self):
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("fifo"))
        self.assertEqual(self.fails(1, "import", SAMPLE, "-o", "folder", "--force"),
                         "folder: is a folder, expected a file to write")
        self.assertEqual(self.fails(1, "import", SAMPLE, "-o", "fifo", "--force"), "fifo: is not a regular file")
        self.assertEqual(self.fails(1, "import", SAMPLE, "-o", "/dev/null", "--force"),
                         "/dev/null: is not a regular file")

    def test_a_missing_folder_is_told_before_the_work(self):
        line = self.fails(1, "import", "no-input-either.raw", "-o", "none/d.h5")
        self.assertEqual(line, "none/d.h5: the folder 'none': No such file or directory")
        self.write("file", b"x")
        self.assertEqual(self.fails(1, "import", SAMPLE, "-o", "file/d.h5"), "file/d.h5: 'file' is not a folder")

    def test_input_that_is_no_file(self):
        os.mkfifo(self.path("fifo"))
        self.assertEqual(self.fails(1, "import", "fifo", "-o", "d.h5"), "fifo: is not a regular file")
        self.assertEqual(self.fails(1, "import", ".", "-o", "d.h5"), ".: is a folder, expected a file")
        self.assertEqual(self.fails(1, "import", "none", "-o", "d.h5"), "none: No such file or directory")
        self.assertEqual(self.fails(1, "import", "a\nb", "-o", "d.h5"), "a\\nb: No such file or directory")
        self.assertFalse(os.path.exists(self.path("d.h5")))

    def test_input_that_may_not_be_read(self):
        self.write("secret.raw", b"x")
        os.chmod(self.path("secret.raw"), 0)
        self.assertEqual(self.fails(1, "import", "secret.raw", "-o", "d.h5", preexec_fn=self.drop_privileges),
                         "secret.raw: Permission denied")

    @staticmethod
    def drop_privileges():
        """For root too, a file may then be unreadable."""
        if os.geteuid() == 0:
            libc = ctypes.CDLL(None)
            drop_capability, override, search = 24, 1, 2
            for capability in (override, search):
                if libc.prctl(drop_capability, capability, 0, 0, 0) != 0:
                    raise OSError("the capability can't be dropped")

    def test_input_whose_bytes_can_not_be_read(self):
        self.assertEqual(self.fails(1, "import", "/proc/self/mem", "-o", "d.h5"),
                         "/proc/self/mem: Input/output error")

    def test_a_bad_file_leaves_nothing_and_changes_nothing(self):
        with open(SAMPLE, "rb") as sample:
            content = sample.read()
        bad = {"empty": b"", "cut": content[:-1], "text": b"hello\n", "random": bytes(range(256)) * 10,
               "half": content + content[:100]}
        self.import_sample()
        with open(self.path("d.h5"), "rb") as file:
            before = file.read()
        for name, bytes_ in bad.items():
            self.write(name, bytes_)
            for output in ("new.h5", "d.h5"):
                line = self.fails(1, "import", name, "-o", output)
                self.assertRegex(line, f"^{name}: (line|byte) [0-9]+: expected .*, found ")
        self.assertEqual(sorted(os.listdir(self.folder)), sorted([*bad, "d.h5"]))
        with open(self.path("d.h5"), "rb") as file:
            self.assertEqual(file.read(), before)

    def test_counts_that_the_file_does_not_justify_take_no_memory(self):
        content = raw(2, [1, 2, 3, 4]).replace(b"No. Points: 2", b"No. Points: 30000000000")
        self.write("huge.raw", content)
        limit = 1 << 30  # far less than the points would need
        if "LSAN_OPTIONS" in os.environ or "ASAN_OPTIONS" in os.environ:
            limit = resource.RLIM_INFINITY  # the address sanitizer reserves terabytes
        line = self.fails(1, "import", "huge.raw", "-o", "d.h5",
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
        self.assertRegex(line, "expected 480000000000 bytes of values .points: 30000000000, variables: 2., found 32")

    def test_a_full_disk_leaves_nothing(self):
        self.write("many.raw", raw(50_000, [0.5] * 100_000))
        line = self.fails(1, "import", "many.raw", "-o", "d.h5", preexec_fn=self.limit_file_size)
        self.assertTrue(line.startswith("d.h5: "), line)
        self.assertEqual(os.listdir(self.folder), ["many.raw"])

    @staticmethod
    def limit_file_size():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))

    def test_names_and_paths_in_any_script(self):
        self.write("größe µ.raw", raw(1, [1, 2], names=("v(ü/ö)", "y")))
        for environment in LOCALES:
            self.good("import", "größe µ.raw", "-o", "ergebnis ü.h5", environment=environment)
            self.assertIn("ergebnis ü.h5", os.listdir(self.folder))
            self.assertIn("v(ü%2Fö)", self.good("ls", "ergebnis ü.h5", environment=environment))
            self.assertEqual(self.good("show", "ergebnis ü.h5", "größe µ/dc1/v(ü%2Fö)", environment=environment), "1\n")
            os.remove(self.path("ergebnis ü.h5"))

    def test_progress_is_shown_to_a_person_and_to_nobody_else(self):
        self.write("long.raw", raw(1_000_000, [0.0] * 2_000_000))
        self.assertEqual(self.good("import", "long.raw", "-o", "d.h5"), "")
        master, slave = pty.openpty()
        process = subprocess.Popen([ORRERY, "import", "long.raw", "-o", "d.h5"], cwd=self.folder, stderr=slave)
        os.close(slave)
        shown = b""
        while True:
            try:
                piece = os.read(master, 4096)
            except OSError:  # the other end is closed
                break
            if not piece:
                break
            shown += piece
        os.close(master)
        self.assertEqual(process.wait(), 0)
        percents = [int(number) for number in re.findall(rb"orrery: long.raw: (\d+) %", shown)]
        self.assertEqual(percents, sorted(set(percents)))
        self.assertGreater(len(percents), 10)
        self.assertEqual(percents[-1], 100)
        self.assertIn(b"orrery: long.raw: saving", shown)
        self.assertNotIn(b"\n", shown)
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown[-40:])


class LsTest(CommandTest):
    def test_folders_and_variables(self):
        self.import_sample()
        self.assertEqual(self.good("ls", "d.h5", "diode/dc3"),
                         "i(vd)        ExplVar  201  double  [A]   over v(v-sweep)\n"
                         "temperature  ExplVar  1    double  [°C]                   27\n"
                         "v(anode)     ExplVar  201  double  [V]   over v(v-sweep)\n"
                         "v(v-sweep)   ExplVar  201  double  [V]\n")
        self.assertEqual(self.good("ls", "d.h5", "/diode/dc3/i(vd)"), "i(vd)  ExplVar  201  double  [A]  over v(v-sweep)\n")
        self.assertTrue(self.good("ls", "d.h5").startswith("diode/           Result\n  Setup/         PropertyObject\n  dc1/           ResultData\n    i(vd)  "))

    def test_everything_in_long_form(self):
        self.good("import", os.path.join(DATA, "shapes-unpadded-text.raw"), "-o", "d.h5")
        text = self.good("ls", "-la", "d.h5", "shapes-unpadded-text")
        self.assertEqual(text.splitlines()[0].split(),
                         ["NAME", "TYPE", "SHAPE", "ELEMENTS", "UNITS", "AXES", "COUNT", "ORDERING", "FLAGS", "VALUE"])
        self.assertRegex(text, r"\n    Plotname +SimpleProperty +1 +text +1 +--s +'DC transfer characteristic'\n")
        self.assertRegex(text, r"\n  v\(a\) +ExplVar +5 +double +\[V\] +over v\(v-sweep\) +5 +--s\n")
        self.assertRegex(text, r"\n  matrix +ExplVar +2 x 3 +double +6 +row-major +--s\n")
        self.assertRegex(text, r"\n    VariableStrategy +SimpleProperty +1 +text +1 +--s +'ExplicitDataStrategy'\n")
        self.assertRegex(text, r"\n  scalar +ExplVar +1 +double +1 +--s +7\n")

    def test_what_is_not_there(self):
        self.import_sample()
        self.assertEqual(self.fails(1, "ls", "d.h5", "diode/dc9"), "d.h5: diode/dc9: there is nothing of that name")
        self.assertEqual(self.fails(1, "ls", "d.h5", "../x"), "d.h5: ../x: there is nothing of that name")
        self.assertEqual(self.fails(1, "ls", "none.h5"), "none.h5: No such file or directory")

    def test_what_is_no_data_file(self):
        os.mkfifo(self.path("fifo"))
        self.write("text", b"hello\n")
        self.write("empty", b"")
        for name in ("fifo", "text", "empty", "."):
            for command in (["ls", name], ["show", name, "x"]):
                self.assertTrue(self.fails(1, *command).startswith(f"{name}: "))

    def test_a_damaged_data_file(self):
        self.import_sample()
        with open(self.path("d.h5"), "rb") as file:
            content = file.read()
        for size in (1, 100, len(content) // 2, len(content) - 1):
            self.write("cut.h5", content[:size])
            self.assertTrue(self.fails(1, "ls", "cut.h5").startswith("cut.h5: "))


class ConvertTest(CommandTest):
    def refusal(self, *arguments, **options):
        """The three lines of a unit that isn't one, without the program's name."""
        result = self.run_orrery(*arguments, **options)
        self.assertEqual((result.returncode, result.stdout), (1, b""), arguments)
        lines = result.stderr.decode().splitlines()
        self.assertTrue(lines[0].startswith("orrery: "), lines)
        return [lines[0][len("orrery: "):], *lines[1:]]

    def test_values(self):
        for environment in LOCALES:
            for arguments, text in ((["20", "dBm", "mW"], "100 mW"), (["100", "°C", "°F"], "212 °F"),
                                    (["5", "in", "mil"], "5000 mil"), (["1", "kWh", "J"], "3600000 J"),
                                    (["1+2i", "V", "mV"], "1000+2000i mV"), (["0-1j", "kOhm", "Ω"], "0-1000i Ω"),
                                    (["0.5", "", "%"], "50 %"), (["50", "%", ""], "0.5"),
                                    (["1", "µm", "nm"], "1000 nm"), (["1", "um", "nm"], "1000 nm"),
                                    (["1", "kg*m^2/(A*s^3)", "V"], "1 V"), (["3", "m", "m"], "3 m")):
                self.assertEqual(self.good("convert", *arguments, environment=environment), text + "\n")

    def test_negative_values_are_no_options(self):
        for value, text in (("-40", "-40000"), ("-.5", "-500"), ("-1e3", "-1e+06"), ("-i", "0-1000i"),
                            ("-1-2i", "-1000-2000i"), ("-inf", "-inf")):
            self.assertEqual(self.good("convert", value, "V", "mV"), text + " mV\n")
            self.assertEqual(self.good("-v", "convert", "--digits=4", "--", value, "V", "mV"), text + " mV\n")
        self.assertEqual(self.good("convert", "-40", "degC", "degF"), "-40 °F\n")

    def test_digits(self):
        self.assertEqual(self.good("convert", "1", "m", "in"), "39.3700787402 in\n")
        self.assertEqual(self.good("convert", "1", "m", "in", "--digits", "3"), "39.4 in\n")
        self.assertEqual(self.good("convert", "1", "m", "in", "--digits", "17"), "39.37007874015748 in\n")

    def test_a_text_that_is_no_unit_is_shown_with_a_caret(self):
        for environment in LOCALES:
            self.assertEqual(self.refusal("convert", "5", "m/s/s", "V", environment=environment),
                             ["there is no unit 'm/s/s': a second '/' at 3; write m/s^2 or m/(s*s)",
                              "  m/s/s", "     ^"])
        for text, column in (("m/µx", 4), ("kg*", 5), ("x\n", 2)):
            lines = self.refusal("convert", "5", "V", text)
            self.assertEqual(len(lines), 3, lines)
            self.assertEqual(lines[2], " " * column + "^", lines)
        self.assertEqual(len(self.refusal("units", "--like", "frob")), 3)

    def test_units_of_two_kinds(self):
        self.assertEqual(self.fails(1, "convert", "5", "m", "V"),
                         "can't convert m, length (m), to V, electric potential (m^2*kg/(s^3*A))")

    def test_texts_that_are_no_utf8_or_very_long(self):
        result = self.run_orrery("convert", "1", b"\xff\xfe", "m")
        self.assertEqual(result.returncode, 1)
        line = self.fails(1, "convert", "1", "(" * 100_000, "m")
        self.assertLess(len(line), 1000)


class UnitsTest(CommandTest):
    def test_all_types_stand_under_headings(self):
        for environment in LOCALES:
            text = self.good("units", environment=environment)
            headings = [line for line in text.splitlines() if line and not line.startswith(" ")]
            self.assertIn("power (W)", headings)
            self.assertIn("length (m)", headings)
            self.assertEqual(headings, sorted(headings))
            self.assertIn("  in   1 in = 0.0254 m\n", text)

    def test_one_type(self):
        self.assertEqual(self.good("units", "--type", "magnetic flux"),
                         "magnetic flux (Wb)\n  Mx  1 Mx = 1e-08 Wb\n  Wb  1 Wb = 1 Wb\n")
        self.assertRegex(self.good("units", "--type", "thermodynamic temperature"),
                         r"\n  °C  x °C = x \+ 273.15 K +also Celsius, degC\n")
        line = self.fails(1, "units", "--type", "size")
        self.assertTrue(line.startswith("there is no type of units 'size'; there are acceleration, area, "), line)

    def test_those_like_one(self):
        text = self.good("units", "--like", "kg*m^2/s^3")
        self.assertTrue(text.startswith("power (W)\n  kg*m^2/s^3 "), text)
        self.assertIn("\n  dBm ", text)


class ShowTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("t.raw", raw(4, [0, 0.1, 1, -1e-300, 2, 1e22, 3, 5e-324]))
        self.good("import", "t.raw", "-o", "t.h5")

    def test_values_and_offsets(self):
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x"), "0\n1\n2\n3\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--at", "2"), "2\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--range", "1:3"), "1\n2\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--range", "2:"), "2\n3\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--range=:1"), "0\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--range", ":"), "0\n1\n2\n3\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--range", "0:0"), "")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--range", "4:"), "")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--csv", "--range", "1:3"), "offset,x [V]\n1,1\n2,2\n")

    def test_an_axis_stands_beside_the_values(self):
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y"),
                         "x [V]  y [V]\n0      0.1\n1      -1e-300\n2      1e+22\n3      5e-324\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y", "--at", "2"),
                         "offset  x [V]  y [V]\n2       2      1e+22\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y", "--range", "2:"),
                         "offset  x [V]  y [V]\n2       2      1e+22\n3       3      5e-324\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y", "--range", "4:"), "offset  x [V]  y [V]\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y", "--csv", "--range", "1:3"),
                         "offset,x [V],y [V]\n1,1,-1e-300\n2,2,1e+22\n")

    def test_units(self):
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--units", "mV"), "0\n1000\n2000\n3000\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y", "--units", "kV", "--at", "2"),
                         "offset  x [V]  y [kV]\n2       2      1e+19\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y", "--units", "dBV", "--range", "0:1", "--csv"),
                         "offset,x [V],y [dBV]\n0,0,-20\n")
        self.assertEqual(self.fails(1, "show", "t.h5", "t/dc1/y", "--units", "A"),
                         "t.h5: t/dc1/y: can't convert V, electric potential (m^2*kg/(s^3*A)), to A, electric current (A)")
        self.assertEqual(self.fails(1, "show", "t.h5", "t/Setup/dc1/Title", "--units", "A"),
                         "t.h5: t/Setup/dc1/Title: has no units, and can't be converted to A")
        result = self.run_orrery("show", "t.h5", "t/dc1/y", "--units", "m/s/s")
        self.assertEqual((result.returncode, result.stdout, result.stderr.decode()),
                         (1, b"", "orrery: there is no unit 'm/s/s': a second '/' at 3; write m/s^2 or m/(s*s)\n"
                                  "  m/s/s\n     ^\n"))

    def test_units_that_a_file_brings_back_without_their_dimensions(self):
        self.import_sample()
        self.assertEqual(self.good("show", "d.h5", "diode/dc3/temperature", "--units", "K"), "300.15\n")
        self.assertTrue(self.good("show", "d.h5", "diode/dc3/temperature", "--units", "degF", "--csv").startswith(
            "offset,temperature [°F]\n0,80."))

    def test_single_values(self):
        self.assertEqual(self.good("show", "t.h5", "t/Setup/dc1/Title"), "test\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y/Type"), "voltage\n")
        self.assertEqual(self.good("show", "t.h5", "t/Setup/dc1/Title", "--at", "0"), "test\n")

    def test_complex_values_and_matrices(self):
        self.good("import", os.path.join(DATA, "rc-ac-binary.raw"), "-o", "ac.h5")
        self.assertEqual(self.good("show", "ac.h5", "rc-ac-binary/ac1/v(in)", "--at", "0"),
                         "offset  frequency [Hz]  v(in) [V]\n0       1000            1+0i\n")
        self.assertEqual(self.good("show", "ac.h5", "rc-ac-binary/ac1/v(in)", "--at", "0", "--csv"),
                         "offset,frequency [Hz],v(in).re [V],v(in).im [V]\n0,1000,1,0\n")
        self.good("import", os.path.join(DATA, "shapes-padded-binary.raw"), "-o", "m.h5")
        self.assertEqual(self.good("show", "m.h5", "shapes-padded-binary/dc1/matrix"), "0\t1\t2\n3\t4\t5\n")
        self.assertEqual(self.good("show", "m.h5", "shapes-padded-binary/dc1/matrix", "--at", "1"), "3\t4\t5\n")
        self.assertEqual(self.good("show", "m.h5", "shapes-padded-binary/dc1/matrix", "--range", "1:2", "--csv"),
                         "offset,matrix[0],matrix[1],matrix[2]\n1,3,4,5\n")
        self.assertEqual(self.good("show", "m.h5", "shapes-padded-binary/dc1/broken", "--range", ":2"),
                         "offset  v(v-sweep) [V]  broken\n0       0               -nan\n1       0.25            -inf\n")

    def test_offsets_that_are_not_there(self):
        self.assertEqual(self.fails(1, "show", "t.h5", "t/dc1/y", "--at", "4"),
                         "t.h5: t/dc1/y: there is no offset 4; there are 4, from 0 to 3")
        self.assertEqual(self.fails(1, "show", "t.h5", "t/dc1/y", "--range", "2:6"),
                         "t.h5: t/dc1/y: there is no offset 5; there are 4, from 0 to 3")

    def test_folders_have_no_values(self):
        for path in ("t/dc1", "/"):
            self.assertEqual(self.fails(1, "show", "t.h5", path), f"t.h5: {path}: is a folder; 'orrery ls' lists it")

    def test_a_name_that_begins_with_a_hyphen(self):
        self.assertEqual(self.fails(1, "show", "t.h5", "--", "-x"), "t.h5: -x: there is nothing of that name")

    def test_damaged_values_are_an_error_and_no_numbers(self):
        with open(self.path("t.h5"), "rb") as file:
            content = bytearray(file.read())
        at = content.index(struct.pack("=4d", 0.1, -1e-300, 1e22, 5e-324))
        content[at] ^= 1
        self.write("damaged.h5", content)
        for options in ([], ["--at", "0"], ["--range", "1:3"], ["--csv"]):
            line = self.fails(1, "show", "damaged.h5", "t/dc1/y", *options)
            self.assertTrue(line.startswith("damaged.h5: "), line)
            self.assertIn("t/dc1/y", line)

    def test_no_locale_has_a_say(self):
        outputs = {tuple(self.good(*command, environment=environment) for command in
                         (["show", "t.h5", "t/dc1/y"], ["show", "t.h5", "t/dc1/y", "--units", "µV"],
                          ["show", "t.h5", "t/dc1/y", "--function", "moving-average:2"],
                          ["show", "t.h5", "t/dc1/y", "--function", "decibel"], ["show", "t.h5", "t/dc1/y", "--csv"], ["ls", "-la", "t.h5"]))
                   for environment in LOCALES}
        self.assertEqual(len(outputs), 1)

    def test_a_million_values_are_the_values(self):
        values = [0.1 * i for i in range(1_000_000)]
        self.write("many.raw", raw(len(values), values, names=("x",)))
        self.good("import", "many.raw", "-o", "many.h5")
        self.assertEqual([float(line) for line in self.good("show", "many.h5", "many/dc1/x").splitlines()], values)

    def test_a_reader_that_goes_away_is_no_failure(self):
        self.write("many.raw", raw(500_000, [0.5] * 500_000, names=("x",)))
        self.good("import", "many.raw", "-o", "many.h5")
        for arguments in ("show many.h5 many/dc1/x", "show many.h5 many/dc1/x --csv", "show many.h5 many/dc1/x --units mV"):
            for ignored in ("", "trap '' PIPE; "):
                result = subprocess.run(["bash", "-c", f"{ignored}'{ORRERY}' {arguments} | head -1"],
                                        cwd=self.folder, capture_output=True, timeout=60)
                self.assertEqual((result.returncode, result.stderr), (0, b""), arguments)
                self.assertEqual(result.stdout.count(b"\n"), 1)

    def test_a_reader_that_goes_away_ends_the_program(self):
        self.write("many.raw", raw(500_000, [0.5] * 500_000, names=("x",)))
        self.good("import", "many.raw", "-o", "many.h5")
        for restore, codes in ((True, (-signal.SIGPIPE,)), (False, (0,))):
            process = subprocess.Popen([ORRERY, "show", "many.h5", "many/dc1/x"], cwd=self.folder,
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE, restore_signals=restore)
            process.stdout.close()
            error = process.stderr.read()
            process.stderr.close()
            self.assertIn(process.wait(timeout=60), codes)
            self.assertEqual(error, b"")

    def test_output_that_can_not_be_written_is_a_failure(self):
        for command in (["show", "t.h5", "t/dc1/y"], ["ls", "t.h5"], ["--help"], ["--version"]):
            with open("/dev/full", "wb") as full:
                result = subprocess.run([ORRERY, *command], cwd=self.folder, stdout=full, stderr=subprocess.PIPE,
                                        timeout=60)
            self.assertEqual((result.returncode, result.stderr.decode()),
                             (1, "orrery: standard output: No space left on device\n"), command)


class PartOfLargeArrayTest(CommandTest):
    POINTS = 8 << 20  # 64 MiB for each of two vectors

    def memory(self, *arguments):
        """KiB of memory that a run took at its peak, whose output goes nowhere."""
        with subprocess.Popen([ORRERY, *arguments], cwd=self.folder, stdout=subprocess.DEVNULL) as process:
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0, arguments)
        return usage.ru_maxrss

    def test_takes_no_memory_for_the_rest(self):
        header = raw(self.POINTS, [])
        with open(self.path("large.raw"), "wb") as file:
            file.write(header)
            file.truncate(len(header) + 2 * 8 * self.POINTS)
        self.good("import", "large.raw", "-o", "large.h5")
        variable = ("large.h5", "large/dc1/y")
        little = self.memory("ls", "large.h5") // 1024
        for options in (["--range", "7000000:7000002"], ["--at", "7000000", "--json"],
                        ["--at", "7000000", "--csv"], ["--at", "7000000", "--units", "mV"]):
            with self.subTest(options=options):
                self.assertLess(self.memory("show", *variable, *options) // 1024, little + 32)
        self.assertGreater(self.memory("show", *variable, "--function", "derivative", "--at", "7") // 1024, little + 32)


class FunctionTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("t.raw", raw(4, [0, -1, 1, 2, 2, -3, 4, 8]))
        self.good("import", "t.raw", "-o", "t.h5")

    def test_functions_over_an_axis(self):
        for function, heading, values in (
                ("magnitude", "magnitude(y) [V]", ("1", "2", "3", "8")),
                ("phase", "phase(y) [°]", ("180", "0", "180", "0")),
                ("derivative", "derivative(y) [V/V]", ("3", "-1", "-1.5", "5.5")),
                ("moving-average:2", "moving-average(y) [V]", ("-1", "0.5", "-0.5", "2.5")),
                ("polynomial-1:5,6", "polynomial-1(y) [V]", ("-1", "2", "-3", "8"))):
            lines = self.good("show", "t.h5", "t/dc1/y", "--function", function).splitlines()
            self.assertEqual(lines[0], "x [V]  " + heading)
            self.assertEqual([tuple(line.split()) for line in lines[1:]], list(zip(("0", "1", "2", "4"), values)))

    def test_with_the_other_options(self):
        self.assertEqual(self.good("show", "t.h5", "t/dc1/y", "--function", "magnitude", "--units", "mV", "--range",
                                   "2:", "--csv"),
                         "offset,x [V],magnitude(y) [mV]\n2,2,3000\n3,4,8000\n")
        self.assertEqual(self.good("show", "t.h5", "t/dc1/x", "--function", "magnitude", "--at", "3"), "4\n")
        self.assertEqual(self.fails(1, "show", "t.h5", "t/dc1/y", "--function", "magnitude", "--at", "4"),
                         "t.h5: t/dc1/y: there is no offset 4; there are 4, from 0 to 3")
        self.assertEqual(self.fails(1, "show", "t.h5", "t/dc1/y", "--function", "phase", "--units", "V"),
                         "t.h5: t/dc1/y: can't convert °, plane angle (rad), to V, electric potential (m^2*kg/(s^3*A))")

    def test_the_file_stays_as_it_is(self):
        with open(self.path("t.h5"), "rb") as file:
            before = file.read()
        self.good("show", "t.h5", "t/dc1/y", "--function", "magnitude")
        with open(self.path("t.h5"), "rb") as file:
            self.assertEqual(file.read(), before)

    def test_a_second_read_computes_nothing(self):
        result = self.run_orrery("-v", "show", "t.h5", "t/dc1/y", "--function", "magnitude")
        self.assertEqual(result.returncode, 0)
        self.assertIn("orrery: info: magnitude(y): update count 1 after the first read, 1 after another one\n",
                      result.stderr.decode())

    def test_a_function_that_fails_is_a_failure(self):
        for arguments, why in ((["t/dc1/x", "--function", "derivative"],
                                "t.h5: t/dc1/x: function 'derivative': the variable has no axis"),
                               (["t/dc1/y", "--function", "moving-average:0"],
                                "t.h5: t/dc1/y: function 'moving-average': the window must be a whole number from 1")):
            self.assertEqual(self.fails(1, "show", "t.h5", *arguments), why)
            self.assertEqual(self.fails(1, "show", "t.h5", *arguments, "--csv"), why)

    def test_damaged_values_are_a_failure(self):
        with open(self.path("t.h5"), "rb") as file:
            content = bytearray(file.read())
        content[content.index(struct.pack("=4d", -1, 2, -3, 8))] ^= 1
        self.write("damaged.h5", content)
        line = self.fails(1, "show", "damaged.h5", "t/dc1/y", "--function", "magnitude")
        self.assertRegex(line, "^damaged.h5: .*t/dc1/y.* damaged")
        line = self.fails(1, "show", "damaged.h5", "t/dc1/y", "--units", "mV")
        self.assertTrue(line.startswith("damaged.h5: "), line)

    def test_only_variables_have_functions(self):
        self.assertEqual(self.fails(1, "show", "t.h5", "t/Setup/dc1/Title", "--function", "magnitude"),
                         "t.h5: t/Setup/dc1/Title: is a single value; --function takes a variable")
        self.assertEqual(self.fails(1, "show", "t.h5", "t/dc1", "--function", "magnitude"),
                         "t.h5: t/dc1: is a folder; 'orrery ls' lists it")


class DisplayUnitsTest(CommandTest):
    """What an import is told to show in other units is shown in them, and kept as it was measured."""

    def imported(self, *options):
        self.good("import", SAMPLE, "-o", "out.h5", "-f", *options)

    def shown(self, *options):
        return self.good("show", "out.h5", "diode/dc1/i(vd)", "--at", "152", *options).split()

    def test_the_first_unit_that_fits_is_shown_for_values_and_axes(self):
        self.imported("--display-units", "mV,mA,V,A")
        self.assertEqual(self.shown(), ["offset", "v(v-sweep)", "[mV]", "i(vd)", "[mA]",
                                        "152", "760.0000000000006", "-3.240574074311775"])

    def test_without_them_values_are_shown_as_they_were_measured(self):
        self.imported("--display-units", "Hz")
        self.assertEqual(self.shown()[4:5] + self.shown()[-1:], ["[A]", "-0.003240574074311775"])

    def test_an_option_of_show_wins_over_them(self):
        self.imported("--display-units", "mA")
        self.assertAlmostEqual(float(self.shown("--units", "µA")[-1]), -3240.574074311775, delta=1e-9)

    def test_a_text_that_is_no_unit_is_refused_before_a_file_is_written(self):
        result = self.run_orrery("import", SAMPLE, "-o", "new.h5", "--display-units", "mA,furlong")
        self.assertEqual(result.returncode, 1)
        self.assertIn("there is no unit 'furlong'", result.stderr.decode())
        self.assertFalse(os.path.exists(self.path("new.h5")))


class OddFileTest(CommandTest):
    """Files that are well-formed and hold what no import makes."""

    def setUp(self):
        super().setUp()
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True, timeout=60)

    def shows(self, path, *arguments):
        """Standard output and the warnings, of a run that must go well."""
        result = self.run_orrery("show", "odd.h5", path, *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        for line in result.stderr.decode().splitlines():
            self.assertTrue(line.startswith("orrery: warning: "), line)
        return result.stdout.decode(), result.stderr.decode().replace("orrery: warning: ", "")

    def test_a_listing_shows_all_of_them(self):
        lines = {line.split()[0]: line for line in self.good("ls", "odd.h5").splitlines()}
        self.assertTrue(lines["lost"].endswith(" over ?"), lines["lost"])
        self.assertTrue(lines["many"].endswith(" over " + "own, " * 8 + "..."), lines["many"])
        self.assertIn("  [\\x1b[31m\\n]", lines["unit-is-strange"])
        self.assertIn("  100000000000  ", lines["huge"])
        self.assertNotIn("[", lines["unit-is-a-value"] + lines["unit-is-hollow"])
        self.assertEqual(len(self.good("ls", "-la", "odd.h5").splitlines()[0].split()), 10)

    def test_an_axis_that_leads_nowhere(self):
        for arguments, text in (([], "1\n2\n"), (["--csv"], "offset,lost\n0,1\n1,2\n")):
            self.assertEqual(self.shows("lost", *arguments), (text, "axis 1 leads nowhere and is left out\n"))
        self.assertEqual(self.fails(1, "show", "odd.h5", "lost", "--function", "derivative"),
                         "odd.h5: lost: function 'derivative': the axis leads nowhere")

    def test_an_axis_of_another_length(self):
        self.assertEqual(self.shows("long"),
                         ("1\n2\n", "the axis 'short' has 1 values where the variable has 2, and is left out\n"))
        self.assertEqual(self.shows("over-huge"),
                         ("1\n2\n", "the axis 'huge' has 100000000000 values where the variable has 2, "
                                    "and is left out\n"))
        self.assertEqual(self.fails(1, "show", "odd.h5", "long", "--function", "derivative"),
                         "odd.h5: long: function 'derivative': the axis is not as long as the values")

    def test_a_variable_that_is_its_own_axis(self):
        self.assertEqual(self.shows("own"), ("own [°C]  own [°C]\n3         3\n4         4\n", ""))
        self.assertEqual(self.shows("own", "--function", "derivative", "--at", "0"),
                         ("offset  own [°C]  derivative(own) [°C/°C]\n0       3         1\n", ""))

    def test_a_thousand_axes(self):
        text, warning = self.shows("many", "--csv", "--at", "1")
        self.assertEqual(text, "offset," + "own [°C]," * 8 + "many\n1," + "4," * 8 + "8\n")
        self.assertEqual(warning, "of 1000 axes the first 8 are shown\n")

    def test_units_and_axes_that_are_no_folders(self):
        for path in ("folderless", "unit-is-a-value", "unit-is-hollow"):
            self.assertEqual(self.shows(path), ("1\n2\n", ""))
            self.assertEqual(self.fails(1, "show", "odd.h5", path, "--units", "V"),
                             f"odd.h5: {path}: has no units, and can't be converted to V")

    def test_units_whose_label_would_steer_a_terminal(self):
        self.assertEqual(self.shows("unit-is-strange", "--csv", "--at", "0")[0],
                         "offset,unit-is-strange [\\x1b[31m\\n]\n0,1\n")

    def test_saved_functions(self):
        self.assertEqual(self.shows("moving-average(y)"), ("1\n1.5\n4\n", ""))
        self.assertEqual(self.shows("moving-average(y)", "--function", "moving-average:2"), ("1\n1.25\n2.75\n", ""))
        self.assertEqual(self.shows("unknown"),
                         ("7\n8\n", "the function 'of-another-host' is not known here; these are the values that "
                                    "were stored\n"))

    def test_saved_functions_that_fail_show_no_old_result(self):
        for path, why in (("broken", "function 'moving-average': the window must be a whole number from 1"),
                          ("orphan", "function 'magnitude': invalid argument in list; operation is undefined!"),
                          ("circle", "function 'magnitude': there are no values"),
                          ("of-huge", "there are 100000000000 values, and a function takes at most 134217728 that "
                                      "are computed")):
            for arguments in ([], ["--csv"], ["--at", "0"], ["--function", "phase"]):
                self.assertEqual(self.fails(1, "show", "odd.h5", path, *arguments), f"odd.h5: {path}: {why}")

    def test_ranges_that_no_memory_could_hold(self):
        self.assertEqual(self.shows("huge", "--at", "99999999999", "--csv")[0],
                         "offset,huge [km],huge [km]\n99999999999,99999999999.5,99999999999.5\n")
        self.assertEqual(self.shows("huge", "--range", "5:6", "--units", "m")[0],
                         "offset  huge [km]  huge [m]\n5       5.5        5500\n")
        self.assertEqual(self.shows("joined", "--range", "99999999999:")[0], "99999999999.5\n1\n2\n6\n")
        self.assertEqual(self.fails(1, "show", "odd.h5", "huge", "--at", "100000000000"),
                         "odd.h5: huge: there is no offset 100000000000; there are 100000000000, from 0 to 99999999999")
        self.assertEqual(self.fails(1, "show", "odd.h5", "huge", "--function", "magnitude"),
                         "odd.h5: huge: there are 100000000000 values, and a function takes at most 134217728 that "
                         "are computed")

    def test_ranges_are_printed_as_they_are_computed(self):
        limit = resource.RLIM_INFINITY if "ASAN_OPTIONS" in os.environ else 1 << 30
        for arguments, line in (("huge", b"huge [km]  huge [km]\n"), ("largest", b"0.5\n"),
                                ("huge --csv", b"offset,huge [km],huge [km]\n"), ("joined --csv", b"offset,joined\n")):
            result = subprocess.run(
                ["bash", "-c", f"'{ORRERY}' show odd.h5 {arguments} | head -1"], cwd=self.folder, capture_output=True,
                timeout=60, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, line, b""), arguments)

    def test_ranges_that_can_not_be_computed(self):
        for arguments in ([], ["--csv"], ["--at", "0"], ["--units", "m"]):
            self.assertTrue(self.fails(1, "show", "odd.h5", "startless", *arguments).startswith("odd.h5: startless: "))
        self.assertEqual(self.shows("itself"), ("", ""))


class WatchTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("t.raw", raw(5, [0, 0.5, 1, 1.5, 2, 1e22, 3, -3.5, 4, 0.1]) +
                   raw(2, [7, 8], names=("only",)))

    def watch(self, *arguments, **options):
        """The lines as lists of columns."""
        return [line.split("\t") for line in self.good("watch", *arguments, **options).splitlines()]

    def test_each_step_is_heard_when_it_is_taken(self):
        self.assertEqual(self.watch("t.raw", "--step", "2"),
                         [["update", "y", "2", "1.5"], ["update", "y", "4", "-3.5"], ["update", "y", "5", "0.1"],
                          ["renamed", "/plot1/y"], ["removed", "/plot1/y"]])

    def test_queued_signals_are_as_many_and_show_the_variable_a_step_later(self):
        self.assertEqual(self.watch("t.raw", "--step", "2", "--queued"),
                         [["update", "y", "4", "-3.5"], ["update", "y", "5", "0.1"], ["update", "y", "5", "0.1"],
                          ["renamed", "/plot1/y"], ["removed", "/plot1/y"]])

    def test_a_step_is_a_tenth_of_the_points_rounded_up(self):
        for points, counts in ((5, [1, 2, 3, 4, 5]), (20, list(range(2, 21, 2))),
                               (21, [3, 6, 9, 12, 15, 18, 21])):
            self.write("p.raw", raw(points, range(points), names=("x",)))
            updates = [line for line in self.watch("p.raw") if line[0] == "update"]
            self.assertEqual(updates, [["update", "x", str(n), str(n - 1)] for n in counts])

    def test_a_step_beyond_the_end_takes_all_points(self):
        for queued in ([], ["--queued"]):
            for step in ("5", "6", "18446744073709551615"):
                self.assertEqual(self.watch("t.raw", "--step", step, *queued),
                                 [["update", "y", "5", "0.1"], ["renamed", "/plot1/y"], ["removed", "/plot1/y"]])

    def test_any_vector_of_any_plot(self):
        self.assertEqual(self.watch("t.raw", "--vector", "x", "--step", "4"),
                         [["update", "x", "4", "3"], ["update", "x", "5", "4"],
                          ["renamed", "/plot1/x"], ["removed", "/plot1/x"]])
        self.assertEqual(self.watch("t.raw", "--plot", "2"),  # its only vector
                         [["update", "only", "1", "7"], ["update", "only", "2", "8"],
                          ["renamed", "/plot2/only"], ["removed", "/plot2/only"]])

    def test_complex_values_and_rows_of_a_matrix(self):
        lines = self.watch(os.path.join(DATA, "rc-ac-binary.raw"), "--vector", "v(in)")
        self.assertEqual(lines[0][3], "1+0i")
        self.assertEqual(self.watch(os.path.join(DATA, "shapes-padded-binary.raw"), "--vector", "matrix")[:2],
                         [["update", "matrix", "1", "0", "1", "2"], ["update", "matrix", "2", "3", "4", "5"]])

    def test_a_vector_without_points_is_only_placed_and_removed(self):
        self.write("none.raw", raw(0, []))
        for queued in ([], ["--queued"]):
            self.assertEqual(self.watch("none.raw", *queued), [["renamed", "/plot1/y"], ["removed", "/plot1/y"]])

    def test_names_in_any_script_and_locale(self):
        self.write("µ.raw", raw(1, [1.5, -0.25], names=("v(ü/ö)", "Title")))
        for environment in LOCALES:
            self.assertEqual(self.watch("µ.raw", "--vector", "v(ü/ö)", environment=environment),
                             [["update", "v(ü/ö)", "1", "1.5"], ["renamed", "/plot1/v(ü%2Fö)"],
                              ["removed", "/plot1/v(ü%2Fö)"]])

    def test_what_is_not_there(self):
        self.assertEqual(self.fails(1, "watch", "t.raw", "--vector", "z\n"),
                         "t.raw: plot 1: there is no vector 'z\\n'")
        self.assertEqual(self.fails(1, "watch", "t.raw", "--plot", "2", "--vector", "y"),
                         "t.raw: plot 2: there is no vector 'y'")
        self.assertEqual(self.fails(1, "watch", "t.raw", "--vector", ""), "t.raw: plot 1: there is no vector ''")
        self.assertEqual(self.fails(1, "watch", "t.raw", "--plot", "3"),
                         "t.raw: there is no plot 3; the last one is 2")
        self.assertEqual(self.fails(1, "watch", "none.raw"), "none.raw: No such file or directory")

    def test_a_malformed_file(self):
        self.write("cut.raw", raw(2, [1, 2, 3]))
        self.assertRegex(self.fails(1, "watch", "cut.raw"), "^cut.raw: line 10: expected 32 bytes .*, found 24$")

    def test_a_reader_that_goes_away_is_no_failure(self):
        self.write("many.raw", raw(20_000, [0.5] * 20_000, names=("x",)))
        for queued in ("", "--queued"):
            for ignored in ("", "trap '' PIPE; "):
                result = subprocess.run(
                    ["bash", "-c", f"set -o pipefail; {ignored}'{ORRERY}' watch many.raw --step 1 {queued} | head -1"],
                    cwd=self.folder, capture_output=True, timeout=60)
                killed = 128 + signal.SIGPIPE
                self.assertEqual((result.returncode, result.stderr), (0 if ignored else killed, b""))
                self.assertEqual(result.stdout, b"update\tx\t%d\t0.5\n" % (2 if queued else 1))

    def test_output_that_can_not_be_written_is_a_failure(self):
        for queued in ([], ["--queued"]):
            for environment in LOCALES:
                with open("/dev/full", "wb") as full:
                    result = subprocess.run([ORRERY, "watch", "t.raw", *queued], cwd=self.folder, stdout=full,
                                            stderr=subprocess.PIPE, timeout=60, env={**os.environ, **environment})
                self.assertEqual((result.returncode, result.stderr.decode()),
                                 (1, "orrery: standard output: No space left on device\n"))


class VerboseTest(CommandTest):
    def test_the_log_is_shown_on_request_only(self):
        self.write("text", b"hello\n")
        self.fails(1, "ls", "text")
        for arguments in (["-v", "ls", "text"], ["ls", "text", "--verbose"]):
            result = self.run_orrery(*arguments)
            self.assertEqual(result.returncode, 1)
            lines = result.stderr.decode().splitlines()
            self.assertTrue(lines[0].startswith("orrery: warning: "), lines)
            self.assertTrue(lines[-1].startswith("orrery: text: "), lines)


if __name__ == "__main__":
    unittest.main()
