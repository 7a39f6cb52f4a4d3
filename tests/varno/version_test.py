#!/usr/bin/env python3
"""Program, manual page, news and package have the version of the project.

Usage: version_test.py VERSION PROGRAM MAN_PAGE
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

from run_case import project_version

ROOT = Path(__file__).resolve().parents[2]
MAN_PAGE = Path(sys.argv.pop())
PROGRAM = Path(sys.argv.pop()).resolve()
VERSION = sys.argv.pop()


class VersionTest(unittest.TestCase):
    def test_program(self):
        result = subprocess.run([PROGRAM, "-v"], capture_output=True, text=True, check=True)
        self.assertEqual(result.stdout, f"VARNO/C version {VERSION}\n")

    def test_manual_page(self):
        self.assertIn(f"\n.Os varno {VERSION}\n", MAN_PAGE.read_text())

    def test_latest_news(self):
        latest = re.search(r"^## (\S+)", (ROOT / "NEWS.md").read_text(), re.MULTILINE)[1]
        self.assertEqual(latest, VERSION)

    def test_latest_entry_of_the_package(self):
        changelog = (ROOT / "packaging" / "changelog").read_text()
        self.assertTrue(changelog.startswith(f"varno ({VERSION}) "), changelog.splitlines()[0])

    def test_cases(self):
        self.assertEqual(project_version(), VERSION)


if __name__ == "__main__":
    unittest.main()
