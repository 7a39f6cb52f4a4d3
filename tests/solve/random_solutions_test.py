#!/usr/bin/env python3
"""Solves random equations with known solutions, and holds every printed digit against mpmath.

Usage: random_solutions_test.py [--first SEED] [--systems N] [--seconds S] [--show] [--verbose]
       PROGRAM

Each seed makes one system (support/random_systems.py). Every row must be there, every number must be
within one unit of its last digit, and no run may be refused: all solutions are smooth on their way.
Runs that take longer than S seconds are stopped, named, and counted apart; so are systems at whose
rows mpmath loses the digits of the reference.

--show prints the system of the first seed, and what is wrong with it, instead of testing;
--verbose names the outcome of every seed.
"""

import argparse
import collections
import os
import subprocess
import sys
import tempfile
from fractions import Fraction
from pathlib import Path

import mpmath

TESTS = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS/"support"), str(TESTS/"solve"/"support")]

import closed_form
from random_systems import make_system
from smooth_expressions import derivative, value

#: the forty systems from here on take some seconds together
FIRST_SEED = 132
#: beyond the digits of a number, those of sizes that cancel, and of times such as 10^12
GUARD_DIGITS = 60
#: a reference that is this far below its neighbours may be the rest of a cancellation in it
REST_DIGITS = 40


LARGEST_EXPONENT = 100_000
#: rounded times beyond this part of the interval say too little to judge by
COARSEST_TIME = Fraction(1, 1000)
#: of the many rows at the solver's own steps so many are looked at
MOST_ROWS = 60


class Reference:
    """The exact values of a column, as mpmath has them at two precisions."""

    def __init__(self, expression, digits):
        self.expression = expression
        self.slope = derivative(expression)
        self.low, self.high = digits + GUARD_DIGITS, digits + 5*GUARD_DIGITS

    def at(self, expression, time):
        found = []
        for working in (self.low, self.high):
            with mpmath.workdps(working):
                found.append(value(expression, closed_form.to_mpf(time)))
        low, high = found
        with mpmath.workdps(self.high):
            slope = abs(value(self.slope, closed_form.to_mpf(time)))
            size = max(abs(high), mpmath.mpf(10)**-REST_DIGITS*slope)
            if abs(low - high) > mpmath.mpf(10)**-(self.low - GUARD_DIGITS + 5)*size:
                raise ArithmeticError(f"the reference loses digits at t = {time}")
        return high

    def fault(self, text, time, time_unit):
        """What is wrong with a printed number; None if nothing is."""
        if abs(int(text.partition("e")[2] or 0)) > LARGEST_EXPONENT:
            return "an absurd exponent"
        printed = closed_form.Printed(text)
        exact = self.at(self.expression, time)
        with mpmath.workdps(self.high):
            if text == "0" and not time_unit:
                return None if abs(exact) < mpmath.mpf(10)**-self.low else "not an exact zero"
            if time_unit:
                change = max(abs(self.at(self.expression, time + sign*time_unit) - exact) for sign in (-1, 1))
                # A plain 0 is exact at the time itself.
                unit = 0 if text == "0" else closed_form.to_mpf(printed.unit)
                return None if abs(closed_form.to_mpf(printed.value) - exact) <= 2*change + unit \
                    else "wrong for any such time"
            return closed_form.differs(printed, exact, 1)


def check_row(system, references, row, time):
    """Yields what is wrong with a row."""
    printed_time = closed_form.Printed(row[0])
    time_unit = 0
    if time is None:  # a rounded time of the solver's own, when it is that long
        time = Fraction(row[0])
        time_unit = printed_time.unit if printed_time.digits >= system.digits else 0
        if time_unit > COARSEST_TIME*system.length:
            return
    elif abs(printed_time.value - time) > (printed_time.unit if printed_time.value != time else 0):
        yield f"t = {row[0]} instead of {time}"
    for (name, reference), text in zip(references.items(), row[1:]):
        fault = reference.fault(text, time, time_unit)
        if fault:
            with mpmath.workdps(system.digits + 10):
                exact = mpmath.nstr(reference.at(reference.expression, time), system.digits + 5)
            yield f"t = {row[0]}: {name} = {text} is wrong, exact is {exact}: {fault}"
            continue
        number = closed_form.Printed(text)
        if not number.is_zero and not number.is_nan and number.digits != system.digits:
            yield f"t = {row[0]}: {name} = {text} has not {system.digits} digits"


