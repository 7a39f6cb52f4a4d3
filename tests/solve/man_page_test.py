#!/usr/bin/env python3
"""The manual page has no fault in its markup, tells of every option, and shows what is printed.

Usage: man_page_test.py PROGRAM
"""

import re
import shlex
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PAGE = Path(__file__).resolve().parents[2] / "man" / "varno-solve.1"
PROGRAM = Path(sys.argv.pop(1)).resolve()


def formatted():
    result = subprocess.run(
        ["groff", "-ww", "-mandoc", "-Tascii", "-P-cbou", PAGE], capture_output=True, text=True,
        check=True)
    return result.stdout, result.stderr


class ManPageTest(unittest.TestCase):
    def test_markup_gives_no_warning(self):
        text, errors = formatted()
        self.assertEqual(errors, "")
        self.assertIn("initial-value problems", text)

    def test_options_are_those_of_the_program(self):
        usage = subprocess.run([PROGRAM, "--help"], capture_output=True, text=True).stdout
        options = re.findall(r"^  --(\S+)", usage, re.MULTILINE)
        self.assertGreater(len(options), 20)
        self.assertEqual(re.findall(r"^\.It Fl -(\S+)", PAGE.read_text(), re.MULTILINE), options)

    def test_help_fits_two_screens(self):
        lines = subprocess.run([PROGRAM, "--help"], capture_output=True, text=True).stdout.splitlines()
        self.assertLessEqual(len(lines), 50)
        self.assertLessEqual(max(map(len, lines)), 80)

    def test_examples_print_what_the_page_shows(self):
        text, _ = formatted()
        blocks = re.findall(r"(?m)((?:^ {11,}\S.*\n)+)", text.partition("\nEXAMPLES\n")[2])
        blocks = ["".join(line[11:] for line in block.splitlines(True)) for block in blocks]
        equations, *runs = blocks
        self.assertEqual(len(runs), 2)
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "oscillator.varno").write_text(equations)
            for run in runs:
                command, rows = run.split("\n", 1)
                prompt, _, *arguments = shlex.split(command)
                self.assertEqual(prompt, "$")
                result = subprocess.run(
                    [PROGRAM, *arguments], cwd=folder, capture_output=True, text=True)
                self.assertEqual((result.stdout, result.stderr, result.returncode), (rows, "", 0))


if __name__ == "__main__":
    unittest.main()
