#!/usr/bin/env python3
"""Solves random ordinary problems for few digits, which the numbers of the hardware do as a rule,
and compares the rows with those of many digits, rounded.

Usage: few_digits_test.py [--first SEED] [--systems N] [--show] PROGRAM

Each seed makes one problem: some coupled equations, made of sums, products, quotients and functions,
from random start values, with a random number of digits. Every number must be the one that has
MORE_DIGITS more, rounded to nearest; and most problems must be solved by the hardware where it
computes with 64 bits: else nothing is tested here.

--show prints the problem of the first seed, and what is wrong with it, instead of testing.
"""

import argparse
import collections
import platform
import random
import subprocess
import sys
import tempfile
from decimal import ROUND_HALF_EVEN, Context, Decimal
from pathlib import Path

FIRST_SEED = 1
MORE_DIGITS = 15
MOST_DIGITS = 10
#: of a run; what takes longer is left out
SECONDS = 60
#: the summary of a run by the hardware
HARDWARE = " 64 bits"
LEAST_PART_BY_HARDWARE = 0.5

#: what an equation may be made of; {0} and {1} are variables or smaller expressions
SHAPES = ("{0}*{1}", "{0} - {1}", "{0} + {1}", "{0}^2", "{0}^3/10", "sin({0})", "cos({0} + {1})", "exp(-({0})^2)",
          "{0}/(1 + ({1})^2)", "sqrt(2 + ({0})^2)", "ln(3 + ({0})^2)", "tanh({0})", "atan({0})",
          "(1 + ({0})^2)^(1/3)", "asinh({0})", "erf({0}/2)", "sinh({0}/4)", "1/(2 + cos({0}))")


class ProblemMaker:
    """Makes the text of a problem, and options for it."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.variables = ["x", "y", "z"][:self.random.choice((1, 2, 2, 3, 3))]

    def constant(self):
        return self.random.choice(("1/3", "2", "0.1", "5/7", "1", "pi/4", "1.25", "0.7", "sqrt(2)", "3/2"))

    def leaf(self):
        return "t" if self.random.random() < 0.12 else self.random.choice(self.variables)

    def expression(self, depth):
        if depth == 0:
            return self.leaf()
        parts = [self.expression(self.random.randrange(depth)) for _ in range(2)]
        return "(" + self.random.choice(SHAPES).format(*parts) + ")"

    def equation(self, name):
        terms = [f"{self.random.choice('+-')} {self.constant()}*{self.expression(self.random.choice((0, 1, 1, 2)))}"
                 for _ in range(self.random.choice((1, 2, 2, 3)))]
        # Most are held together, so that they have a solution to the end.
        damping = f" - {name}^3/20" if self.random.random() < 0.6 else ""
        start = self.random.choice(("1", "0", "-1/2", "1/3", "2", "-1.1", "pi/3", "0.25"))
        return f"{name}' = {' '.join(terms)}{damping} & {start};"

    def text(self):
        lines = [self.equation(name) for name in self.variables]
        if self.random.random() < 0.3:
            lines.append(f"d = {self.expression(2)};")
        return "\n".join(lines) + "\n"

    def options(self):
        to = self.random.choice(("1", "-1", "3", "5", "10", "1/7", "pi", "20", "-4"))
        rows = self.random.choice((["--last"], ["--points", "7"], ["--points", "30"], ["--every", "1/3"]))
        return ["--to=" + to, *rows, "--format", "csv"]

    def digits(self):
        return self.random.randrange(1, MOST_DIGITS + 1)


def run(program, folder, options):
    return subprocess.run([program, *options, "input.varno"], cwd=folder, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=SECONDS, check=False)


def rounded(text, digits):
    """What a number is with so many digits; None where the digits behind them do not tell."""
    number = Decimal(text)
    nearest = number.normalize(Context(prec=digits, rounding=ROUND_HALF_EVEN))
    unit = Decimal(1).scaleb(number.adjusted() + 1 - digits)
    to_boundary = abs(abs(number - nearest) - unit/2)
    return nearest if to_boundary > unit*Decimal(10)**(3 - MORE_DIGITS) else None


def faults(few, many, digits):
    """What is wrong with rows, in the light of those with more digits."""
    rows, references = (output.splitlines() for output in (few, many))
    if len(rows) != len(references):
        yield f"{len(rows)} lines instead of {len(references)}"
        return
    for row, reference in list(zip(rows, references))[1:]:
        for text, exact in list(zip(row.split(","), reference.split(",")))[1:]:
            if text == exact or "nan" in (text, exact):
                if text != exact:
                    yield f"{text} instead of {exact}"
            # A zero is one to its unit.
            elif Decimal(text) == 0 or Decimal(exact) == 0:
                yield from [f"{text} instead of {exact}"]*(Decimal(text) != Decimal(exact))
            elif rounded(exact, digits) not in (None, Decimal(text)):
                yield f"{text} instead of {exact}, in {row}"


def solve(program, seed):
    """The outcome as a word, and what is wrong."""
    maker = ProblemMaker(seed)
    text, options, digits = maker.text(), maker.options(), maker.digits()
    with tempfile.TemporaryDirectory(prefix="varno-few-digits-") as folder:
        (Path(folder)/"input.varno").write_text(text)
        try:
            few, many = (run(program, folder, [*options, "--digits", str(count)])
                         for count in (digits, digits + MORE_DIGITS))
        except subprocess.TimeoutExpired:
            return "slow", []
    if few.returncode != many.returncode:
        return "wrong", [text, f"status {few.returncode} instead of {many.returncode}"]
    found = list(faults(few.stdout, many.stdout, digits))
    if found:
        return "wrong", [text, " ".join(options) + f" --digits {digits}", *found[:5]]
    return "by hardware" if HARDWARE in few.stderr else "right", []


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("--first", type=int, default=FIRST_SEED, metavar="SEED")
    parser.add_argument("--systems", type=int, default=40, metavar="N")
    parser.add_argument("--show", action="store_true")
    options = parser.parse_args()
    program = options.program.resolve()
    if options.show:
        maker = ProblemMaker(options.first)
        print(maker.text(), *maker.options(), "--digits", maker.digits())
        print(*solve(program, options.first))
        return 0

    outcomes = collections.Counter()
    for seed in range(options.first, options.first + options.systems):
        outcome, found = solve(program, seed)
        outcomes[outcome] += 1
        if found:
            print(f"seed {seed}:", *found, sep="\n", flush=True)
    print(", ".join(f"{count} {outcome}" for outcome, count in outcomes.items()))
    if platform.machine() == "x86_64" and outcomes["by hardware"] < LEAST_PART_BY_HARDWARE*options.systems:
        print("too few of them by the hardware")
        return 1
    return 1 if outcomes["wrong"] > 0 else 0


if __name__ == "__main__":
    sys.exit(main())
