"""How a number is written: in the exponent form of the results, or plainly in the usage text."""

import mpf
from mpf import cmp

EXPONENT_DIGITS = 2


def plain_number(record, x):
    digits, exponent = mpf.digits(x, record.width)
    if exponent == 0 and not digits:
        return b"0.0"
    if digits.startswith(b"-"):
        return b"-0.%se%d" % (digits[1:], exponent)
    return b" 0.%se%d" % (digits, exponent)


def _round(digits, width):
    """Rounds at index width + 1, where a sign counts as a character, and leaves the exponent
    alone: a carry into a first digit above 4 gives 1 and zeros."""
    i = width + 1
    if len(digits) <= i or i < 1 or digits[i] < ord("5"):
        return digits
    s = bytearray(digits)
    while True:
        s[i] = ord("0")
        i -= 1
        if s[i] <= ord("8"):
            s[i] += 1
            break
        if i <= 0:
            break
    if i == 0 and s[0] > ord("4"):
        return (b"1" + b"0"*(width - 1))[:max(width, 0)]
    return bytes(s)


def number(record, x):
    padding = b" "*(record.width - record.digits - EXPONENT_DIGITS - 4)
    digits, exponent = mpf.digits(x, record.width + 3)
    digits = _round(digits, record.width)
    if cmp(x.p, record.zero.p) == 0:
        return padding + b" 0." + b"0"*record.digits + b"e+" + b"0"*EXPONENT_DIGITS
    sign = b" "
    if digits.startswith(b"-"):
        sign, digits = b"-", digits[1:]
    first = digits[:1] or b"0"
    fraction = digits[1:][:max(record.digits, 0)].ljust(record.digits, b"0")
    exponent -= 1
    exponent_sign = b"-" if exponent < 0 else b"+"
    return b"%s%s%s.%se%s%02d" % (padding, sign, first, fraction, exponent_sign, abs(exponent))
