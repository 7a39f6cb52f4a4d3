#!/usr/bin/env python3
"""Compares varno with its model on all cases and on some systems made at random.

Usage: model_test.py PROGRAM CASES_FOLDER

A comparison that cannot fail proves nothing: with one rule of the model broken, it must.
"""

import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.path.insert(0, str(Path(__file__).resolve().parent / "model"))

import compare
import functions
import nodes
import number_format
from driver import with_deep_stack
from random_systems import RandomSystem

PROGRAM, CASES = (Path(argument).resolve() for argument in sys.argv[1:3])
del sys.argv[1:3]

SYSTEMS = range(50)
FEW_SYSTEMS = range(25)
LEAST_SHARE_COMPARED = 0.7


class AgreementTest(unittest.TestCase):
    def assert_agreement(self, report):
        if report.errors:
            self.fail("\n\n".join(report.errors))

    def test_cases(self):
        report = with_deep_stack(
            lambda: compare.compare_cases(PROGRAM, CASES, compare.read_not_covered()))
        self.assert_agreement(report)

    def test_random_systems(self):
        report = with_deep_stack(lambda: compare.compare_systems(PROGRAM, SYSTEMS))
        self.assert_agreement(report)
        self.assertGreaterEqual(
            report.compared, LEAST_SHARE_COMPARED*len(SYSTEMS), report.left_out)


class ComparisonTest(unittest.TestCase):
    """The comparison finds what it is there for."""

    def compare_few(self):
        return compare.compare_systems(PROGRAM, FEW_SYSTEMS)

    def assert_caught(self, owner, name, broken):
        with mock.patch.object(owner, name, broken):
            self.assertNotEqual(self.compare_few().errors, [])

    def test_intact_model_agrees(self):
        self.assertEqual(self.compare_few().errors, [])

    def test_rule_of_the_terms_is_compared(self):
        # The run of small terms ends one term too late.
        original = nodes.Differential.sum_result

        def broken(variable, out):
            variable.record.zero_terms += 1
            original(variable, out)
            variable.record.zero_terms -= 1

        self.assert_caught(nodes.Differential, "sum_result", broken)

    def test_rounding_of_numbers_is_compared(self):
        self.assert_caught(number_format, "_round", lambda digits, width: digits)

    def test_rule_of_a_function_is_compared(self):
        # cosh without its shortcut for negative arguments
        def broken(record, result, x):
            functions._hyperbolic(record, result, x, record.one, -1)

        with mock.patch.dict(functions.BY_NAME, cosh=broken):
            system = RandomSystem(0)
            system.text = b"y' = 1 & cosh(-1);"
            system.arguments, system.settings = ["-t", "0", "input.varno"], None
            self.assertNotEqual(compare.compare_system(PROGRAM, system), [])

    def compare_folder(self, not_covered, **inputs):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in inputs.items():
                case = Path(folder) / "subject" / name
                case.mkdir(parents=True)
                (case / "input.varno").write_text(text)
            return compare.compare_cases(PROGRAM, Path(folder), not_covered)

    def test_case_that_cannot_be_compared_must_be_listed(self):
        text = "y' = 1e99999999999999999999;"
        [error] = self.compare_folder({}, case=text).errors
        self.assertIn("case: not covered", error)
        self.assertEqual(self.compare_folder({"case": "a reason"}, case=text).errors, [])

    def test_listed_case_must_exist(self):
        [error] = self.compare_folder({"gone": "a reason"}, case="y' = 1;").errors
        self.assertIn("gone: listed", error)


if __name__ == "__main__":
    unittest.main()
