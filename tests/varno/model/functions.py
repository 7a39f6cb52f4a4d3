"""Multiprecision elementary functions, each (record, result, x); result may be x.

All are series in the default precision. With the switch simplify_small a series stops when it
moves by less than the accuracy, and arguments below the accuracy (negative ones, too, where the
comparison is signed) are answered at once; without it, a series stops when it no longer moves.
"""

import mpf
from ends import Ended, KilledBySignal, NotModelled
from mpf import Mpf, absolute, add, assign, cmp, div_2exp, div_ui, mul, mul_2exp, mul_ui, neg, sub

POSITIVE_POLE = b"1e999999"
LOGARITHM_OF_ZERO = b"-1e99999"
MOST_PASSES = 50_000  # of one loop; what needs more is left out of the model


def _domain_error(record, text):
    record.stderr.write(b"\n#(COMP) " + text + b"\n")
    raise Ended(1)


def _require(record, holds, line, function, expression):
    if not holds:
        record.stderr.write(
            b"%s: functions:%d: void %s(__mpf_struct (&)[1], __mpf_struct*): "
            b"Assertion `%s' failed.\n" % (record.program_name, line, function, expression))
        raise KilledBySignal("SIGABRT")


def _passes():
    yield from range(MOST_PASSES)
    raise NotModelled("a series or a reduction with very many passes")


class _Stop:
    """The stopping rule of a series."""

    def __init__(self, record):
        self.record = record
        self.difference = Mpf()
        self.previous = Mpf()

    def remember(self, total):
        assign(self.previous.p, total.p)

    def by_change(self, total):
        """|sum - previous sum| is below the accuracy, or the sum stays."""
        if not self.record.simplify_small:
            return cmp(total.p, self.previous.p) == 0
        sub(self.difference.p, total.p, self.previous.p)
        return self._is_small(self.difference)

    def by_term(self, total, term):
        """|last term| is below the accuracy, or the sum stays."""
        if not self.record.simplify_small:
            return cmp(total.p, self.previous.p) == 0
        return self._is_small(term)

    def _is_small(self, x):
        absolute(self.difference.p, x.p)
        return cmp(self.difference.p, self.record.accuracy.p) < 0


def _is_shortcut(record, x):
    return record.simplify_small and cmp(x.p, record.accuracy.p) < 0


def _reduce(record, a):
    """Takes off the full period as often as it goes in."""
    for _ in _passes():
        if cmp(a.p, record.two_pi.p) < 0:
            return
        sub(a.p, a.p, record.two_pi.p)


def _minus_square(a):
    q = Mpf()
    mul(q.p, a.p, a.p)
    neg(q.p, q.p)
    return q


def _require_range_of_sine(record, total, function, line):
    _require(record, cmp(total.p, record.one.p) <= 0, line, function,
             b"__gmpf_cmp(Res,(Expr::Global -> _ONE)) <= 0")
    minus = Mpf()
    neg(minus.p, total.p)
    _require(record, cmp(minus.p, record.one.p) <= 0, line + 4, function,
             b"__gmpf_cmp(Tmp,(Expr::Global -> _ONE)) <= 0")


def sin(record, result, x):
    a = mpf.copy(x)
    negative = a.is_negative()
    if negative:
        neg(a.p, a.p)
    _reduce(record, a)
    if _is_shortcut(record, a):
        assign(result.p, record.zero.p)
        return
    if negative:
        neg(a.p, a.p)
    _require(
        record, cmp(a.p, record.zero.p) >= 0 and cmp(a.p, record.two_pi.p) < 0, 57, b"sin",
        b"__gmpf_cmp(A,(Expr::Global -> _ZERO)) >= 0 && __gmpf_cmp(A,(Expr::Global -> _PI_2)) < 0")

    q, total, term, stop, k = _minus_square(a), mpf.copy(a), mpf.copy(a), _Stop(record), 0
    for _ in _passes():
        stop.remember(total)
        k += 2
        mul(term.p, term.p, q.p)
        if record.simplify_small:
            div_ui(term.p, term.p, (k + 1)*k)
        else:
            # The divisors of the exact mode: 4, 36, 100, ...
            div_ui(term.p, term.p, k*k)
            k += 2
        add(total.p, total.p, term.p)
        if stop.by_change(total):
            break
    _require_range_of_sine(record, total, b"sin", 110)
    assign(result.p, total.p)