def faults_of_rows(system, output):
    """What is wrong with the rows; with those printed so far where there are less than asked for."""
    try:
        header, rows = closed_form.read(output)
    except closed_form.Unreadable as problem:
        return [str(problem)]
    if header != ["t", *system.columns]:
        return [f"columns {header}"]
    references = {name: Reference(e, system.digits) for name, e in system.columns.items()}
    if system.times is None:
        rows = rows[::len(rows)//MOST_ROWS + 1]
    elif len(rows) > len(system.times):
        return [f"{len(rows)} rows instead of {len(system.times)}"]
    times = system.times or [None]*len(rows)
    return [fault for row, time in zip(rows, times)
            for fault in check_row(system, references, row, time)]


def run(program, system, seconds):
    """The outcome as a word, and what is wrong."""
    with tempfile.TemporaryDirectory(prefix="varno-random-") as folder:
        (Path(folder)/"input.varno").write_text(system.equations)
        with open(Path(folder)/"rows", "w+", encoding="utf-8") as rows:
            try:
                result = subprocess.run(
                    [program, *system.options, "input.varno"], cwd=folder, stdin=subprocess.DEVNULL,
                    stdout=rows, stderr=subprocess.PIPE, text=True, timeout=seconds, check=False,
                    env={"PATH": os.environ["PATH"], "LC_ALL": "C"})
                status, commentary = result.returncode, result.stderr
            except subprocess.TimeoutExpired:
                status, commentary = None, ""
            rows.seek(0)
            output = rows.read()
    complete = output[:output.rfind("\n") + 1]
    has_rows = complete.count("\n") > (0 if complete.startswith("{") else 1)
    try:
        faults = faults_of_rows(system, complete) if has_rows else []
    except ArithmeticError:
        return "unknown", []
    if faults:
        return "wrong", faults
    if status is None:
        return "slow", []
    if status != 0:
        return "refused", [f"status {status}", *commentary.splitlines()[:3]]
    count = complete.count("\n") - (0 if complete.startswith("{") else 1)
    if not has_rows or (system.times and count != len(system.times)):
        return "wrong", [f"{count} rows"]
    return "right", []


def describe(seed, system, faults):
    return "\n".join([f"seed {seed}: varno-solve input.varno {' '.join(system.options)}",
                      system.equations, *faults[:10]])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("--first", type=int, default=FIRST_SEED, metavar="SEED")
    parser.add_argument("--systems", type=int, default=40, metavar="N")
    parser.add_argument("--seconds", type=float, default=60, metavar="S")
    parser.add_argument("--show", action="store_true")
    parser.add_argument("--verbose", action="store_true")
    options = parser.parse_args()
    program = options.program.resolve()

    outcomes = collections.Counter()
    for seed in range(options.first, options.first + (1 if options.show else options.systems)):
        system = make_system(seed)
        outcome, faults = run(program, system, options.seconds)
        if options.verbose:
            print(f"seed {seed}: {outcome}", flush=True)
        outcomes[outcome] += 1
        if options.show or outcome in ("wrong", "refused"):
            print(f"{outcome}: {describe(seed, system, faults)}", flush=True)
        elif outcome in ("slow", "unknown"):
            print(f"{outcome}: seed {seed}", flush=True)
    print(", ".join(f"{count} {outcome}" for outcome, count in outcomes.items()))
    return 1 if outcomes["wrong"] + outcomes["refused"] > 0 else 0


if __name__ == "__main__":
    sys.exit(main())
