#!/usr/bin/env python3
"""Writes tests/solve/data/taylor_terms.txt: Taylor coefficients of the elementary functions.

    python3 tests/solve/support/make_taylor_terms.py > tests/solve/data/taylor_terms.txt

Each line is "function point k value" with value = f^(k)(point) / k! by mpmath's `taylor`, which differentiates
numerically. Every value is computed twice, at two working precisions, and both must agree to all digits
written. Made by mpmath 1.2.1.
"""

import mpmath
from mpmath import mp, mpf

DIGITS = 310
ORDER = 8

FUNCTIONS = {
    # function: points. 0, tiny, negative and large wherever the function has a value there.
    "sqrt": ["1/1000000000000000000000000000000", "7/5", "1000000000000000000000001/7"],
    "cbrt": ["1/1000000000000000000000000000000", "7/5", "1000000000000000000000001/7"],
    "exp": ["0", "1/1000000000000000000000000000000", "-22/7", "1001/3"],
    "ln": ["1/1000000000000000000000000000000", "7/5", "1000000000000000000000001/7"],
    "sin": ["0", "1/1000000000000000000000000000000", "-22/7", "100000001/3"],
    "cos": ["0", "1/1000000000000000000000000000000", "-22/7", "100000001/3"],
    "tan": ["0", "1/1000000000000000000000000000000", "-22/7", "100000001/3"],
    "cotan": ["1/1000000000000000000000000000000", "-11/7", "100000001/3"],
    "asin": ["0", "1/1000000000000000000000000000000", "-3/4", "999999/1000000"],
    "acos": ["0", "1/1000000000000000000000000000000", "-3/4", "999999/1000000"],
    "atan": ["0", "1/1000000000000000000000000000000", "-22/7", "100000001/3"],
    "acotan": ["1/1000000000000000000000000000000", "-22/7", "100000001/3"],
    "sinh": ["0", "1/1000000000000000000000000000000", "-22/7", "1001/3"],
    "cosh": ["0", "1/1000000000000000000000000000000", "-22/7", "1001/3"],
    "tanh": ["0", "1/1000000000000000000000000000000", "-22/7", "31/3"],
    "cotanh": ["1/1000000000000000000000000000000", "-22/7", "31/3"],
    "asinh": ["0", "1/1000000000000000000000000000000", "-22/7", "100000001/3"],
    "acosh": ["1000001/1000000", "22/7", "100000001/3"],
    "atanh": ["0", "1/1000000000000000000000000000000", "-3/4", "999999/1000000"],
    "argcotanh": ["1000001/1000000", "-22/7", "100000001/3"],
    "erf": ["0", "1/1000000000000000000000000000000", "-22/7", "31/3"],
}


# What has another name in mpmath
SYNONYMS = {"cotan": "cot", "cotanh": "coth", "argcotanh": "acoth"}


def evaluated(name, x):
    if name == "acotan":
        return mpmath.atan(1 / x)
    return getattr(mpmath, SYNONYMS.get(name, name))(x)


def coefficients(name, point, digits):
    mp.dps = digits
    numerator, _, denominator = point.partition("/")
    x = mpf(int(numerator)) / int(denominator or 1)
    return mpmath.taylor(lambda u: evaluated(name, u), x, ORDER)


def text(value):
    return mpmath.nstr(value.real, DIGITS, min_fixed=1, max_fixed=0)


def main():
    print("# function point k f^(k)(point)/k!, by make_taylor_terms.py")
    for name, points in FUNCTIONS.items():
        for point in points:
            first = coefficients(name, point, 2 * DIGITS + 400)
            second = coefficients(name, point, 3 * DIGITS + 900)
            largest = max(abs(value) for value in second)
            for k, (a, b) in enumerate(zip(first, second)):
                assert abs(a - b) <= max(abs(b), largest * mpf(10) ** -300) * mpf(10) ** -DIGITS, (name, point, k)
                # What numerical differentiation leaves of a term that is 0
                print(name, point, k, "0" if abs(b) < largest * mpf(10) ** -300 else text(b))


if __name__ == "__main__":
    main()
