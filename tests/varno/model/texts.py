"""Conversions of text to integers and doubles as the C library makes them."""

import ctypes
import math

from ends import Ended

_libc = ctypes.CDLL(None)
_libc.strtol.argtypes = [ctypes.c_char_p, ctypes.c_void_p, ctypes.c_int]
_libc.strtol.restype = ctypes.c_long
_libc.strtod.argtypes = [ctypes.c_char_p, ctypes.c_void_p]
_libc.strtod.restype = ctypes.c_double


def int32(value):
    """A signed number of 32 bits, wrapped around."""
    return (value + 2**31) % 2**32 - 2**31


def to_int(text):
    """Where 32 bits do not hold the number, the nearest that they hold."""
    return max(-2**31, min(2**31 - 1, _libc.strtol(text, None, 10)))


def to_flag(text):
    return _libc.strtol(text, None, 10) == 1


def to_finite_double(record, text):
    """Ends the run where there is no such number."""
    value = _libc.strtod(text, None)
    if not math.isfinite(value):
        record.stderr.write(b"#(ERR) Number \"" + text + b"\" is out of range\n")
        raise Ended(1)
    return value


def quotient(a, b):
    """Integer division that truncates toward zero."""
    return -(-a // b) if a < 0 else a // b
