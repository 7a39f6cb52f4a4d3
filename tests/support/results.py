"""What the checks of cases share: reading the table, and independent ways to the same values.

A row is a dictionary of column names, "ORDER" and "TIME" among them, and numbers.
"""

import math
import sys


def read_matrix(number=float):
    """The numbers of stdout.actual line by line, without comments and blank lines."""
    with open("stdout.actual", encoding="latin-1") as file:
        lines = [line.split() for line in file if not line.startswith("#")]
    return [[number(text) for text in line] for line in lines if line]


def read_table(number=float):
    with open("stdout.actual", encoding="latin-1") as file:
        names = file.readline().split()[1:]
    return [dict(zip(names, line, strict=True)) for line in read_matrix(number)]


def expect(holds, message):
    if not holds:
        sys.exit(message)


def expect_close(what, actual, expected, tolerance):
    """The tolerance is absolute."""
    expect(abs(actual - expected) <= tolerance,
           f"{what}: {actual} is not within {tolerance} of {expected}")


def expect_rows(rows, tolerance, expected, least_rows=50):
    """Compares every row with expected(row), which gives some of its columns."""
    expect(len(rows) >= least_rows, f"only {len(rows)} rows")
    for row in rows:
        for name, value in expected(row).items():
            expect_close(f"{name} at TIME {row['TIME']}", row[name], value, tolerance)


def expect_constant(rows, tolerance, quantity, value):
    """Looks for a conserved quantity, the function `quantity` of a row."""
    expect(len(rows) >= 50, f"only {len(rows)} rows")
    for row in rows:
        expect_close(f"conserved quantity at TIME {row['TIME']}", quantity(row), value, tolerance)


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
