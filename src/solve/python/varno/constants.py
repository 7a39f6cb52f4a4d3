"""Python's numbers as constant expressions of the language, exactly."""

from decimal import Decimal
from fractions import Fraction
from numbers import Integral, Rational, Real


def expression(value):
    """The expression of a number; a text is an expression already.

    A float counts as what Python prints of it: 0.1 is one tenth. Fraction(0.1) is the double itself.
    """
    if isinstance(value, str):
        return value
    if isinstance(value, bool):
        raise TypeError(f"{value!r} is no number")
    if isinstance(value, Integral):
        return str(int(value))
    if isinstance(value, Decimal):
        value = Fraction(value)
    if isinstance(value, Rational):
        return f"{value.numerator}/{value.denominator}"
    if hasattr(value, "_mpf_"):  # mpmath's
        sign, mantissa, exponent, _ = value._mpf_
        if not mantissa and exponent:
            raise ValueError(f"{value!r} is no number")
        fraction = Fraction(int(mantissa) * (-1 if sign else 1)) * Fraction(2) ** int(exponent)
        return f"{fraction.numerator}/{fraction.denominator}"
    if isinstance(value, Real) or hasattr(value, "__float__"):
        number = float(value)
        if number != number or number in (float("inf"), float("-inf")):
            raise ValueError(f"{value!r} is no number")
        return repr(number)
    raise TypeError(f"{value!r} is neither a number nor a text")
