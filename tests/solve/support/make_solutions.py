#!/usr/bin/env python3
"""Writes tests/solve/data/solutions.txt: special functions that solve differential equations, by mpmath.

    python3 tests/solve/support/make_solutions.py > tests/solve/data/solutions.txt

Each line is "name value". Every value is computed twice, at two working precisions, and both must
agree to all digits written. Made by mpmath 1.2.1.
"""

import mpmath
from mpmath import mp, mpf

DIGITS = 310


def airy_riccati(t):
    """y' = t - y^2, y(0) = 0: y = w'/w with w'' = t w, w(0) = 1, w'(0) = 0."""
    a, b = mpmath.airybi(0, derivative=1), -mpmath.airyai(0, derivative=1)
    w = a * mpmath.airyai(t) + b * mpmath.airybi(t)
    return (a * mpmath.airyai(t, derivative=1) + b * mpmath.airybi(t, derivative=1)) / w


def bessel_riccati(t):
    """y' = t^2 + y^2, y(0) = 0."""
    x = t * t / 2
    return t * mpmath.besselj(mpf(3) / 4, x) / mpmath.besselj(mpf(-1) / 4, x)


def values():
    third, quarter = mpf(1) / 3, mpf(1) / 4
    yield "airy_riccati(2)", airy_riccati(mpf(2))
    yield "airy_riccati(-1)", airy_riccati(mpf(-1))
    yield "bessel_riccati(1)", bessel_riccati(mpf(1))
    yield "bessel_riccati(15/8)", bessel_riccati(mpf(15) / 8)
    for name in "sn", "cn", "dn":
        yield f"{name}(7|1/3)", mpmath.ellipfun(name, mpf(7), m=third)
    # a'' = -sin a, a(0) = 0, a'(0) = 1: sin(a/2) = k sn(t|k^2), a' = 2 k cn(t|k^2), k = 1/2
    yield "pendulum_angle(9)", 2 * mpmath.asin(mpmath.ellipfun("sn", mpf(9), m=quarter) / 2)
    yield "pendulum_speed(9)", mpmath.ellipfun("cn", mpf(9), m=quarter)


def main():
    print("# name value, by make_solutions.py")
    mp.dps = DIGITS + 30
    first = list(values())
    mp.dps = 2 * DIGITS + 100
    for (name, a), (_, b) in zip(first, values()):
        assert abs(a - b) <= abs(b) * mpf(10) ** -DIGITS, name
        print(name, mpmath.nstr(b, DIGITS, min_fixed=1, max_fixed=0))


if __name__ == "__main__":
    main()
