#!/usr/bin/env python3
"""Solves well-formed equations made at random, from a fixed seed: no run may crash.

Usage: random_equations_test.py PROGRAM

A run may end normally, with a message and status 1, or by the signals that the arithmetic ends a run
with: SIGFPE for a division by zero, SIGABRT for the sine of a negative argument. Some runs have no
end; these are stopped.
"""

import collections
import random
import resource
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from run_case import make_environment

PROGRAM = Path(sys.argv.pop(1)).resolve()
RUNS = 300
CPU_SECONDS = 1
SANITIZER_WORDS = ("Sanitizer", "runtime error")

# The first group takes any argument. The second ends a run when it is asked for a value outside of its
# domain, or always in a differential equation: few runs would go further if it were not rare.
TOTAL_FUNCTIONS = ("cos", "atan", "acotan", "sinh", "cosh", "tanh", "exp")
PARTIAL_FUNCTIONS = (
    "sin", "tan", "cotan", "asin", "acos", "cotanh", "asinh", "acosh", "atanh", "argcotanh", "sqrt",
    "ln", "trunc")
PARTIAL_SHARE = 0.15


class Generator:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.names = [f"y{i}" for i in range(self.random.randint(1, 5))]

    def number(self):
        return self.random.choice(
            ("0", "1", "1", "2", "2", "10", ".5", ".5", "3.25", "1e-3", "2.5E+1", "pi", "pi"))

    def function(self):
        partial = self.random.random() < PARTIAL_SHARE
        return self.random.choice(PARTIAL_FUNCTIONS if partial else TOTAL_FUNCTIONS)

    def constant(self):
        return self.expression(2, self.number)

    def leaf(self):
        return self.number() if self.random.random() < 0.3 else self.random.choice(
            [*self.names, "t"])

    def expression(self, depth, leaf):
        kind = self.random.random()
        if depth == 0 or kind < 0.2:
            return leaf()
        first = self.expression(depth - 1, leaf)
        if kind < 0.3:
            return self.random.choice("+-") + first
        if kind < 0.4:
            return f"({first})"
        if kind < 0.55:
            return f"{self.function()}({first})"
        operator = self.random.choice("++++--****/")
        return f"{first} {operator} {self.expression(depth - 1, leaf)}"

    def statement(self, name):
        order = self.random.choice(("'", "'", "'", "'", "'", "'", "''", "'3", ""))
        text = f"{name}{order} = {self.expression(4, self.leaf)}"
        if self.random.random() < 0.8:
            text += f" & {self.constant()}"
        text += ";\n"
        if self.random.random() < 0.2:
            text += f"{name}{order and self.random.choice(('', order))}(0) = {self.constant()};\n"
        return text

    def equations(self):
        return "".join(map(self.statement, self.names))

    def options(self):
        choices = (
            ("-U", "1"), ("-i", "0"), ("-d", "1"), ("-D", "3"), ("-T", "1"), ("-W", "300"), ("-o", "10"),
            ("-z", "1"), ("-F", "-3"), ("-L", "1"), ("-3", "2"), ("-S", "2"), ("-s", "0.5"),
            ("-a", "1e-30"), ("-X", "1"))
        selected = self.random.sample(choices, 4)
        # A variable that stays 0 has no end of halved steps, and happens often here.
        if self.random.random() < 0.8:
            selected.append(("-f", "1"))
        return [text for option in selected for text in option]


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
