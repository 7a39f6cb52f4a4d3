"""Conversions of text to integers and doubles as the C library makes them."""

import ctypes

_libc = ctypes.CDLL(None)
_libc.strtol.argtypes = [ctypes.c_char_p, ctypes.c_void_p, ctypes.c_int]
_libc.strtol.restype = ctypes.c_long
_libc.strtod.argtypes = [ctypes.c_char_p, ctypes.c_void_p]
_libc.strtod.restype = ctypes.c_double


def int32(value):
    """A signed number of 32 bits, wrapped around."""
    return (value + 2**31) % 2**32 - 2**31


def to_int(text):
    return int32(_libc.strtol(text, None, 10))


def to_flag(text):
    return to_int(text) == 1


def to_double(text):
    return _libc.strtod(text, None)


def quotient(a, b):
    """Integer division that truncates toward zero."""
    return -(-a // b) if a < 0 else a // b
