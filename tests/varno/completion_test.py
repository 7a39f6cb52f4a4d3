#!/usr/bin/env python3
"""Asks bash for the completions of varno.

Usage: completion_test.py PROGRAM
"""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

COMPLETION = Path(__file__).resolve().parents[2] / "completions" / "varno"
PROGRAM = Path(sys.argv.pop(1)).resolve()

ASK = """
source "$1"
complete -p varno >&2 || exit
shift
COMP_WORDS=(varno "$@")
COMP_CWORD=$#
_varno
printf '%s\\n' "${COMPREPLY[@]}"
"""


class CompletionTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)

    def complete(self, *words):
        """The completions of the last word."""
        result = subprocess.run(
            ["bash", "--norc", "-u", "-c", ASK, "bash", COMPLETION, *words], cwd=self.folder,
            capture_output=True, text=True, check=True)
        self.assertEqual(result.stderr, "complete -F _varno varno\n")
        return sorted(result.stdout.split())

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
