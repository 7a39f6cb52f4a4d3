#!/usr/bin/env python3
"""Solves well-formed equations made at random, from a fixed seed: no run may crash.

Usage: random_equations_test.py PROGRAM

A run may end normally, with a message and status 1, or by the signals that the arithmetic ends a run
with: SIGFPE for a division by zero, SIGABRT for the sine of a negative argument. Some runs have no
end; these are stopped.
"""

import collections
import resource
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from equation_generator import Generator
from run_case import make_environment

PROGRAM = Path(sys.argv.pop(1)).resolve()
RUNS = 100
CPU_SECONDS = 1
SANITIZER_WORDS = ("Sanitizer", "runtime error")


class RandomEquationsTest(unittest.TestCase):
    def solve(self, generator, folder):
        (folder / "input.varno").write_text(generator.equations())
        with open(folder / "commentary", "w+b") as commentary:
            process = subprocess.run(
                [PROGRAM, *generator.options(), "input.varno"], cwd=folder, stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL, stderr=commentary, env=make_environment(folder),
                preexec_fn=lambda: resource.setrlimit(
                    resource.RLIMIT_CPU, (CPU_SECONDS, CPU_SECONDS + 1)))
            # An endless run writes a lot; what matters stands at the end.
            commentary.seek(max(0, commentary.tell() - 20000))
            return process.returncode, commentary.read().decode(errors="replace")

    def outcome(self, status, commentary):
        """A word for a permitted end, None for another one."""
        if any(word in commentary for word in SANITIZER_WORDS):
            return None
        if status == 0:
            return "solved"
        if status == 1 and commentary.splitlines()[-1].startswith(("#(ERR) ", "#(COMP) ")):
            return "message"
        if status == -signal.SIGFPE:
            return "division"
        if status == -signal.SIGABRT and "functions:" in commentary and "Assertion" in commentary:
            return "assertion"
        return "stopped" if status == -signal.SIGXCPU else None

    def test_no_run_crashes(self):
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        outcomes = collections.Counter()
        with tempfile.TemporaryDirectory(prefix="varno-random-") as folder:
            for seed in range(RUNS):
                generator = Generator(seed)
                status, commentary = self.solve(generator, Path(folder))
                outcome = self.outcome(status, commentary)
                outcomes[outcome] += 1
                if outcome is None:
                    text = (Path(folder) / "input.varno").read_text()
                    self.fail(f"seed {seed}, status {status}:\n{text}\n{commentary[-2000:]}")
        # Equations that do not get as far as a table would test little.
        self.assertGreater(outcomes["solved"], RUNS/3, outcomes)


if __name__ == "__main__":
    unittest.main()
