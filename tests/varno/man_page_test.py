#!/usr/bin/env python3
"""The manual page has no fault in its markup and tells of every option and keyword.

Usage: man_page_test.py PROGRAM MAN_PAGE
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE = Path(sys.argv.pop())
PROGRAM = Path(sys.argv.pop()).resolve()


class ManPageTest(unittest.TestCase):
    def test_markup_gives_no_warning(self):
        result = subprocess.run(
            ["groff", "-ww", "-mandoc", "-Tutf8", PAGE], capture_output=True, text=True, check=True)
        self.assertEqual(result.stderr, "")
        self.assertIn("initial-value problems", result.stdout)

    def test_options_are_those_of_the_program(self):
        usage = subprocess.run([PROGRAM, "-h"], capture_output=True, text=True).stderr
        letters = re.findall(r"^  -(\w)(?= )", usage, re.MULTILINE)
        self.assertGreater(len(letters), 25)
        described = re.findall(r"^\.It Fl (\w)\b", PAGE.read_text(), re.MULTILINE)
        self.assertEqual(sorted(described), sorted([*letters, "h"]))

    def test_keywords_are_those_of_the_manual(self):
        table = r"(?<=\| )([A-Z0-9_]{4,}) \| (-\w)"
        manual = dict(re.findall(table, (ROOT / "docs" / "varno" / "manual.md").read_text()))
        self.assertEqual(len(manual), 23)
        described = re.findall(r"\b([A-Z0-9_]{4,})\n\.Pq Fl (\w)", PAGE.read_text())
        self.assertEqual({keyword: f"-{letter}" for keyword, letter in described}, manual)


if __name__ == "__main__":
    unittest.main()
