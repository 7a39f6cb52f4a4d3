#!/usr/bin/env python3
"""Asks bash for the completions of varno-solve.

Usage: completion_test.py PROGRAM
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

from completion_support import CompletionCase

PROGRAM = Path(sys.argv.pop(1)).resolve()


class CompletionTest(CompletionCase):
    command = "varno-solve"

    def setUp(self):
        super().setUp()
        self.usage = subprocess.run([PROGRAM, "--help"], capture_output=True, text=True).stdout

    def test_options_are_those_of_the_program(self):
        options = re.findall(r"^  (--\S+)", self.usage, re.MULTILINE)
        self.assertGreater(len(options), 20)
        self.assertEqual(self.complete("-"), sorted(options))

    def test_options_that_begin_like_the_word(self):
        self.assertEqual(self.complete("file", "--max"),
                         ["--max-bits", "--max-seconds", "--max-steps"])

    def test_values_of_options_are_no_input_files(self):
        (self.folder / "5.varno").touch()
        with_values = re.findall(r"^  (--\S+) [A-Z]", self.usage, re.MULTILINE)
        self.assertGreater(len(with_values), 10)
        files = {"--output", "--events", "--plot", "--resume", "--save", "--sweep-file"}
        for option in set(with_values) - files - {"--format"}:
            self.assertEqual(self.complete(option, ""), [], option)

    def test_switches_take_no_value(self):
        (self.folder / "5.varno").touch()
        switches = re.findall(r"^  (--\S+)  ", self.usage, re.MULTILINE)
        self.assertGreater(len(switches), 5)
        for option in switches:
            self.assertEqual(self.complete(option, ""), ["5.varno"], option)

    def test_formats(self):
        for words in (["--format", ""], ["--format", "="], ["--format", "=", ""]):
            self.assertEqual(self.complete(*words), ["csv", "json", "table"])
        self.assertEqual(self.complete("--format", "=", "j"), ["json"])

    def test_other_files_are_any_file(self):
        (self.folder / "rows.txt").touch()
        for option in ("--output", "--events", "--plot", "--sweep-file"):
            self.assertEqual(self.complete(option, "r"), ["rows.txt"])

    def test_input_files_and_folders(self):
        for name in ("lorenz.varno", "lorenz.png"):
            (self.folder / name).touch()
        (self.folder / "lorenz").mkdir()
        self.assertEqual(self.complete("--to", "5", "lo"), ["lorenz", "lorenz.varno"])


if __name__ == "__main__":
    unittest.main()
