#!/usr/bin/env python3
"""The comparison with closed forms accepts what is right and nothing else.

The digits of pi, e and sqrt(2) are those of any table.
"""

import contextlib
import io
import os
import sys
import unittest
from pathlib import Path
from unittest import mock

try:
    import mpmath
except ImportError:
    # Debian installs mpmath for the system's Python only.
    if sys.executable == "/usr/bin/python3":
        raise
    os.execv("/usr/bin/python3", ["/usr/bin/python3", *sys.argv])

sys.path.insert(0, str(Path(__file__).resolve().parent / "support"))
import closed_form

TABLE = """\
# t  x  y
0    3.14159265358979e+00   0
0.5  3.14159265358979e+00  -1.57e+00
"""


def run(text, *arguments):
    """The exit status, and what the command says."""
    output = io.StringIO()
    with mock.patch("sys.stdin", io.StringIO(text)), contextlib.redirect_stdout(output), \
            contextlib.redirect_stderr(output):
        try:
            status = closed_form.main(arguments)
        except SystemExit as end:
            status = end.code
    return status, output.getvalue()


class ClosedFormTest(unittest.TestCase):
    def assert_holds(self, text, *arguments):
        self.assertEqual(run(text, *arguments), (0, ""))

    def assert_fails(self, message, text, *arguments):
        status, output = run(text, *arguments)
        self.assertEqual(status, 1, output)
        self.assertIn(message, output)
        self.assertNotIn("Traceback", output)

    # Formats

    def test_table(self):
        self.assert_holds(TABLE, "x=pi", "y=-pi*t")

    def test_csv(self):
        self.assert_holds("t,x,y'\n0,3.142e+00,0\n0.5,3.142e+00,-1.57e+00\n", "x=pi", "y'=-pi*t")

    def test_json(self):
        self.assert_holds(
            '{"t":"0","x":"3.142e+00"}\n{"t":"1","x":"3.142e+00"}\n', "x=pi", "--rows", "2")

    def test_json_with_numbers_instead_of_strings(self):
        self.assert_fails("no string", '{"t":"0","x":3.142}\n', "x=pi")

    def test_comments_of_a_table_are_no_rows(self):
        self.assert_holds("# t  x\n# event hit 0\n1  3e+00\n", "x=3", "--rows", "1")

    def test_nothing(self):
        self.assert_fails("no rows", "", "x=pi")

    def test_header_alone(self):
        self.assert_fails("0 rows instead of at least one", "# t  x\n", "x=pi")

    def test_row_with_a_field_too_few(self):
        self.assert_fails("2 fields instead of 3", "# t  x  y\n0  1e+00\n", "x=1", "y=1")

    # Columns and rows

    def test_columns_must_be_these_in_this_order(self):
        self.assert_fails("columns", TABLE, "x=pi")
        self.assert_fails("columns", TABLE, "y=-pi*t", "x=pi")
        self.assert_fails("columns", TABLE, "x=pi", "z=-pi*t")

    def test_number_of_rows(self):
        self.assert_holds(TABLE, "--rows", "2", "x=pi", "y=-pi*t")
        self.assert_fails("2 rows instead of 3", TABLE, "--rows", "3", "x=pi", "y=-pi*t")

    # Numbers

    def one(self, number):
        return f"# t  x\n1  {number}\n"

    def test_one_unit_of_the_last_digit(self):
        self.assert_holds(self.one("3.1415e+00"), "x=pi")
        self.assert_holds(self.one("3.1416e+00"), "x=pi")
        self.assert_fails("units", self.one("3.1414e+00"), "x=pi")
        self.assert_fails("units", self.one("3.1417e+00"), "x=pi")
        self.assert_fails("units", self.one("-3.1416e+00"), "x=pi")
        self.assert_fails("units", self.one("3.1416e+01"), "x=pi")
        self.assert_holds(self.one("3.1417e+00"), "--units", "2", "x=pi")

    def test_hundreds_of_digits(self):
        # 1/7 = 0.142857...
        digits = "142857" * 60
        self.assert_holds(self.one(f"1.{digits[1:]}e-01"), "--digits", "360", "x=1/7")
        wrong = digits[:-1] + "4"
        self.assert_fails("units", self.one(f"1.{wrong[1:]}e-01"), "x=1/7")

    def test_number_of_digits(self):
        self.assert_holds(self.one("3.142e+00"), "--digits", "4", "x=pi")
        self.assert_fails("4 digits instead of 5", self.one("3.142e+00"), "--digits", "5", "x=pi")
        self.assert_holds(self.one("3e+00"), "--digits", "1", "x=pi")

    def test_exact_zero(self):
        self.assert_holds(self.one("0"), "--digits", "9", "x=t-1")
        self.assert_fails("not 0", self.one("0"), "x=1e-300")

    def test_zero_to_a_unit(self):
        self.assert_holds(self.one("0e-30"), "x=0")
        self.assert_holds(self.one("0e-30"), "x=1e-31")
        self.assert_fails("units", self.one("0e-30"), "x=-1.1e-30")

    def test_nan(self):
        self.assert_holds(self.one("nan"), "x=nan")
        self.assert_fails("nan", self.one("nan"), "x=1")
        self.assert_fails("nan", self.one("1e+00"), "x=nan")

    def test_what_is_no_number(self):
        for text in ("inf", "1.5e", "--", "0x1", "1,5", "+1e+00", "1_0", "0e+9223372036854775778"):
            self.assert_fails("no number", self.one(text), "x=1")

    def test_complex_value(self):
        self.assert_fails("complex", self.one("1e+00"), "x=sqrt(-1)")

    # Times

    def test_rounded_times_are_not_exact(self):
        text = "# t  x\n0.333333333333333  1.00000000000000e+00\n"
        self.assert_holds(text, "--times", "1/3", "x=3*t")
        # exp(30/3) moves by 30 units when a third moves by its last digit.
        text = "# t  x\n0.333333333333333  2.20264657948067e+04\n"
        self.assert_holds(text, "--times", "1/3", "x=exp(30*t)")
        self.assert_fails("units", text, "x=exp(30*t)")

    def test_times_are_compared(self):
        text = "# t  x\n0  1.0e+00\n0.1  1.0e+00\n"
        self.assert_holds(text, "--times", "k/10", "x=1")
        self.assert_holds(text, "--times", "[0, 0.1][k]", "x=1")
        self.assert_fails("row 1, t", text, "--times", "k/10 + 1e-20", "x=1")
        self.assert_fails("row 1, t", text, "--times", "k/5", "x=1")
        # A time with all the digits that numbers have may be rounded.
        text = "# t  x\n0  1e+00\n0.1  1e+00\n"
        self.assert_holds(text, "--times", "k*0.13", "x=1")

    # Expressions

    def test_literals_are_exact(self):
        self.assert_holds(self.one("1." + "0" * 49 + "e-01"), "x=0.1")
        self.assert_holds(self.one("3." + "3" * 49 + "e-01"), "x=1/3")

    def test_precision_is_not_left_behind(self):
        before = mpmath.mp.prec
        self.assert_holds(self.one("1.0e+00"), "x=1")
        self.assertEqual(mpmath.mp.prec, before)

    def test_definitions(self):
        self.assert_holds(self.one("2.718281828e+00"), "--define", "a=1/2",
                          "--define", "f=lambda u: exp(2*a*u)", "x=f(t)")

    def test_loss_of_digits_is_noticed(self):
        self.assert_fails("loses digits", self.one("1.0000e+00"), "x=(1e100+t)-1e100")
        self.assert_fails("loses digits", self.one("0"), "x=(1e100+t)-1e100")

    def test_doubles_among_the_digits_are_noticed(self):
        self.assert_fails("units", self.one("1.0000000000000000000000e-01"),
                          "x=mpf(float(0.1))")

    def test_wrong_expression_ends_with_a_message(self):
        status, output = run(self.one("1e+00"), "x=1 +")
        self.assertEqual(status, 2)
        self.assertIn("no expression", output)


if __name__ == "__main__":
    unittest.main()
