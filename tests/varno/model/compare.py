#!/usr/bin/env python3
"""Compares varno with its model: every case below a folder, then inputs made at random.

Usage: compare.py PROGRAM CASES_FOLDER [--random COUNT] [--seed FIRST]

Standard output, standard error (without the time report) and exit status must be equal to the
byte. not_covered.txt names the cases that the model leaves out, each with the reason; a case that
it cannot run and that is not named there is an error, and so is a name without a case.

Ends with status 0 when all is equal, 1 when it is not.
"""

import argparse
import collections
import sys
from pathlib import Path

from cases import compare_case, compare_system, find_cases
from driver import with_deep_stack
from ends import NotModelled
from random_systems import RandomSystem

NOT_COVERED = Path(__file__).resolve().parent / "not_covered.txt"
DEFAULT_SYSTEMS = 150
EFFORT_OF_A_CASE = 1_500_000
EFFORT_OF_A_SYSTEM = 20_000


class Report:
    def __init__(self):
        self.errors = []
        self.compared = 0
        self.left_out = collections.Counter()  # by reason

    def error(self, text):
        self.errors.append(text)

    def take(self, name, compare):
        """Calls compare(); returns the reason why the model left the run out, if it did."""
        try:
            differences = compare()
        except NotModelled as reason:
            return str(reason)
        self.compared += 1
        if differences:
            self.error("\n".join([f"{name}: program and model differ", *differences]))
        return None


def read_not_covered(path=NOT_COVERED):
    """Reasons by names of cases."""
    lines = path.read_text(encoding="utf-8").splitlines()
    pairs = (line.partition(": ") for line in lines if line and not line.startswith("#"))
    return {name: reason for name, _, reason in pairs}


def compare_cases(program, root, not_covered, effort=EFFORT_OF_A_CASE):
    report = Report()
    cases = find_cases(root)
    for name in sorted(not_covered.keys() - cases.keys()):
        report.error(f"{name}: listed as not covered, but there is no such case")
    for name, folder in cases.items():
        if name in not_covered:
            report.left_out[not_covered[name]] += 1
            continue
        reason = report.take(name, lambda: compare_case(program, folder, effort))
        if reason is not None:
            report.error(f"{name}: not covered ({reason}) and not listed in {NOT_COVERED.name}")
    return report


def compare_systems(program, seeds, effort=EFFORT_OF_A_SYSTEM):
    report = Report()
    for seed in seeds:
        system = RandomSystem(seed)
        reason = report.take(
            f"system of seed {seed}, {system.describe()}",
            lambda: compare_system(program, system, effort))
        if reason is not None:
            report.left_out[reason] += 1
    return report


def show(title, report):
    print(f"{title}: {report.compared} compared, {len(report.errors)} errors")
    for reason, count in report.left_out.most_common():
        print(f"  {count} left out: {reason}")
    for error in report.errors:
        print(error)


def main():
    parser = argparse.ArgumentParser(description="compares varno with its model")
    parser.add_argument("program", type=Path)
    parser.add_argument("cases", type=Path)
    parser.add_argument("--random", type=int, default=DEFAULT_SYSTEMS, metavar="COUNT")
    parser.add_argument("--seed", type=int, default=0, metavar="FIRST")
    arguments = parser.parse_args()
    program = arguments.program.resolve()

    seeds = range(arguments.seed, arguments.seed + arguments.random)
    of_cases, of_systems = with_deep_stack(lambda: (
        compare_cases(program, arguments.cases.resolve(), read_not_covered()),
        compare_systems(program, seeds)))
    show("cases", of_cases)
    show("random systems", of_systems)
    return 1 if of_cases.errors or of_systems.errors else 0


if __name__ == "__main__":
    sys.exit(main())
