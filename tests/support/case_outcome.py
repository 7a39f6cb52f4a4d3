"""What the checks of cases share: the table of the run at hand, and further runs of varno.

A check runs in the working folder of its case, where stdout.actual and stderr.actual lie.
"""

import decimal
import os
import re
import subprocess
import sys
from collections import namedtuple
from decimal import Decimal
from fractions import Fraction
from pathlib import Path

decimal.getcontext().prec = 150

# The double nearest 0.1, which is the step of a run that sets none.
DEFAULT_STEP = Decimal(0.1)

Row = namedtuple("Row", "order time values")


def require(condition, message):
    if not condition:
        sys.exit(message)


def require_equal(what, actual, expected):
    require(actual == expected, f"{what}: expected {expected!r}, got {actual!r}")


# ---------------------------------------------------------------------------------------
# The run at hand


def stderr_lines():
    return Path("stderr.actual").read_text().splitlines()


def read_table():
    """The rows of a table with the column ORDER; values by name."""
    header, *lines = Path("stdout.actual").read_text().splitlines()
    require(header.startswith("# ORDER TIME "), f"unexpected header: {header!r}")
    names = header.split()[3:]
    rows = []
    for line in lines:
        order, time, *values = line.split()
        require_equal("columns", len(values), len(names))
        rows.append(Row(int(order), Decimal(time), dict(zip(names, map(Decimal, values)))))
    return rows


def to_decimal(number):
    if isinstance(number, Fraction):
        return Decimal(number.numerator) / Decimal(number.denominator)
    return Decimal(number)


def require_close(what, actual, expected, tolerance):
    """Relative to the expected value, absolute below 1."""
    expected = to_decimal(expected)
    error = abs(actual - expected) / max(abs(expected), 1)
    require(error <= Decimal(tolerance), f"{what}: {actual}, exact {expected}, error {error:.3e}")


def require_solution(exact, *, ahead=DEFAULT_STEP, last_time=1, tolerance="1e-10"):
    """Compares every row with the exact solution, which maps a time to the values by name.

    A row stands at the start of its step and carries the values at its end. So the values of
    every row are ahead of its time by the first step, unless that step was rejected.
    """
    rows = read_table()
    require(len(rows) > 1, "no table")
    require_equal("time of the last row", rows[-1].time, Decimal(last_time))
    for row in rows:
        solution = exact(row.time + ahead)
        require_equal("columns", sorted(row.values), sorted(solution))
        for name, value in solution.items():
            require_close(f"{name} at {row.time}", row.values[name], value, tolerance)


# ---------------------------------------------------------------------------------------
# Further runs


def run(*arguments, text=True, **options):
    """Runs varno; options are those of subprocess.run."""
    options = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, **options}
    return subprocess.run(
        [os.environ["VARNO_PROGRAM"], *arguments], stderr=subprocess.PIPE, text=text, **options)


def usage_value(usage, option):
    """The value that the usage text shows for an option, as in "(default 34)"."""
    entry = usage.split(f"\n  -{option}  ", 1)[1]
    return re.search(r"\(def(?:ault:?|\.) (.*?)\)", entry)[1]
