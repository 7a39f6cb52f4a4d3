"""Multiprecision floats: GMP's mpf layer through ctypes.

A number keeps the precision that was the default when it was made. Every operation writes into
a number that exists already, as in C, since the precision of the destination decides the result.
Operations take addresses (Mpf.p), which is what makes them fast enough.
"""

import ctypes
import ctypes.util

from ends import KilledBySignal, NotModelled


class _Struct(ctypes.Structure):
    _fields_ = [
        ("prec", ctypes.c_int),
        ("size", ctypes.c_int),
        ("exp", ctypes.c_long),
        ("limbs", ctypes.c_void_p),
    ]


_gmp = ctypes.CDLL(ctypes.util.find_library("gmp") or "libgmp.so.10")
_libc = ctypes.CDLL(None)
_P = ctypes.c_void_p
_ULONG = ctypes.c_ulong
_LONG_P = ctypes.POINTER(ctypes.c_long)


def _bind(name, *arguments, result=None):
    function = getattr(_gmp, "__gmpf_" + name)
    function.argtypes = arguments
    function.restype = result
    return function


_init = _bind("init", _P)
_init2 = _bind("init2", _P, _ULONG)
_clear = _bind("clear", _P)
_set_default_prec = _bind("set_default_prec", _ULONG)
_get_default_prec = _bind("get_default_prec", result=_ULONG)
_set_d = _bind("set_d", _P, ctypes.c_double)
_set_si = _bind("set_si", _P, ctypes.c_long)
_set_str = _bind("set_str", _P, ctypes.c_char_p, ctypes.c_int, result=ctypes.c_int)
_get_str = _bind("get_str", _P, _LONG_P, ctypes.c_int, ctypes.c_size_t, _P, result=_P)
_get_d_2exp = _bind("get_d_2exp", _LONG_P, _P, result=ctypes.c_double)
_div = _bind("div", _P, _P, _P)
_sqrt = _bind("sqrt", _P, _P)
_libc.free.argtypes = [_P]
_libc.free.restype = None

assign = _bind("set", _P, _P)
add = _bind("add", _P, _P, _P)
sub = _bind("sub", _P, _P, _P)
mul = _bind("mul", _P, _P, _P)
mul_ui = _bind("mul_ui", _P, _P, _ULONG)
div_ui = _bind("div_ui", _P, _P, _ULONG)
mul_2exp = _bind("mul_2exp", _P, _P, _ULONG)
div_2exp = _bind("div_2exp", _P, _P, _ULONG)
neg = _bind("neg", _P, _P)
absolute = _bind("abs", _P, _P)
trunc = _bind("trunc", _P, _P)
cmp = _bind("cmp", _P, _P, result=ctypes.c_int)

# Exponents (of limbs) beyond this come near to the end of GMP's own range; what happens there is
# a matter of the program's checks.
LARGEST_EXPONENT = 2**57
LONGEST_EXPONENT_TEXT = 17


class Mpf:
    """One number, 0 at first."""

    __slots__ = ("raw", "p")

    def __init__(self, bits=None):
        self.raw = _Struct()
        self.p = ctypes.addressof(self.raw)
        if bits is None:
            _init(self.p)
        else:
            _init2(self.p, bits)

    def __del__(self):
        try:
            _clear(self.p)
        except AttributeError:
            pass  # the recursion limit was reached in __init__

    def is_zero(self):
        return self.raw.size == 0

    def is_negative(self):
        return self.raw.size < 0

    def check_range(self):
        if abs(self.raw.exp) > LARGEST_EXPONENT:
            raise NotModelled("a number near the end of GMP's exponents")


def set_default_precision(bits):
    _set_default_prec(bits)


def default_precision():
    return _get_default_prec()


def copy(x):
    """A copy at the default precision."""
    result = Mpf()
    assign(result.p, x.p)
    return result


def from_double(value):
    result = Mpf()
    _set_d(result.p, value)
    return result


def from_int(value):
    result = Mpf()
    _set_si(result.p, value)
    return result


def from_text(text):
    result = Mpf()
    set_text(result, text)
    return result


def set_double(x, value):
    _set_d(x.p, value)


def set_text(x, text):
    """Converts decimal text (bytes). A text that is no number leaves x as it is."""
    exponent = text.lower().rpartition(b"e")[2] if b"e" in text.lower() else b""
    if len(exponent.lstrip(b"+-")) > LONGEST_EXPONENT_TEXT:
        raise NotModelled("a number text with a very large exponent")
    _set_str(x.p, text, 10)


def div(result, a, b):
    """GMP ends the process when the divisor is 0. Takes numbers, not addresses."""
    if b.raw.size == 0:
        raise KilledBySignal("SIGFPE")
    _div(result.p, a.p, b.p)


def sqrt(result, x):
    """GMP ends the process when x is negative. Takes numbers, not addresses."""
    if x.raw.size < 0:
        raise KilledBySignal("SIGFPE")
    _sqrt(result.p, x.p)


def digits(x, count):
    """Returns the decimal digits, with a "-" in front for a negative x, and the exponent e of
    0.DIGITS * 10^e. A count of 0 asks for all digits; a negative one becomes a huge size_t."""
    exponent = ctypes.c_long()
    text = _get_str(None, exponent, 10, count % 2**64, x.p)
    try:
        return ctypes.string_at(text), exponent.value
    finally:
        _libc.free(text)


def binary_exponent(x):
    """e of x = d * 2^e with 0.5 <= |d| < 1."""
    exponent = ctypes.c_long()
    _get_d_2exp(exponent, x.p)
    return exponent.value
