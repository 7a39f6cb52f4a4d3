#!/usr/bin/python3
"""One of the problems of problems.py by mpmath's odefun.

Usage: odefun.py PROBLEM DIGITS TOLERANCE prints seconds of processor time, without those that
Python needs to start, and the states at the end. It computes with so many digits.
"""

import sys
import time

import mpmath

from problems import PROBLEMS


def main(name, digits, tolerance):
    problem = next(problem for problem in PROBLEMS if problem.name == name)
    mpmath.mp.dps = int(digits)
    begin = time.process_time()
    solution = mpmath.odefun(problem.derivatives, 0, problem.start(), tol=mpmath.mpf(tolerance))
    states = solution(problem.end)
    print(time.process_time() - begin, *(mpmath.nstr(state, int(digits)) for state in states))


if __name__ == "__main__":
    main(*sys.argv[1:])
