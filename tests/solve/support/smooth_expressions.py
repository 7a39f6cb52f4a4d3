"""Expressions in t and variables: their text for varno-solve, their value by mpmath, their derivative.

An expression is a tuple (operation, operands...): ("number", Fraction), ("pi",), ("t",),
("variable", name), ("+", a, b), ("sin", a), ... Equal expressions are equal tuples. The functions
below that are named like operations build expressions, and leave out what is trivial.
"""

import re
from fractions import Fraction

import mpmath

#: by the name in the language: the value, and the derivative as an expression of u and of the whole
FUNCTIONS = {
    "exp": (mpmath.exp, lambda u, f: f),
    "ln": (mpmath.log, lambda u, f: over(ONE, u)),
    "sqrt": (mpmath.sqrt, lambda u, f: over(ONE, times(TWO, f))),
    "cbrt": (lambda u: mpmath.sign(u)*mpmath.cbrt(abs(u)),
             lambda u, f: over(f, times(number(3), u))),
    "sin": (mpmath.sin, lambda u, f: ("cos", u)),
    "cos": (mpmath.cos, lambda u, f: minus(ZERO, ("sin", u))),
    "tan": (mpmath.tan, lambda u, f: plus(ONE, square(f))),
    "cotan": (mpmath.cot, lambda u, f: minus(number(-1), square(f))),
    "sinh": (mpmath.sinh, lambda u, f: ("cosh", u)),
    "cosh": (mpmath.cosh, lambda u, f: ("sinh", u)),
    "tanh": (mpmath.tanh, lambda u, f: over(ONE, square(("cosh", u)))),
    "cotanh": (mpmath.coth, lambda u, f: minus(ONE, square(f))),
    "asin": (mpmath.asin, lambda u, f: over(ONE, ("sqrt", minus(ONE, square(u))))),
    "acos": (mpmath.acos, lambda u, f: over(number(-1), ("sqrt", minus(ONE, square(u))))),
    "atan": (mpmath.atan, lambda u, f: over(ONE, plus(ONE, square(u)))),
    "acotan": (lambda u: mpmath.atan(1/u), lambda u, f: over(number(-1), plus(ONE, square(u)))),
    "asinh": (mpmath.asinh, lambda u, f: over(ONE, ("sqrt", plus(ONE, square(u))))),
    "acosh": (mpmath.acosh, lambda u, f: over(ONE, ("sqrt", minus(square(u), ONE)))),
    "atanh": (mpmath.atanh, lambda u, f: over(ONE, minus(ONE, square(u)))),
    "argcotanh": (mpmath.acoth, lambda u, f: over(ONE, minus(ONE, square(u)))),
    "erf": (mpmath.erf, lambda u, f: times(
        over(TWO, ("sqrt", PI)), ("exp", minus(ZERO, square(u))))),
}
OPERATORS = {
    "+": lambda a, b: a + b,
    "-": lambda a, b: a - b,
    "*": lambda a, b: a*b,
    "/": lambda a, b: a/b,
}


# ---------------------------------------------------------------------------------------
# Building


def number(value):
    return ("number", Fraction(value))


ZERO, ONE, TWO = number(0), number(1), number(2)
PI, TIME = ("pi",), ("t",)


def variable(name):
    return ("variable", name)


def plus(a, b):
    if ZERO in (a, b):
        return b if a == ZERO else a
    return ("+", a, b)


def minus(a, b):
    return a if b == ZERO else ("-", a, b)


def times(a, b):
    if ZERO in (a, b):
        return ZERO
    if ONE in (a, b):
        return b if a == ONE else a
    return ("*", a, b)


def over(a, b):
    return a if b == ONE or a == ZERO else ("/", a, b)


def power(a, exponent):
    """The exponent is a Fraction or an expression."""
    if isinstance(exponent, (int, Fraction)):
        exponent = number(exponent)
    return a if exponent == ONE else ("^", a, exponent)


def square(a):
    return power(a, 2)


# ---------------------------------------------------------------------------------------
# Reading


def number_text(number):
    digits = str(number)
    if number.denominator == 1 and re.fullmatch("1000+", digits):
        return f"1e{len(digits) - 1}"
    if number.numerator == 1 and re.fullmatch("1/1000+", digits):
        return f"1e-{len(digits) - 3}"
    return digits if digits.isdigit() else f"({digits})"


def text(e):
    """The expression in the language of varno-solve."""
    kind = e[0]
    if kind == "number":
        return number_text(e[1])
    if kind in ("pi", "t"):
        return kind
    if kind == "variable":
        return e[1]
    if kind in OPERATORS or kind == "^":
        return f"({text(e[1])} {kind} {text(e[2])})"
    return f"{kind}({', '.join(map(text, e[1:]))})"


def value(e, t, known=None):
    """The value at the time t, at mpmath's precision; there must be no variables in it."""
    known = {} if known is None else known
    if e not in known:
        known[e] = _compute(e, t, known)
    return known[e]


def _compute(e, t, known):
    kind = e[0]
    if kind == "number":
        return mpmath.mpf(e[1].numerator)/e[1].denominator
    if kind == "pi":
        return +mpmath.pi
    if kind == "t":
        return t
    operands = [value(a, t, known) for a in e[1:]]
    if kind in OPERATORS:
        return OPERATORS[kind](*operands)
    if kind == "^":
        return _power(operands[0], e[2], operands[1])
    if kind == "atan2":
        return mpmath.atan2(*operands)
    return FUNCTIONS[kind][0](*operands)


def _power(base, exponent, exponent_value):
    if exponent[0] == "number" and exponent[1].denominator == 1:
        return base**int(exponent[1])
    return mpmath.power(base, exponent_value)


def derivative(e):
    """By t; there must be no variables in it."""
    kind = e[0]
    if kind in ("number", "pi"):
        return ZERO
    if kind == "t":
        return ONE
    a, b = e[1], e[-1]
    da = derivative(a)
    if kind in FUNCTIONS:
        return ZERO if da == ZERO else times(da, FUNCTIONS[kind][1](a, e))
    db = derivative(b)
    if kind == "+":
        return plus(da, db)
    if kind == "-":
        return minus(da, db)
    if kind == "*":
        return plus(times(da, b), times(a, db))
    if kind == "/":
        return minus(over(da, b), over(times(e, db), b))
    if kind == "atan2":
        return over(minus(times(da, b), times(a, db)), plus(square(a), square(b)))
    if b[0] == "number":
        return times(times(b, da), power(a, b[1] - 1)) if b[1] != 2 else times(times(TWO, da), a)
    # (a^b)' = a^b (b' ln a + b a'/a)
    return times(e, plus(times(db, ("ln", a)), over(times(b, da), a)))


def replace(e, replacements, wanted):
    """Puts for each part of e that has a replacement the replacement, where wanted() says so."""
    if e in replacements and wanted():
        return replacements[e]
    if e[0] in ("number", "variable"):
        return e
    return (e[0], *(replace(a, replacements, wanted) for a in e[1:]))
