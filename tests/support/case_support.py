"""What the checks of cases share: the table of the run at hand, independent ways to the same values,
and further runs of varno.

A check runs in the working folder of its case, where stdout.actual and stderr.actual lie. A row of the
table is a dictionary of column names, ORDER and TIME among them, and numbers.
"""

import decimal
import math
import os
import re
import subprocess
import sys
from decimal import Decimal
from fractions import Fraction
from pathlib import Path

decimal.getcontext().prec = 150

# The double nearest 0.1, which is the step of a run that sets none.
DEFAULT_STEP = Decimal(0.1)

def require(condition, message):
    if not condition:
        sys.exit(message)


def require_equal(what, actual, expected):
    require(actual == expected, f"{what}: expected {expected!r}, got {actual!r}")


# ---------------------------------------------------------------------------------------
# The run at hand


def stderr_lines():
    return Path("stderr.actual").read_text().splitlines()


def read_matrix(number=Decimal):
    """The numbers of stdout.actual line by line, without comments and blank lines."""
    with open("stdout.actual", encoding="latin-1") as file:
        lines = [line.split() for line in file if not line.startswith("#")]
    return [[number(text) for text in line] for line in lines if line]


def read_table(number=Decimal):
    with open("stdout.actual", encoding="latin-1") as file:
        header = file.readline()
    require(header.startswith("# "), f"unexpected header: {header!r}")
    names = header.split()[1:]
    return [dict(zip(names, line, strict=True)) for line in read_matrix(number)]


def values_of(row):
    """The columns of the variables."""
    return {name: value for name, value in row.items() if name not in ("ORDER", "TIME")}


def to_decimal(number):
    if isinstance(number, Fraction):
        return Decimal(number.numerator) / Decimal(number.denominator)
    return Decimal(number)


def require_close(what, actual, expected, tolerance):
    """Relative to the expected value, absolute below 1."""
    expected = to_decimal(expected)
    error = abs(actual - expected) / max(abs(expected), 1)
    require(error <= Decimal(tolerance), f"{what}: {actual}, exact {expected}, error {error:.3e}")


def require_within(what, actual, expected, tolerance):
    """The tolerance is absolute."""
    require(abs(actual - expected) <= tolerance,
            f"{what}: {actual} is not within {tolerance} of {expected}")


def require_rows(rows, tolerance, expected, least_rows=50):
    """Compares every row with expected(row), which gives some of its columns; absolutely."""
    require(len(rows) >= least_rows, f"only {len(rows)} rows")
    for row in rows:
        for name, value in expected(row).items():
            require_within(f"{name} at TIME {row['TIME']}", row[name], value, tolerance)


def require_constant(rows, tolerance, quantity, value):
    """Looks for a conserved quantity, the function `quantity` of a row."""
    require(len(rows) >= 50, f"only {len(rows)} rows")
    for row in rows:
        require_within(f"conserved quantity at TIME {row['TIME']}", quantity(row), value, tolerance)


def require_solution(exact, *, ahead=DEFAULT_STEP, last_time=1, tolerance="1e-10"):
    """Compares every row with the exact solution, which maps a time to the values by name.

    A row stands at the start of its step and carries the values at its end. So the values of
    every row are ahead of its time by the first step, unless that step was rejected.
    """
    rows = read_table()
    require(len(rows) > 1, "no table")
    require_equal("time of the last row", rows[-1]["TIME"], Decimal(last_time))
    for row in rows:
        solution = exact(row["TIME"] + ahead)
        require_equal("columns", sorted(values_of(row)), sorted(solution))
        for name, value in solution.items():
            require_close(f"{name} at {row['TIME']}", row[name], value, tolerance)


# ---------------------------------------------------------------------------------------
# Independent ways to the same values


def upward_zeros(rows, x, v):
    """The times, by the column clock, at which x passes 0 upwards; v is the derivative of x.

    Between two rows x is a cubic through both values and slopes.
    """
    zeros = []
    for a, b in zip(rows, rows[1:]):
        if not a[x] < 0 <= b[x]:
            continue
        h = b["clock"] - a["clock"]

        def cubic(s):
            return ((1 + 2*s)*(1 - s)**2*a[x] + s*(1 - s)**2*h*a[v]
                    + s**2*(3 - 2*s)*b[x] - s**2*(1 - s)*h*b[v])

        low, high = 0.0, 1.0
        for _ in range(60):
            middle = (low + high)/2
            low, high = (middle, high) if cubic(middle) < 0 else (low, middle)
        zeros.append(a["clock"] + low*h)
    return zeros


def runge_kutta(slopes, start, times, largest_step):
    """The classical method of order 4 for y' = slopes(y): yields y at each of the rising times."""
    time, y = 0.0, list(start)
    for end in times:
        steps = max(1, math.ceil((end - time)/largest_step))
        h = (end - time)/steps
        for _ in range(steps):
            k1 = slopes(y)
            k2 = slopes([a + h/2*b for a, b in zip(y, k1)])
            k3 = slopes([a + h/2*b for a, b in zip(y, k2)])
            k4 = slopes([a + h*b for a, b in zip(y, k3)])
            y = [a + h/6*(b1 + 2*b2 + 2*b3 + b4) for a, b1, b2, b3, b4 in zip(y, k1, k2, k3, k4)]
        time = end
        yield y


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
