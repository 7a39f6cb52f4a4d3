#!/usr/bin/python3
"""Compares sweeps of many short runs with Boost.Odeint in double precision.

Usage: compare.py VARNO_SOLVE ODEINT_LORENZ

The Lorenz system from (1, 1, 1) at t = 0 to t = 1, for values of rho from 28 to 29: processor time
for a million runs on one core, extrapolated, and the digits that are right in the worst number. Prints
a table in Markdown.
"""

import math
import os
import resource
import subprocess
import sys
import tempfile
from pathlib import Path

RUNS = 20_000
ODEINT_RUNS = 200_000
DIGITS = 10
MILLION = 1_000_000
EQUATIONS = """
rho = 28;
x' = 10*(y - x) & 1;
y' = x*(rho - z) - y & 1;
z' = x*y - 8/3*z & 1;
"""


def sweep(program, folder, runs, *options):
    """Processor seconds, and the numbers of each run."""
    (folder / "lorenz.varno").write_text(EQUATIONS)
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    done = subprocess.run(
        [program, "lorenz.varno", "--last", "--format", "csv", "--quiet", "--jobs", "1",
         "--sweep", f"rho=28:{29 - 1/runs!r}:1/{runs}", *options],
        cwd=folder, check=True, capture_output=True, text=True)
    seconds = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
    rows = [list(map(float, line.split(",")[2:])) for line in done.stdout.splitlines()[1:]]
    return seconds, rows


def integrate(program, runs, tolerance):
    done = subprocess.run([program, str(runs), tolerance], check=True, capture_output=True, text=True)
    first, *lines = done.stdout.splitlines()
    return float(first), [list(map(float, line.split()[1:])) for line in lines]


def right_digits(rows, exact):
    worst = max(abs(value/right - 1)
                for row, rightRow in zip(rows, exact) for value, right in zip(row, rightRow))
    return -math.log10(worst)


def main(arguments):
    if len(arguments) != 2:
        sys.exit("Usage: compare.py VARNO_SOLVE ODEINT_LORENZ")
    solve, odeint = (Path(argument).resolve() for argument in arguments)
    print(f"load {os.getloadavg()[0]:.1f}\n")
    print("| program | seconds for a million runs | right digits |\n|---|---|---|")
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for text, options in ("each run verified", []), ("--no-check", ["--no-check"]):
            seconds, _ = sweep(solve, folder, RUNS, "--digits", str(DIGITS), *options)
            print(f"| varno-solve, {DIGITS} digits, {text} | {seconds*MILLION/RUNS:.0f} | {DIGITS} |",
                  flush=True)
        _, exact = sweep(solve, folder, 100, "--digits", "16")
    for tolerance in "1e-10", "1e-13":
        _, few = integrate(odeint, 100, tolerance)
        seconds, _ = integrate(odeint, ODEINT_RUNS, tolerance)
        print(f"| Boost.Odeint, double, Runge-Kutta-Fehlberg 7(8), tolerance {tolerance} | "
              f"{seconds*MILLION/ODEINT_RUNS:.1f} | {right_digits(few, exact):.0f} |", flush=True)


if __name__ == "__main__":
    main(sys.argv[1:])
