#!/usr/bin/python3
"""Compares rows of varno-solve with a closed form, digit by digit.

    closed_form.py [OPTIONS] NAME=EXPRESSION... < stdout.actual

Reads a table, csv or json (it sees which) and holds every printed number against the exact value of
its column: it must not differ by more than one unit of its last printed digit. Ends with status 0
and says nothing when all rows hold; else it names the numbers that do not, and ends with status 1.

There must be one NAME=EXPRESSION for each column, in their order, as the program prints them:

    x='cos(t)' "x'"='-sin(t)' e=1

An expression is Python with the functions and constants of mpmath (sin, exp, sqrt, ellipfun, airyai,
besselj, quad, findroot, pi, e, ...). `t` is the time of the row, `k` the number of the row from 0.
Numbers are exactly what is written: 1/3 is a third and 0.1 a tenth, not the doubles next to them.
(They are integers only as an index and as arguments of range.) nan stands for "no value here".

Options:
  --times EXPRESSION   the exact time of row k: `k/10`, `10*pi*k/100`, `[0, 1, pi][k]`. The
                       printed times are compared with it. Without it the printed times are taken
                       as exact, which is wrong for rounded ones such as 0.333333333333333.
  --rows N             there must be exactly N rows; without it at least one
  --digits D           every number must have exactly D digits (but 0, 0e-30 and nan)
  --units U            the largest difference, in units of the last digit (1)
  --define NAME=EXPRESSION
                       a constant for the expressions, or a function as in
                       --define 'f=lambda t: exp(-t)'; repeatable, later ones may use earlier ones

What the kinds of numbers must fulfil:
  1.50e+00   |printed - exact| <= U units of the last printed digit
  0          the exact value is 0
  0e-30      |exact| <= U * 1e-30
  nan        the exact value is nan
A time must be exact; with D digits (as many as --digits says, else as the longest number of the
rows has) it may be rounded, and is held to one unit of its last digit.

Every expression is evaluated twice, with some more and with far more digits than the rows have;
where the two disagree, the expression loses too many digits to judge by, and that is a failure, too.

As a module:

    import closed_form
    faults = closed_form.compare(text, {"x": lambda t, k: mpmath.cos(t)}, digits=30)

Needs mpmath, as Debian's python3-mpmath installs it; hence the interpreter in the first line.
"""

import argparse
import ast
import csv
import json
import re
import sys
from fractions import Fraction

import mpmath

# An exponent with more digits is garbage, and its power of ten would take for ever.
NUMBER = re.compile(r"-?(\d+)(?:\.(\d+))?(?:e([+-]\d{1,7}))?")
MOST_FAULTS_SHOWN = 20


class Unreadable(Exception):
    """The rows are not in any of the formats."""


# ---------------------------------------------------------------------------------------
# Reading


def read_table(lines):
    if not lines[0].startswith("# t"):
        raise Unreadable(f"no header line: {lines[0]!r}")
    rows = [line.split() for line in lines[1:] if not line.startswith("#") and line.strip()]
    return lines[0].split()[1:], rows


def read_csv(lines):
    header, *rows = csv.reader(lines)
    return header, rows


def read_json(lines):
    objects = [json.loads(line) for line in lines]
    header = list(objects[0])
    for number, row in enumerate(objects):
        if list(row) != header:
            raise Unreadable(f"row {number}: fields {list(row)} instead of {header}")
        if not all(isinstance(value, str) for value in row.values()):
            raise Unreadable(f"row {number}: a number that is no string")
    return header, [list(row.values()) for row in objects]


def read(text):
    """The names of the columns, t first, and the rows as lists of texts."""
    lines = text.splitlines()
    if not lines:
        raise Unreadable("no rows at all")
    readers = {"#": read_table, "{": read_json}
    header, rows = readers.get(lines[0][0], read_csv)(lines)
    for number, row in enumerate(rows):
        if len(row) != len(header):
            raise Unreadable(f"row {number}: {len(row)} fields instead of {len(header)}: {row}")
    return header, rows


# ---------------------------------------------------------------------------------------
# Numbers


