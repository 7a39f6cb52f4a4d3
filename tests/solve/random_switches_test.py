#!/usr/bin/env python3
"""Solves random piecewise linear systems, and holds every printed digit against matrix exponentials.

Usage: random_switches_test.py [--first SEED] [--systems N] [--show] [--verbose] PROGRAM

Each seed makes one system (support/piecewise_linear.py), or none where its solution nearly touches the
plane at which it switches. Where the fields on both sides point to the plane the run must end there,
with status 2, with all rows before.

--show prints the system of the first seed, and what is wrong with it, instead of testing;
--verbose names the outcome of every seed.
"""

import argparse
import os
import subprocess
import sys
import tempfile
from pathlib import Path

import mpmath

TESTS = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS/"support"), str(TESTS/"solve"/"support")]

import closed_form
from piecewise_linear import Solution, System, Unsuitable

DIGITS = 20
REFERENCE_DIGITS = 45
#: of the time of an end, so many digits are looked for in the message
END_DIGITS = 12


def solve(program, system):
    with tempfile.TemporaryDirectory(prefix="varno-switches-") as folder:
        (Path(folder)/"input.varno").write_text(system.text())
        return subprocess.run(
            [program, "input.varno", "--to", str(system.end), "--every", str(system.row_step),
             "--columns", ",".join(system.names), "--digits", str(DIGITS)],
            cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
            timeout=60, env={"PATH": os.environ["PATH"], "LC_ALL": "C"})


def faults_of(program, system, solution):
    result = solve(program, system)
    expected_status = 0 if solution.sliding_at is None else 2
    if result.returncode != expected_status:
        return [f"status {result.returncode} instead of {expected_status}: {result.stderr}"]
    if solution.sliding_at is not None:
        # The last digit is rounded.
        place = mpmath.nstr(solution.sliding_at, END_DIGITS + 3)[:END_DIGITS]
        if place not in result.stderr:
            return [f"not ended at {place}: {result.stderr}"]
    columns = {name: lambda t, k, i=i: solution.rows[int(k)][i] for i, name in enumerate(system.names)}
    return closed_form.compare(result.stdout, columns, rows=len(solution.rows), digits=DIGITS)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--first", type=int, default=1)
    parser.add_argument("--systems", type=int, default=12)
    parser.add_argument("--show", action="store_true")
    parser.add_argument("--verbose", action="store_true")
    parser.add_argument("program", type=Path)
    options = parser.parse_args()
    program = options.program.resolve()
    mpmath.mp.dps = REFERENCE_DIGITS

    seed, done, wrong, switches, sliding = options.first, 0, 0, 0, 0
    while done < (1 if options.show else options.systems):
        try:
            system = System(seed)
            solution = Solution(system)
        except Unsuitable:
            seed += 1
            continue
        faults = faults_of(program, system, solution)
        if options.show:
            print(system.text(), end="")
        if options.verbose or options.show or faults:
            print(f"seed {seed}: {solution.switches} switches, sliding at {solution.sliding_at}:",
                  "; ".join(faults) or "right")
        done, wrong, seed = done + 1, wrong + bool(faults), seed + 1
        switches, sliding = switches + solution.switches, sliding + (solution.sliding_at is not None)
    print(f"{done} systems, {switches} switches, {sliding} ends by sliding, {wrong} wrong")
    if not options.show and (switches < done//4 or sliding == 0):
        sys.exit("the systems test nothing")
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
