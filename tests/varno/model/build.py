"""Building of nodes: constants fold, and operands next to 0 or 1 are simplified away."""

import mpf
from functions import BY_NAME
from mpf import Mpf, absolute, add, cmp, mul, neg, sub

# Classes of nodes by operator, by the name of the function, and by "number" and "negation". The
# modules that define the classes enter them here.
node_classes = {}


def unary(record, name, a):
    """name: "negation" or that of a function."""
    if not a.is_number:
        return node_classes[name](record, a)
    result = Mpf()
    if name == "negation":
        neg(result.p, a.value.p)
    else:
        BY_NAME[name](record, result, a.value)
    result.check_range()
    return node_classes["number"](record, result)


def _is_small(record, node):
    magnitude = Mpf()
    absolute(magnitude.p, node.value.p)
    return cmp(magnitude.p, record.accuracy.p) < 0


def _is_near_one(record, node):
    distance = Mpf()
    absolute(distance.p, node.value.p)
    sub(distance.p, distance.p, record.one.p)
    absolute(distance.p, distance.p)
    return cmp(distance.p, record.accuracy.p) < 0


def _plus(record, a, b):
    if a.is_number and _is_small(record, a):
        return b
    if b.is_number and _is_small(record, b):
        return a
    return None


def _minus(record, a, b):
    if a.is_number and _is_small(record, a):
        return node_classes["negation"](record, b)
    if b.is_number and _is_small(record, b):
        return a
    return None


def _multiply(record, a, b):
    if a.is_number:
        constant, other = a, b
    elif b.is_number:
        constant, other = b, a
    else:
        return None
    if _is_small(record, constant):
        return node_classes["number"](record, mpf.from_double(0.0))
    if _is_near_one(record, constant):
        return node_classes["negation"](record, other) if constant.value.is_negative() else other
    return None


def _divide(record, a, b):
    if b.is_number and _is_near_one(record, b):
        return node_classes["negation"](record, a) if b.value.is_negative() else a
    return None


def _fold(symbol, a, b):
    result = Mpf()
    if symbol == b"+":
        add(result.p, a.p, b.p)
    elif symbol == b"-":
        sub(result.p, a.p, b.p)
    elif symbol == b"*":
        mul(result.p, a.p, b.p)
    else:
        mpf.div(result, a, b)
    result.check_range()
    return result


_SHORTCUTS = {b"+": _plus, b"-": _minus, b"*": _multiply, b"/": _divide}


def binary(record, symbol, a, b):
    if a.is_number and b.is_number:
        return node_classes["number"](record, _fold(symbol, a.value, b.value))
    simplified = _SHORTCUTS[symbol](record, a, b) if record.simplify_small else None
    return node_classes[symbol](record, a, b) if simplified is None else simplified
