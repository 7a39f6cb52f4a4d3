#!/usr/bin/python3
"""Measures what large systems cost: each equation of them, and two threads in place of one.

Usage: large_systems.py VARNO_SOLVE

Prints two tables in Markdown. All runs are single ones (--no-check) that print their last row; of
each the least of three is taken, wall time.
"""

import os
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SIZES = 100, 1000, 10_000
DIGITS_OF_SIZES = 15
# Until when, by system and size: the smaller ones further, or what they take would be lost in that
# of other programs.
ENDS = {"ring": ("160", "60", "8"), "line": ("40", "20", "2"), "Lorenz-96": ("10", "4", "1/2")}
SHORT = "1/1000"
# System, digits, end
SHARED = (
    ("ring", 15, "70"), ("line", 15, "40"), ("Lorenz-96", 15, "6"),
    ("ring", 60, "10"), ("line", 60, "3"), ("Lorenz-96", 60, "1"),
    ("ring", 250, "1/2"), ("ring", 250, "2"), ("line", 250, "1/8"), ("Lorenz-96", 250, "1/10"),
)
EQUATIONS_SHARED = 1000
RUNS = 3


def spread(i):
    """Starts that differ from neighbour to neighbour, between 0 and 1."""
    return f"{i*37 % 101/101:.3f}"


def ring(count):
    """Oscillators, each bound to its two neighbours."""
    cells = count//2
    for i in range(cells):
        left, right = (i - 1) % cells, (i + 1) % cells
        yield f"x{i}' = v{i} & {spread(i)};"
        yield f"v{i}' = -x{i} + (x{left} - 2*x{i} + x{right})/3 - x{i}^3/5 & 0;"


def line(count):
    """Brusselators that diffuse along a line, 1 and 3 at both ends."""
    cells = count//2
    for i in range(cells):
        u0, v0 = (f"u{i-1}", f"v{i-1}") if i > 0 else ("1", "3")
        u1, v1 = (f"u{i+1}", f"v{i+1}") if i < cells - 1 else ("1", "3")
        yield (f"u{i}' = 1 + u{i}^2*v{i} - 4*u{i} + 2/5*({u0} - 2*u{i} + {u1})"
               f" & 1 + {spread(i)};")
        yield f"v{i}' = 3*u{i} - u{i}^2*v{i} + 2/5*({v0} - 2*v{i} + {v1}) & 3;"


def lorenz96(count):
    """Each variable is driven by 8 and carried on by its neighbours."""
    for i in range(count):
        yield (f"x{i}' = (x{(i+1) % count} - x{(i-2) % count})*x{(i-1) % count} - x{i} + 8"
               f" & 8 + {spread(i)};")


SYSTEMS = {"ring": ring, "line": line, "Lorenz-96": lorenz96}


class Run:
    """What one command took: seconds, MB, and the steps that it says it made."""

    def __init__(self, command):
        begin = time.perf_counter()
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                   text=True)
        said = process.stderr.read()
        _, status, used = os.wait4(process.pid, 0)
        self.seconds = time.perf_counter() - begin
        self.megabytes = used.ru_maxrss/1024
        if status != 0:
            sys.exit(f"{' '.join(map(str, command))}: {said}")
        self.steps = int(re.search(r"(\d+) steps?,", said).group(1))


def least(program, file, digits, end, jobs):
    command = [program, file, "--no-check", "--last", "--digits", str(digits), "--to", end,
               "--jobs", str(jobs)]
    return min((Run(command) for _ in range(RUNS)), key=lambda run: run.seconds)


def print_sizes(program, folder):
    print("| system | equations | start, seconds | a step, microseconds for each equation"
          " | memory, kB for each |\n|---|---|---|---|---|")
    for name, write in SYSTEMS.items():
        for count, end in zip(SIZES, ENDS[name]):
            file = folder / "system.varno"
            file.write_text("\n".join(write(count)) + "\n")
            start = least(program, file, DIGITS_OF_SIZES, SHORT, 1)
            whole = least(program, file, DIGITS_OF_SIZES, end, 1)
            step = (whole.seconds - start.seconds)/(whole.steps - start.steps)
            print(f"| {name} | {count} | {start.seconds:.3f} | {1e6*step/count:.2f}"
                  f" | {1024*whole.megabytes/count:.1f} |", flush=True)


def print_threads(program, folder):
    print("| system | digits | one | two | times as fast |\n|---|---|---|---|---|")
    for name, digits, end in SHARED:
        file = folder / "system.varno"
        file.write_text("\n".join(SYSTEMS[name](EQUATIONS_SHARED)) + "\n")
        one, two = (least(program, file, digits, end, jobs).seconds for jobs in (1, 2))
        print(f"| {name}, {EQUATIONS_SHARED} equations, to {end} | {digits} | {one:.3g} | {two:.3g}"
              f" | {one/two:.1f} |", flush=True)


def main(arguments):
    if len(arguments) != 1:
        sys.exit("Usage: large_systems.py VARNO_SOLVE")
    program = Path(arguments[0]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        print_sizes(program, Path(folder))
        print()
        print_threads(program, Path(folder))


if __name__ == "__main__":
    main(sys.argv[1:])