class Printed:
    """A number as it was printed."""

    def __init__(self, text):
        match = NUMBER.fullmatch(text)
        if not match and text != "nan":
            raise Unreadable(f"no number: {text!r}")
        self.text = text
        self.is_nan = text == "nan"
        if self.is_nan:
            return
        whole, places, exponent = match.groups()
        places = places or ""
        self.value = Fraction(text)
        self.is_exact_zero = text == "0"
        self.is_zero = self.value == 0
        #: how many significant digits are printed
        self.digits = len((whole + places).lstrip("0"))
        #: one in the last printed digit
        self.unit = Fraction(10) ** (int(exponent or 0) - len(places))


def to_mpf(fraction):
    return mpmath.mpf(fraction.numerator) / fraction.denominator


def differs(printed, exact, units):
    """Says why a printed number is wrong; None when it is right."""
    if printed.is_nan or mpmath.isnan(exact):
        return None if printed.is_nan and mpmath.isnan(exact) else "not both nan"
    if not mpmath.isfinite(exact):
        return "the exact value is infinite"
    if printed.is_exact_zero:
        return None if exact == 0 else "the exact value is not 0"
    difference = abs(to_mpf(printed.value) - exact) / to_mpf(printed.unit)
    if difference <= units:
        return None
    return f"{mpmath.nstr(difference, 5)} units of the last digit"


class Reference:
    """Exact values, each computed with two working precisions that must agree."""

    def __init__(self, digits):
        self.digits = digits
        self.low = digits + 30
        self.high = 2 * digits + 200

    def value(self, function, *arguments):
        """arguments: functions without arguments, evaluated at the working precision, too."""
        values = []
        for working in (self.low, self.high):
            with mpmath.workdps(working):
                values.append(mpmath.mpmathify(function(*(make() for make in arguments))))
        low, high = values
        if mpmath.isnan(low) and mpmath.isnan(high):
            return high
        if isinstance(high, mpmath.mpc):
            raise ArithmeticError(f"a complex number, {mpmath.nstr(high, 10)}")
        with mpmath.workdps(self.high):
            # Near a zero the digits are lost against the terms of the expression, whose size is
            # not known; what is left must be small against 1 then.
            allowed = mpmath.mpf(10) ** -(self.digits + 5) * max(abs(high), mpmath.mpf(10) ** -5)
            if not abs(low - high) <= allowed:
                raise ArithmeticError(
                    f"the expression loses digits: {mpmath.nstr(low, 20)}, {mpmath.nstr(high, 20)}")
        return high


# ---------------------------------------------------------------------------------------
# Comparing


def longest_number(rows):
    """The digits of the longest number, the times left aside."""
    numbers = [field for row in rows for field in row[1:] if NUMBER.fullmatch(field)]
    return max((Printed(field).digits for field in numbers), default=0)


def compare(text, columns, times=None, rows=None, digits=None, units=1):
    """Compares rows with exact values; returns the list of faults, empty when all is right.

    text:    what the program printed
    columns: dictionary from the name of a column to a function of t and k, in their order
    times:   function of k, the exact time of row k; None: the printed ones are exact
    rows, digits, units: as the options of the command
    """
    try:
        header, fields = read(text)
    except Unreadable as problem:
        return [str(problem)]
    if header != ["t", *columns]:
        return [f"columns {header} instead of {['t', *columns]}"]
    if not fields or (rows is not None and len(fields) != rows):
        return [f"{len(fields)} rows instead of {rows if rows is not None else 'at least one'}"]

    reference = Reference(max(len(field) for row in fields for field in row))
    faults = []

    longest = digits or longest_number(fields)

    def check(place, field, is_value, function, *arguments):
        try:
            printed = Printed(field)
            exact = reference.value(function, *arguments)
        except (Unreadable, ArithmeticError, ValueError) as problem:
            faults.append(f"{place}: {field}: {problem}")
            return
        with mpmath.workdps(reference.high):
            allowed = units if is_value or printed.digits >= longest else 0
            problem = differs(printed, exact, allowed)
        if problem:
            shown = mpmath.nstr(exact, min(reference.digits, 60) + 5)
            faults.append(f"{place}: {field} is wrong, exact is {shown}: {problem}")
        if (is_value and digits is not None and not printed.is_nan and not printed.is_zero
                and printed.digits != digits):
            faults.append(f"{place}: {field} has {printed.digits} digits instead of {digits}")

    for k, row in enumerate(fields):
        if times is None:
            def time(row=row):
                return to_mpf(Fraction(row[0]))
        else:
            def time(k=k):
                return mpmath.mpmathify(times(k))
            check(f"row {k}, t", row[0], False, time)
        for (name, function), field in zip(columns.items(), row[1:]):
            check(f"row {k} (t = {row[0]}), {name}", field, True,
                  lambda t, k=k, function=function: function(t, k), time)
    return faults


