"""Multiprecision floats: GMP's mpf layer through ctypes.

A number keeps the precision that was the default when it was made. Every operation writes into
a number that exists already, as in C, since the precision of the destination decides the result.
Operations take addresses (Mpf.p), which is what makes them fast enough.
"""

import ctypes
import ctypes.util
import re

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

LIMB_BITS = 64
# Beyond these exponents, in limbs and in decimal digits, GMP does not convert into digits, and the
# program refuses numbers: when it does so is a matter of its checks.
LARGEST_EXPONENT = 2**58
LARGEST_DECIMAL_EXPONENT = 5_553*10**15
# A factor that is never written may go further.
LARGEST_FACTOR_EXPONENT = 2**61


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

    def check_range(self, largest=LARGEST_EXPONENT):
        if abs(self.raw.exp) > largest:
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
    exponent = re.search(rb"[eE@]([+-]?[0-9]+)", text)
    if exponent and abs(int(exponent[1])) > LARGEST_DECIMAL_EXPONENT:
        raise NotModelled("a number near the end of GMP's exponents")
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
    """e of x = d * 2^e with 0.5 <= |d| < 1, and 0 for 0. (GMP's own function has 63 bits for it.)"""
    size = abs(x.raw.size)
    if size == 0:
        return 0
    limbs = ctypes.cast(x.raw.limbs, ctypes.POINTER(ctypes.c_uint64))
    return (x.raw.exp - 1)*LIMB_BITS + limbs[size - 1].bit_length()