def cos(record, result, x):
    a = Mpf()
    absolute(a.p, x.p)
    _reduce(record, a)
    _require(
        record, cmp(a.p, record.zero.p) >= 0, 138, b"cos",
        b"__gmpf_cmp(A,(Expr::Global -> _PI_2)) < 0 && __gmpf_cmp(A,(Expr::Global -> _ZERO)) >= 0")
    if _is_shortcut(record, a):
        assign(result.p, record.one.p)
        return

    q, total, term, stop, k = (
        _minus_square(a), mpf.copy(record.one), mpf.copy(record.one), _Stop(record), 0)
    for _ in _passes():
        stop.remember(total)
        k += 2
        mul(term.p, term.p, q.p)
        if record.simplify_small:
            div_ui(term.p, term.p, (k - 1)*k)
        else:
            div_ui(term.p, term.p, k*k)
            k += 2
        add(total.p, total.p, term.p)
        if stop.by_change(total):
            break
    _require_range_of_sine(record, total, b"cos", 199)
    assign(result.p, total.p)


def _quotient(record, result, x, above, below):
    denominator, numerator = Mpf(), Mpf()
    below(record, denominator, x)
    if denominator.is_zero():
        mpf.set_text(result, POSITIVE_POLE)
        return
    above(record, numerator, x)
    mpf.div(result, numerator, denominator)


def tan(record, result, x):
    _quotient(record, result, x, sin, cos)


def cotan(record, result, x):
    _quotient(record, result, x, cos, sin)


def asin(record, result, x):
    negative = x.is_negative()
    a = Mpf()
    absolute(a.p, x.p)
    order = cmp(a.p, record.one.p)
    if order > 0:
        _domain_error(record, b"asin(x): |x| > 1")
    if order == 0:
        assign(result.p, record.half_pi.p)
    else:
        q, f, total, t, stop, k = Mpf(), mpf.copy(a), mpf.copy(a), Mpf(), _Stop(record), 1
        mul(q.p, a.p, a.p)
        for _ in _passes():
            stop.remember(total)
            mul_ui(f.p, f.p, k)
            div_ui(f.p, f.p, k + 1)
            k += 2
            mul(f.p, f.p, q.p)
            div_ui(t.p, f.p, k)
            add(total.p, total.p, t.p)
            if stop.by_change(total):
                break
        assign(result.p, total.p)
    if negative:
        neg(result.p, result.p)


def acos(record, result, x):
    a = Mpf()
    absolute(a.p, x.p)
    order = cmp(a.p, record.one.p)
    if order > 0:
        _domain_error(record, b"acos(x): |x| > 1")
    if order == 0:
        assign(result.p, (record.pi if x.is_negative() else record.zero).p)
        return
    inverse_sine = Mpf()
    asin(record, inverse_sine, x)
    sub(result.p, record.half_pi.p, inverse_sine.p)


def _arc(record, result, x, complement_if_inverted):
    negative = x.is_negative()
    a = Mpf()
    absolute(a.p, x.p)
    if _is_shortcut(record, a):
        assign(result.p, record.zero.p)
        return
    inverted = cmp(a.p, record.one.p) > 0
    if inverted:
        mpf.div(a, record.one, a)
    q, p, total, quotient, stop, k = (
        _minus_square(a), mpf.copy(a), mpf.copy(a), Mpf(), _Stop(record), 1)
    for _ in _passes():
        k += 2
        stop.remember(total)
        mul(p.p, p.p, q.p)
        div_ui(quotient.p, p.p, k)
        add(total.p, total.p, quotient.p)
        if stop.by_change(total):
            break
    if inverted == complement_if_inverted:
        sub(total.p, record.half_pi.p, total.p)
    if negative:
        neg(total.p, total.p)
    assign(result.p, total.p)


def atan(record, result, x):
    _arc(record, result, x, True)


def acotan(record, result, x):
    _arc(record, result, x, False)


def _hyperbolic(record, result, x, first, k):
    """first + first x^2/((k+2)(k+3)) + ..."""
    q, term, total, stop = Mpf(), mpf.copy(first), mpf.copy(first), _Stop(record)
    mul(q.p, x.p, x.p)
    for _ in _passes():
        k += 2
        stop.remember(total)
        mul(term.p, term.p, q.p)
        div_ui(term.p, term.p, (k + 1)*k)
        add(total.p, total.p, term.p)
        if stop.by_change(total):
            break
    assign(result.p, total.p)


def sinh(record, result, x):
    if _is_shortcut(record, x):
        assign(result.p, record.zero.p)
    else:
        _hyperbolic(record, result, x, x, 0)


def cosh(record, result, x):
    if _is_shortcut(record, x):
        assign(result.p, record.one.p)
    else:
        _hyperbolic(record, result, x, record.one, -1)


def tanh(record, result, x):
    if _is_shortcut(record, x):
        assign(result.p, record.zero.p)
        return
    numerator, denominator = Mpf(), Mpf()
    sinh(record, numerator, x)
    cosh(record, denominator, x)
    mpf.div(result, numerator, denominator)


