#!/usr/bin/env python3
"""Runs every command of varno-solve that the pages show with its output, and compares.

Usage: pages_test.py PROGRAM VARNO

A command is a line "    $ varno-solve ..." of an indented block; what follows in the block, up to the
next command, is its output: standard output, as a shell shows it. A line of "..." stands for any
lines that are left out. The seconds of a summary are not compared. The files that a command reads are
the page's own, blocks behind a line that ends with "`NAME.varno`:", and those of examples/solve/. Commands
"$ varno ..." are run, too, on the page that compares both.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

VARNO = Path(sys.argv.pop()).resolve()
PROGRAM = Path(sys.argv.pop()).resolve()
ROOT = Path(__file__).resolve().parents[2]
# Each with the least number of commands that it shows.
PAGES = {"README.md": 3, "docs/solve/manual.md": 10, "docs/solve/digits.md": 1,
         "docs/solve/tutorial.md": 10, "docs/solve/newcomers.md": 3}
COMPARISON = "docs/solve/from-varno.md"
INDENT = "    "


def blocks_of(text):
    """Indented blocks as (line before, lines); blank lines within do not end a block."""
    before, block = "", []
    for line in [*text.splitlines(), "end"]:
        if line.startswith(INDENT):
            block.append(line.removeprefix(INDENT))
        elif not line.strip() and block:
            block.append("")
        elif line.strip():
            if block:
                yield before, block
            before, block = line, []


def strip_blank(lines):
    return "\n".join(lines).strip("\n").split("\n")


def read_page(path, programs=("varno-solve",)):
    """The files that a page holds, and its commands as (command, lines of output)."""
    files, commands = {}, []
    for before, block in blocks_of(path.read_text(encoding="utf-8")):
        first = next((i for i, line in enumerate(block) if line.startswith("$ ")), len(block))
        name = re.search(r"`(\w+\.(?:varno|csv))`:$", before)
        if name:
            files[name[1]] = "\n".join(strip_blank(block[:first])) + "\n"
        shown = None
        for line in block[first:]:
            if line.startswith("$ "):
                shown = []
                if line.split()[1] in programs:
                    commands.append((line.removeprefix("$ "), shown))
            else:
                shown.append(line)
    return files, [(command, strip_blank(shown)) for command, shown in commands]


def mask(line):
    return re.sub(r"^[\d.e+-]+ seconds$", "? seconds", line)


def matches(expected, actual):
    """Whether lines are those expected, where "..." is any number of lines."""
    pattern = "".join(r"(?:.*\n)*" if line == "..." else re.escape(mask(line)) + "\n"
                      for line in expected)
    return re.fullmatch(pattern, "".join(mask(line) + "\n" for line in actual)) is not None


class PagesTest(unittest.TestCase):
    maxDiff = None

    def check_page(self, page, least, **arguments):
        files, commands = read_page(ROOT / page, **arguments)
        self.assertGreaterEqual(len(commands), least, page)
        with tempfile.TemporaryDirectory(prefix="varno-pages-") as folder:
            work, programs = Path(folder) / "work", Path(folder) / "bin"
            shutil.copytree(ROOT / "examples" / "solve", work)
            programs.mkdir()
            (programs / "varno-solve").symlink_to(PROGRAM)
            (programs / "varno").symlink_to(VARNO)
            for name, text in files.items():
                (work / name).write_text(text)
            for command, expected in commands:
                with self.subTest(page=page, command=command):
                    result = subprocess.run(
                        ["bash", "-c", command], cwd=work, text=True, check=False,
                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                        env={"PATH": f"{programs}:{os.environ['PATH']}", "LC_ALL": "C"})
                    actual = strip_blank(result.stdout.splitlines())
                    if not matches(expected, actual):
                        self.assertEqual(actual, expected)

    def test_commands_show_what_the_program_prints(self):
        for page, least in PAGES.items():
            self.check_page(page, least)

    def test_both_programs_print_what_their_comparison_shows(self):
        self.check_page(COMPARISON, 20, programs=("varno-solve", "varno"))

    def test_left_out_lines_are_found(self):
        self.assertTrue(matches(["a", "...", "c"], ["a", "b", "b", "c"]))
        self.assertTrue(matches(["a", "...", "c"], ["a", "c"]))
        self.assertFalse(matches(["a", "...", "c"], ["a", "b"]))
        self.assertFalse(matches(["a"], ["a", "b"]))
        self.assertTrue(matches(["0.02 seconds"], ["1.5 seconds"]))


if __name__ == "__main__":
    unittest.main()
