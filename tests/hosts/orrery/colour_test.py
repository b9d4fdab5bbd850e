#!/usr/bin/python3
"""Runs the program on a terminal of its own, and through pipes: who gets colours, and that they change nothing else.

usage: colour_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import os
import pty
import re
import subprocess
import unittest

import command_test
from command_test import ODD_FILES, ORRERY, SAMPLE

SEQUENCE = re.compile(r"\x1b\[[0-9;]*m")
COLOURS = {"TERM": "xterm", "NO_COLOR": ""}


class ColourTest(command_test.CommandTest):
    def setUp(self):
        super().setUp()
        self.good("import", SAMPLE, "-o", "d.h5")

    def terminal(self, *arguments, environment=None, errors=False):
        """What a terminal gets of standard output, or of standard error, with the other one a pipe."""
        master, slave = pty.openpty()
        streams = {"stdout": subprocess.PIPE, "stderr": slave} if errors else {"stdout": slave, "stderr": subprocess.PIPE}
        with subprocess.Popen([ORRERY, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                              env={**os.environ, **COLOURS, **(environment or {})}, **streams) as process:
            os.close(slave)
            shown = b""
            while True:
                try:
                    piece = os.read(master, 65536)
                except OSError:  # the other end is closed
                    break
                if not piece:
                    break
                shown += piece
            self.other = (process.stdout or process.stderr).read().decode()
        os.close(master)
        return shown.decode().replace("\r\n", "\n")

    def commands(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True)
        self.good("import", SAMPLE, "-o", "e.h5", "--display-units", "mA")
        return (["ls", "d.h5"], ["ls", "-la", "odd.h5"], ["show", "d.h5", "diode/dc1/i(vd)", "--range", "3:5"],
                ["show", "d.h5", "diode/dc1/i(vd)"], ["diff", "d.h5", "e.h5"], ["diff", "d.h5", "odd.h5"], ["units"],
                ["units", "--type", "thermodynamic temperature"])

    def test_colours_change_nothing_but_the_colours(self):
        for command in self.commands():
            piped = self.run_orrery(*command, environment=COLOURS).stdout.decode()
            self.assertNotIn("\x1b", piped)
            coloured = self.terminal(*command)
            self.assertRegex(coloured, SEQUENCE)
            self.assertEqual(SEQUENCE.sub("", coloured), piped, command)
            self.assertNotIn("\x1b", SEQUENCE.sub("", coloured))

    def test_every_colour_ends_on_its_line(self):
        for command in self.commands():
            for line in self.terminal(*command).splitlines():
                sequences = SEQUENCE.findall(line)
                self.assertEqual(sequences[1::2], ["\x1b[0m"] * (len(sequences) // 2), line)
                self.assertEqual(len(sequences) % 2, 0, line)
                self.assertNotIn("\x1b[0m", sequences[0::2])

    def test_who_gets_none(self):
        command = ["ls", "d.h5"]
        for environment in ({"NO_COLOR": "1"}, {"NO_COLOR": "0"}, {"TERM": "dumb"}, {"TERM": ""}):
            self.assertNotIn("\x1b", self.terminal(*command, environment=environment), environment)
        self.assertNotIn("\x1b", self.terminal("--color=never", *command))
        self.assertIn("\x1b", self.terminal("--color=auto", *command))
        self.assertIn("\x1b", self.terminal("--color=always", *command, environment={"NO_COLOR": "1", "TERM": "dumb"}))
        self.assertIn("\x1b", self.good(*command, "--color", "always"))  # through a pipe
        self.assertNotIn("\x1b", self.good("--color", "auto", *command))

    def test_what_other_programs_read_has_none(self):
        self.assertNotIn("\x1b", self.terminal("show", "d.h5", "diode/dc1/i(vd)", "--csv"))
        for command in (["show", "d.h5", "diode/dc1/i(vd)"], ["ls", "d.h5"], ["units"]):
            self.assertEqual(self.terminal("--color=always", *command, "--json"), self.good(*command, "--json"))

    def test_names_that_would_steer_the_terminal_do_not(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True)
        self.assertIn("[\\x1b[31m\\n]", SEQUENCE.sub("", self.terminal("ls", "odd.h5")))

    def test_what_a_colour_tells(self):
        shown = self.terminal("ls", "-a", "d.h5", "diode/dc1")
        self.assertIn("\x1b[32mi(vd)\x1b[0m ", shown)
        self.assertIn("\x1b[1;34m  Indep/\x1b[0m ", shown)
        self.assertIn("\x1b[36m    0\x1b[0m ", shown)
        self.assertIn("\x1b[36m[A]\x1b[0m", shown)
        self.good("import", SAMPLE, "-o", "e.h5", "--display-units", "mA")
        self.assertIn("\x1b[32m", self.terminal("diff", "d.h5", "e.h5"))
        self.assertIn("\x1b[31m", self.terminal("diff", "e.h5", "d.h5"))

    def test_messages_are_decided_by_their_own_stream(self):
        shown = self.terminal("ls", "none.h5", errors=True)
        self.assertEqual(shown, "\x1b[1;31morrery:\x1b[0m none.h5: No such file or directory\n")
        self.assertEqual(self.terminal("ls", "none.h5", errors=True, environment={"NO_COLOR": "x"}),
                         "orrery: none.h5: No such file or directory\n")
        self.assertEqual(self.terminal("ls", "none.h5"), "")
        self.assertEqual(self.other, "orrery: none.h5: No such file or directory\n")
        self.terminal("ls", "d.h5", errors=True)
        self.assertNotIn("\x1b", self.other)  # standard output is a pipe

    def test_wrong_usage_is_told_as_the_option_says(self):
        self.assertTrue(self.terminal("frobnicate", errors=True).startswith("\x1b[1;31morrery:\x1b[0m there is no"))
        self.assertTrue(self.terminal("--color=never", "frobnicate", errors=True).startswith("orrery: there is no"))

    def test_warnings(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True)
        self.assertIn("\x1b[1;33morrery: warning:\x1b[0m axis 1 leads nowhere",
                      self.terminal("show", "odd.h5", "lost", errors=True))


if __name__ == "__main__":
    unittest.main()