# ---------------------------------------------------------------------------------------
# Command


def split_assignment(text):
    name, equals, expression = text.partition("=")
    if not equals or not name or not expression:
        raise argparse.ArgumentTypeError(f"NAME=EXPRESSION expected, not {text!r}")
    return name, expression


def namespace(definitions):
    """What expressions can use. Definitions are evaluated anew for each precision."""
    names = {name: getattr(mpmath, name) for name in dir(mpmath) if not name.startswith("_")}
    names.update(abs=abs, min=min, max=max, sum=sum, range=range, len=len, int=int, float=float)
    names["nan"] = mpmath.nan
    for name, code in definitions:
        names[name] = eval(code, names)
    return names


class ExactLiterals(ast.NodeTransformer):
    """Makes mpmath's numbers of the literals of an expression, from their text."""

    def __init__(self, source):
        self.source = source

    def visit_Constant(self, node):
        if isinstance(node.value, bool) or not isinstance(node.value, (int, float)):
            return node
        text = ast.get_source_segment(self.source, node)
        return ast.Call(ast.Name("mpf", ast.Load()), [ast.Constant(text)], [])

    def visit_Subscript(self, node):
        node.value = self.visit(node.value)
        return node

    def visit_Call(self, node):
        if isinstance(node.func, ast.Name) and node.func.id == "range":
            return node
        return self.generic_visit(node)


def compile_exactly(text):
    try:
        tree = ExactLiterals(text).visit(ast.parse(text, mode="eval"))
    except SyntaxError as problem:
        raise argparse.ArgumentTypeError(f"no expression: {text!r}: {problem}")
    return compile(ast.fix_missing_locations(tree), text, "eval")


def compile_expression(text, definitions):
    """A function of t and k."""
    code = compile_exactly(text.strip())
    codes = [(name, compile_exactly(value.strip())) for name, value in definitions]
    cache = {}

    def evaluate(t, k):
        precision = mpmath.mp.prec
        if precision not in cache:
            cache[precision] = namespace(codes)
        return eval(code, {**cache[precision], "t": t, "k": k})
    return evaluate


def main(arguments):
    parser = argparse.ArgumentParser(
        description="Compares rows of varno-solve with a closed form.",
        epilog="The head of this file tells the rest.", allow_abbrev=False)
    parser.add_argument("columns", nargs="+", type=split_assignment, metavar="NAME=EXPRESSION")
    parser.add_argument("--times", metavar="EXPRESSION")
    parser.add_argument("--rows", type=int)
    parser.add_argument("--digits", type=int)
    parser.add_argument("--units", type=Fraction, default=Fraction(1))
    parser.add_argument("--define", action="append", default=[], type=split_assignment,
                        metavar="NAME=EXPRESSION")
    options = parser.parse_args(arguments)

    try:
        columns = {name: compile_expression(text, options.define) for name, text in options.columns}
        time = compile_expression(options.times or "t", options.define)
    except argparse.ArgumentTypeError as problem:
        parser.error(str(problem))

    def times(k):
        return time(None, k)

    faults = compare(sys.stdin.read(), columns, times=times if options.times else None,
                     rows=options.rows,
                     digits=options.digits, units=to_mpf(options.units))
    for fault in faults[:MOST_FAULTS_SHOWN]:
        print(fault)
    if len(faults) > MOST_FAULTS_SHOWN:
        print(f"... and {len(faults) - MOST_FAULTS_SHOWN} more")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
