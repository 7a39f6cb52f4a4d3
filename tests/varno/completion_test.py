#!/usr/bin/env python3
"""Asks bash for the completions of varno.

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
    command = "varno"

    def test_options_are_those_of_the_program(self):
        usage = subprocess.run([PROGRAM, "-h"], capture_output=True, text=True).stderr
        letters = re.findall(r"^  (-\w)(?= )", usage, re.MULTILINE)
        self.assertGreater(len(letters), 25)
        self.assertEqual(self.complete("-"), sorted([*letters, "-h"]))

    def test_switch_is_0_or_1(self):
        self.assertEqual(self.complete("-L", ""), ["0", "1"])

    def test_terminal(self):
        self.assertEqual(self.complete("-t", "5", "-g", "p"), ["pdfcairo", "png"])

    def test_number_is_not_completed(self):
        (self.folder / "5.varno").touch()
        self.assertEqual(self.complete("-t", ""), [])

    def test_input_files_and_folders(self):
        for name in ("lorenz.varno", "lorenz.png"):
            (self.folder / name).touch()
        (self.folder / "lorenz").mkdir()
        self.assertEqual(self.complete("-t", "5", "lo"), ["lorenz", "lorenz.varno"])


if __name__ == "__main__":
    unittest.main()
