"""What a person sees of a save: how far it is, and that an interruption leaves nothing behind.

Run with the paths of the program and of the source folder as arguments.
"""

import os
import pty
import re
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import h5py
import numpy

ORRERY = None
POINTS = 4_000_000


def raw_file(path):
    values = numpy.arange(2.0 * POINTS)
    with open(path, "wb") as file:
        file.write(("Title: large\nPlotname: Transient Analysis\nFlags: real\nNo. Variables: 2\n"
                    f"No. Points: {POINTS}\nVariables:\n\t0\ttime\ttime\n\t1\tv(out)\tvoltage\nBinary:\n").encode())
        file.write(values.tobytes())


class SaveTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = tempfile.TemporaryDirectory()
        cls.folder = cls.holder.name
        cls.raw = os.path.join(cls.folder, "large.raw")
        raw_file(cls.raw)
        cls.good = os.path.join(cls.folder, "good.h5")
        subprocess.run([ORRERY, "import", cls.raw, "-o", cls.good], check=True)

    @classmethod
    def tearDownClass(cls):
        cls.holder.cleanup()

    def start(self, *arguments):
        """The program on a terminal of its own for its messages: the process and that terminal's other end."""
        ours, theirs = pty.openpty()
        self.addCleanup(os.close, ours)
        process = subprocess.Popen([ORRERY, *arguments], stdout=subprocess.PIPE, stderr=theirs)
        os.close(theirs)
        self.addCleanup(process.stdout.close)
        return process, ours

    @staticmethod
    def read_until(terminal, pattern):
        text = ""
        while not re.search(pattern, text):
            try:
                piece = os.read(terminal, 4096).decode()
            except OSError:  # the program has ended
                piece = ""
            if not piece:
                break
            text += piece
        return text

    def names(self):
        return sorted(name for name in os.listdir(self.folder) if "out" in name)

    def test_an_import_tells_how_far_its_save_is(self):
        out = os.path.join(self.folder, "out1.h5")
        process, terminal = self.start("import", self.raw, "-o", out)
        text = self.read_until(terminal, "never")
        self.assertEqual(process.wait(), 0)
        percents = [int(number) for number in re.findall(r"saving [^\r]*out1\.h5: (\d+) %", text)]
        self.assertGreater(len(percents), 5, text)
        self.assertEqual(percents, sorted(percents))
        self.assertEqual(percents[-1], 100)
        self.assertTrue(text.endswith("\r\x1b[K"), "nothing of it stays")
        os.remove(out)

    def interrupt(self, out, request):
        process, terminal = self.start("import", self.raw, "-o", out)
        text = self.read_until(terminal, r"saving [^\r]*: \d+ %")
        self.assertIn("saving", text)
        process.send_signal(request)
        self.read_until(terminal, "never")
        return process.wait()

    def test_an_interrupted_import_leaves_nothing_behind(self):
        out = os.path.join(self.folder, "out2.h5")
        for request in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            code = self.interrupt(out, request)
            self.assertEqual(code, -request, "the caller sees what has ended it")
            self.assertIn(self.names(), ([], ["out2.h5"]), "the file is whole or isn't there")
            if os.path.exists(out):
                os.remove(out)

    def test_an_interrupted_import_leaves_the_former_file_or_the_whole_new_one(self):
        out = os.path.join(self.folder, "out3.h5")
        for _ in range(3):
            subprocess.run([ORRERY, "copy", self.good, "-o", out, "-f"], check=True)
            with open(out, "rb") as file:
                before = file.read()
            self.assertEqual(self.interrupt(out, signal.SIGINT), -signal.SIGINT)
            self.assertEqual(self.names(), ["out3.h5"])
            with open(out, "rb") as file:
                after = file.read()
            if after != before:
                with h5py.File(out, "r") as file:
                    self.assertEqual(file["large/tran1/v(out)/Data"][-1], 2.0 * POINTS - 1)
        os.remove(out)

    def test_an_interrupted_export_leaves_nothing_behind(self):
        for name in ("out5.csv", "out5.nc"):
            for request in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                out = os.path.join(self.folder, name)
                process = subprocess.Popen([ORRERY, "export", self.good, "large/tran1/v(out)", "-o", out])
                while process.poll() is None and not self.names():
                    time.sleep(0.001)
                process.send_signal(request)
                code = process.wait()
                self.assertIn(code, (0, -request))
                self.assertIn(self.names(), ([name],) if code == 0 else ([], [name]), "whole or not there")
                if os.path.exists(out):
                    os.remove(out)

    def test_an_interrupted_repacking_leaves_nothing_behind(self):
        own = os.path.join(self.folder, "out7.h5")
        subprocess.run([ORRERY, "copy", self.good, "-o", own], check=True)
        for name, before in ((self.good, []), (own, ["out7.h5"])):
            with self.subTest(name):
                out = own if before else os.path.join(self.folder, "out8.h5")
                process, terminal = self.start("repack", name, out, "--compress", "9")
                self.assertIn("saving", self.read_until(terminal, r"saving [^\r]*: \d+ %"))
                process.send_signal(signal.SIGINT)
                self.read_until(terminal, "never")
                self.assertEqual(process.wait(), -signal.SIGINT)
                self.assertEqual(self.names(), ["out7.h5"])
        subprocess.run([ORRERY, "diff", self.good, own], check=True)
        os.remove(own)

    def test_a_limit_on_the_size_of_files_is_a_failure(self):
        for command in (["import", self.raw, "-o", "out9.h5"], ["copy", self.good, "-o", "out9.h5"],
                        ["repack", self.good, "out9.h5"], ["export", self.good, "large/tran1/v(out)", "-o", "out9.csv"],
                        ["export", self.good, "large/tran1/v(out)", "-o", "out9.nc"]):
            done = subprocess.run(["bash", "-c", 'ulimit -f 2000; exec "$@"', "bash", ORRERY, *command], cwd=self.folder,
                                  capture_output=True, text=True)
            self.assertEqual((done.returncode, len(done.stderr.splitlines())), (1, 1), done.stderr)
            self.assertIn("File too large", done.stderr)
            self.assertEqual(self.names(), [])

    def test_an_export_without_a_terminal_goes_on_when_that_closes(self):
        out = os.path.join(self.folder, "out6.csv")
        process = subprocess.Popen(["nohup", ORRERY, "export", self.good, "large/tran1/v(out)", "-o", out],
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while process.poll() is None and not self.names():
            time.sleep(0.001)
        process.send_signal(signal.SIGHUP)
        self.assertEqual(process.wait(), 0)
        self.assertEqual(self.names(), ["out6.csv"])
        os.remove(out)

    def test_a_copy_of_damaged_data_is_a_failure(self):
        with open(self.good, "rb") as file:
            content = bytearray(file.read())
        with h5py.File(self.good, "r") as file:
            content[file["large/tran1/v(out)/Data"].id.get_offset() + 5_000_000] ^= 1
        damaged = os.path.join(self.folder, "damaged.h5")
        with open(damaged, "wb") as file:
            file.write(content)
        out = os.path.join(self.folder, "out4.h5")
        done = subprocess.run([ORRERY, "copy", damaged, "-o", out], capture_output=True, text=True)
        self.assertEqual(done.returncode, 1)
        self.assertIn("damaged.h5: ", done.stderr)
        self.assertEqual(len(done.stderr.splitlines()), 1)
        self.assertEqual(self.names(), [])


if __name__ == "__main__":
    ORRERY = os.path.abspath(sys.argv.pop(1))
    sys.argv.pop(1)
    unittest.main()