def cotanh(record, result, x):
    negative = x.is_negative()
    denominator, numerator = Mpf(), Mpf()
    sinh(record, denominator, x)
    if denominator.is_zero():
        _pole(result, negative)
        return
    cosh(record, numerator, x)
    mpf.div(result, numerator, denominator)


def _pole(result, negative):
    mpf.set_text(result, POSITIVE_POLE)
    if negative:
        neg(result.p, result.p)


def asinh(record, result, x):
    if _is_shortcut(record, x):
        assign(result.p, record.zero.p)
        return
    a = Mpf()
    mul(a.p, x.p, x.p)
    add(a.p, a.p, record.one.p)
    mpf.sqrt(a, a)
    add(a.p, x.p, a.p)
    ln(record, result, a)


def acosh(record, result, x):
    if cmp(x.p, record.one.p) < 0:
        _domain_error(record, b"acosh(x): x < 1")
    below, above = Mpf(), Mpf()
    sub(below.p, x.p, record.one.p)
    if _is_shortcut(record, below):
        assign(result.p, record.zero.p)
        return
    add(above.p, x.p, record.one.p)
    mpf.sqrt(below, below)
    mpf.sqrt(above, above)
    mul(below.p, below.p, above.p)
    add(below.p, x.p, below.p)
    ln(record, result, below)


def atanh(record, result, x):
    a = Mpf()
    absolute(a.p, x.p)
    order = cmp(a.p, record.one.p)
    if order > 0:
        _domain_error(record, b"atanh(x): |x| > 1")
    if order == 0:
        _pole(result, x.is_negative())
        return
    if _is_shortcut(record, x):
        assign(result.p, record.one.p)
        return
    # The division stays in the term: x + x^3/3 + x^5/(3 5) + ...
    q, term, total, stop, k = Mpf(), mpf.copy(x), mpf.copy(x), _Stop(record), 3
    mul(q.p, x.p, x.p)
    for _ in _passes():
        stop.remember(total)
        mul(term.p, term.p, q.p)
        div_ui(term.p, term.p, k)
        add(total.p, total.p, term.p)
        k += 2
        if stop.by_term(total, term):
            break
    assign(result.p, total.p)


def acotanh(record, result, x):
    a = Mpf()
    absolute(a.p, x.p)
    order = cmp(a.p, record.one.p)
    if order < 0:
        _domain_error(record, b"acotanh(x): |x| < 1")
    if order == 0:
        _pole(result, x.is_negative())
        return
    mpf.div(a, record.one, x)
    atanh(record, result, a)


def exp(record, result, x):
    if x.is_zero() or _is_shortcut(record, x):
        assign(result.p, record.one.p)
        return
    argument = mpf.copy(x)
    term, total, stop, k = mpf.copy(record.one), mpf.copy(record.one), _Stop(record), 1
    for _ in _passes():
        stop.remember(total)
        mul(term.p, term.p, argument.p)
        div_ui(term.p, term.p, k)
        term.check_range()
        add(total.p, total.p, term.p)
        k += 1
        if stop.by_term(total, term):
            break
    assign(result.p, total.p)


def ln(record, result, x):
    if x.is_negative():
        _domain_error(record, b"ln(x): x < 0")
    if x.is_zero():
        mpf.set_text(result, LOGARITHM_OF_ZERO)
        return
    if cmp(x.p, record.one.p) == 0:
        assign(result.p, record.zero.p)
        return
    m, base, e = mpf.copy(x), mpf.copy(record.zero), mpf.binary_exponent(x)
    if e < 0:
        mul_2exp(m.p, x.p, -e)
        mul_ui(base.p, record.ln2.p, -e)
        neg(base.p, base.p)
    elif e > 0:
        div_2exp(m.p, x.p, e)
        mul_ui(base.p, record.ln2.p, e)
    z, q, total, quotient, stop, k = Mpf(), Mpf(), Mpf(), Mpf(), _Stop(record), 1
    sub(z.p, m.p, record.one.p)
    power = mpf.copy(z)
    neg(q.p, z.p)
    add(total.p, base.p, z.p)
    for _ in _passes():
        k += 1
        stop.remember(total)
        mul(power.p, power.p, q.p)
        div_ui(quotient.p, power.p, k)
        add(total.p, total.p, quotient.p)
        if stop.by_change(total):
            break
    assign(result.p, total.p)


def sqrt(record, result, x):
    mpf.sqrt(result, x)


def trunc(record, result, x):
    mpf.trunc(result.p, x.p)


# By the names under which the nodes are printed.
BY_NAME = {
    function.__name__: function
    for function in (
        sin, cos, tan, cotan, asin, acos, atan, acotan, sinh, cosh, tanh, cotanh, asinh, acosh,
        atanh, acotanh, sqrt, exp, ln, trunc)
}
