"""Asks bash for the completions of a program, as a person at a prompt does with the tab key."""

import subprocess
import tempfile
import unittest
from pathlib import Path

COMPLETIONS = Path(__file__).resolve().parents[2] / "completions"

ASK = """
source "$1"
program=$2
complete -p "$program" >&2 || exit
shift 2
COMP_WORDS=("$program" "$@")
COMP_CWORD=$#
"_${program//-/_}"
printf '%s\\n' "${COMPREPLY[@]}"
"""


class CompletionCase(unittest.TestCase):
    """A test in a folder of its own, empty at first; a subclass names the command."""

    command: str

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)

    def complete(self, *words):
        """The completions of the last word, in order."""
        result = subprocess.run(
            ["bash", "--norc", "-u", "-c", ASK, "bash", COMPLETIONS / self.command, self.command,
             *words],
            cwd=self.folder, capture_output=True, text=True, check=True)
        function = "_" + self.command.replace("-", "_")
        self.assertEqual(result.stderr, f"complete -F {function} {self.command}\n")
        return sorted(result.stdout.split())
