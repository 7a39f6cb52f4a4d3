#!/usr/bin/env python3
"""Runs what the pages show and compares it with the output that they show.

Usage: pages_test.py PROGRAM

Every code block of a page is of one of the kinds below; a block of no kind is an error, so that no
example goes unnoticed.

  transcript begins with "$ ": commands, continued by "> ", each followed by all that it writes to the
             terminal. A line "..." stands for any number of lines.
  commands   begins with varno, gnuplot or the like: each must end with status 0.
  synopsis   has [ ] for what may be left out. Not run.
  building   begins with ./dev or sudo. Not run, but ./dev must know the commands.
  file       follows the line "`NAME`:" and stands in the working folder from then on; a transcript may
             also show a file, by "$ cat NAME", before it exists.
  settings   KEYWORD = VALUE: every line is understood in a settings file.
  equations  all else: they are solved.

The working folder holds the examples. A section of README in which a block runs varno-solve belongs to
that program and is left out.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

from run_case import mask_time_report

PROGRAM = Path(sys.argv.pop()).resolve()
ROOT = Path(__file__).resolve().parents[2]
MANUAL = ROOT / "docs" / "varno" / "manual.md"
PAGES = (ROOT / "README.md", MANUAL, ROOT / "docs" / "varno" / "accuracy.md")
TIMEOUT_SECONDS = 120
LEAST_OF_EACH_KIND = {
    "transcript": 5, "commands": 6, "synopsis": 1, "building": 2, "file": 1, "settings": 1, "equations": 2}


class Block:
    def __init__(self, page, section, line, label, text):
        self.place = f"{page.name}:{line} ({section})"
        self.section = section
        self.file = found[1] if (found := re.fullmatch(r"`([\w.]+)`:", label)) else None
        self.text = text

    def kind(self):
        if self.file:
            return "file"
        for kind, start in (
                ("transcript", r"\$ "),
                ("synopsis", r"varno [^\n]*\["),
                ("commands", r"(varno|gnuplot) "),
                ("building", r"(\./dev|sudo) "),
                ("settings", r"[A-Z]\w+ *="),
                ("equations", r"//|/\*|\w+'")):
            if re.match(start, self.text):
                return kind
        return None


def read_blocks(page):
    """The indented code blocks of a page; those within a list are indented further."""
    blocks, section, label, lines = [], "", "", []

    def end_block(number):
        nonlocal label
        while lines and not lines[-1].strip():
            lines.pop()
        if lines:
            text = textwrap.dedent("\n".join(lines)) + "\n"
            blocks.append(Block(page, section, number - len(lines), label, text))
            lines.clear()
            label = ""

    base = 0  # the indentation of the list item around
    text_lines = [*page.read_text(encoding="utf-8").splitlines(), "end"]
    for number, line in enumerate(text_lines, start=1):
        previous = text_lines[number - 2] if number > 1 else ""
        indentation = len(line) - len(line.lstrip())
        if line.strip() and indentation < base + 4:
            end_block(number)
            base = 2 if line.startswith(("- ", "  ")) else 0
            label = line.strip()
            if line.startswith("## "):
                section = line.removeprefix("## ")
        elif line.strip() and (lines or not previous.strip()):
            lines.append(line)
        elif lines:
            # One blank line between two transcripts ends the first.
            end_block(number)
    end_block(len(text_lines))
    return blocks


def blocks_of_varno(page):
    blocks = read_blocks(page)
    others = {block.section for block in blocks if re.search(r"\bvarno-solve\b", block.text)}
    return [block for block in blocks if block.section not in others]


def split_transcript(text):
    """The commands, each with the lines that it writes."""
    steps = []
    for line in text.splitlines(keepends=True):
        if line.startswith("$ "):
            steps.append([line[2:], ""])
        elif line.startswith("> ") and not steps[-1][1]:
            steps[-1][0] += line[2:]
        else:
            steps[-1][1] += line
    return steps


def matches(shown, actual):
    """Whether a text is as shown, where a line "..." stands for any number of lines."""
    parts = re.split(r"^ *\.\.\.\n", shown, flags=re.MULTILINE)
    pattern = r"(?:.*\n)*".join(re.escape(part) for part in parts)
    return re.fullmatch(pattern, actual) is not None


class PageTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="varno-pages-")
        self.addCleanup(scratch.cleanup)
        self.folder, self.home, programs = (Path(scratch.name) / name for name in ("work", "home", "bin"))
        shutil.copytree(ROOT / "examples" / "varno", self.folder)
        self.home.mkdir()
        programs.mkdir()
        (programs / "varno").symlink_to(PROGRAM)
        self.environment = {
            **os.environ, "HOME": str(self.home), "LC_ALL": "C",
            "PATH": f"{programs}{os.pathsep}{os.environ['PATH']}"}

    def shell(self, command):
        """What a user at a terminal would see, and the status."""
        result = subprocess.run(
            ["bash", "-c", command], cwd=self.folder, env=self.environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            timeout=TIMEOUT_SECONDS)
        return result.returncode, mask_time_report(result.stdout).decode()

    def solve(self, equations):
        (self.folder / "block.varno").write_text(equations)
        status, output = self.shell("varno block.varno 2>&1")
        self.assertEqual(status, 0, output)
        self.assertNotIn("#(ERR)", output)
        return output

    def check_transcript(self, text):
        for command, shown in split_transcript(text):
            name = re.fullmatch(r"cat ([\w.]+)\n", command)
            if name and not (self.folder / name[1]).exists():
                (self.folder / name[1]).write_text(shown)
            status, output = self.shell(command)
            self.assertEqual(status, 0, f"{command}{output}")
            shown = mask_time_report(shown.encode()).decode()
            self.assertTrue(
                matches(shown, output), f"$ {command}The page shows:\n{shown}The program says:\n{output}")

    def check_commands(self, text):
        for command in text.splitlines():
            status, output = self.shell(f"set -o pipefail; {command}")
            self.assertEqual(status, 0, f"{command}\n{output}")

    def check_synopsis(self, text):
        self.assertEqual(text, "varno [OPTIONS] [FILE]\n")

    def check_building(self, text):
        usage = subprocess.run(
            [ROOT / "dev", "help"], capture_output=True, text=True, check=True).stdout
        known = re.findall(r"^  ([a-z]+)\b", usage, re.MULTILINE)
        for command in re.findall(r"\./dev (\w+)", text):
            self.assertIn(command, known)
        for file in re.findall(r"\bexamples/\S+", text):
            self.assertTrue((ROOT / file).is_file(), file)

    def check_file(self, text):
        self.solve(text)

    def check_settings(self, text):
        rc = self.home / ".varnorc"
        rc.write_text(text)
        output = self.solve("y' = -y & 1;")
        rc.unlink()
        self.assertEqual(output.count("#(RES_SET) "), len(text.splitlines()), output)
        self.assertNotIn("(WARN)", output)

    def check_equations(self, text):
        self.solve(text)

    def check_page(self, page):
        blocks = blocks_of_varno(page)
        for block in blocks:
            with self.subTest(block.place):
                kind = block.kind()
                self.assertIsNotNone(kind, f"what is this?\n{block.text}")
                if kind == "file":
                    (self.folder / block.file).write_text(block.text)
                getattr(self, f"check_{kind}")(block.text)

    def test_readme(self):
        self.check_page(PAGES[0])

    def test_manual(self):
        self.check_page(PAGES[1])

    def test_accuracy(self):
        self.check_page(PAGES[2])

    def test_statements_of_the_manual(self):
        table = re.search(r"\| statement \| meaning \|\n(.*?)\n\n", MANUAL.read_text(), re.DOTALL)[1]
        statements = re.findall(r"`(\w+[^`]*;)`", table)
        self.assertGreaterEqual(len(statements), 5)
        self.solve("\n".join([*statements, "v' = -x & 0;\n"]))

    def test_syntax_errors_of_the_manual(self):
        shown = re.findall(r"`([^`]+)` reports `(\"[^`]*\")`", MANUAL.read_text())
        self.assertGreaterEqual(len(shown), 5)
        for statement, token in shown:
            with self.subTest(statement):
                (self.folder / "block.varno").write_text(statement)
                status, output = self.shell("varno block.varno")
                self.assertEqual(status, 3)
                self.assertIn(f"#(ERR) ERROR: parse error {token} at line #1\n", output)

    def test_missing_semicolon_reports_the_next_statement(self):
        (self.folder / "block.varno").write_text("y' = -y & 1\nz' = y;\n")
        status, output = self.shell("varno block.varno")
        self.assertEqual(status, 3)
        self.assertIn('#(ERR) ERROR: parse error "z" at line #2\n', output)


class ReadingTest(unittest.TestCase):
    """No block is overlooked, and a wrong one is noticed."""

    def test_blocks_are_found(self):
        kinds = [block.kind() for page in PAGES for block in blocks_of_varno(page)]
        for kind, least in LEAST_OF_EACH_KIND.items():
            self.assertGreaterEqual(kinds.count(kind), least, kind)

    def test_every_prompt_is_in_a_transcript(self):
        for page in PAGES:
            prompts = re.findall(r"^ +\$ .*", page.read_text(encoding="utf-8"), re.MULTILINE)
            found = sum(len(split_transcript(block.text)) for block in read_blocks(page)
                        if block.kind() == "transcript")
            self.assertEqual(found, len(prompts), page.name)

    def test_every_line_of_four_blanks_is_in_a_block(self):
        for page in PAGES:
            indented = [line for line in page.read_text(encoding="utf-8").splitlines()
                        if line.startswith("    ")]
            found = sum(len([line for line in block.text.splitlines() if line.strip()])
                        for block in read_blocks(page))
            self.assertEqual(found, len(indented), page.name)

    def test_left_out_rows(self):
        self.assertTrue(matches("a\n...\nd\n", "a\nb\nc\nd\n"))
        self.assertTrue(matches("a\n...\n", "a\n"))
        self.assertFalse(matches("a\n...\nd\n", "a\nb\nc\n"))
        self.assertFalse(matches("a\n", "a\nb\n"))
        self.assertFalse(matches("a.c\n", "abc\n"))


if __name__ == "__main__":
    unittest.main()
