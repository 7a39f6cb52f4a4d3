"""Conversion of elementary functions into temporary equations with polynomial right-hand sides.

sin(u), say, becomes a variable s beside a companion k, with s' = k u' and k' = -s u'. The first
moment at which a conversion meets itself (y' = sin(y): the derivative of the argument leads back)
changes the rest of the run: from then on a function that has variables answers with them.
"""

import functions
import mpf
from build import binary, node_classes, unary
from ends import Ended
from functions import BY_NAME
from mpf import Mpf, add, mul, neg, sub
from nodes import Differential, Number, UnOp


# -- initial values: each (record, u0) gives those of the variables, in the order of creation

def _values(*names):
    def compute(record, u0):
        results = []
        for name in names:
            result = Mpf()
            BY_NAME[name](record, result, u0)
            results.append(result)
        return results
    return compute


def _cosine_and_minus_sine(record, u0):
    cosine, sine = _values("cos", "sin")(record, u0)
    neg(sine.p, sine.p)
    return [cosine, sine]


def _one_plus_or_minus_square(record, u0, operate):
    result = Mpf()
    mul(result.p, u0.p, u0.p)
    operate(result.p, record.one.p, result.p)
    return result


def _arc_sine_and_root(record, u0):
    [inverse] = _values("asin")(record, u0)
    root = _one_plus_or_minus_square(record, u0, sub)
    mpf.sqrt(root, root)
    return [inverse, root]


def _doubled(u0):
    result = Mpf()
    add(result.p, u0.p, u0.p)
    return result


def _arc(name):
    def compute(record, u0):
        return [_doubled(u0), _one_plus_or_minus_square(record, u0, add),
                *_values(name)(record, u0)]
    return compute


def _area(name):
    def compute(record, u0):
        minus = _doubled(u0)
        neg(minus.p, minus.p)
        return [minus, _one_plus_or_minus_square(record, u0, sub), *_values(name)(record, u0)]
    return compute


# -- right-hand sides: each (f, u, du, variables), where f is the function's node

def _times(f, a, b):
    return binary(f.record, b"*", a, b)


def _minus(f, a):
    return unary(f.record, "negation", a)


def _constant(f, text):
    return Number(f.record, mpf.from_text(text))


def _square_times(f, y, du):
    return _times(f, _times(f, y, y), du)


def _build_sin(f, u, du, s, k):
    k.rhs = _times(f, _minus(f, s), du)
    s.rhs = _times(f, k, du)


def _build_cos(f, u, du, k, m):
    m.rhs = _times(f, _minus(f, k), du)
    k.rhs = _times(f, m, du)


def _build_tan(f, u, du, t):
    t.rhs = binary(f.record, b"+", du, _square_times(f, t, du))


def _build_cotan(f, u, du, y):
    y.rhs = _minus(f, binary(f.record, b"+", du, _square_times(f, y, du)))


def _build_asin(f, u, du, a, w):
    a.rhs = binary(f.record, b"/", du, w)
    w.rhs = _times(f, _minus(f, u), a.rhs)


def _build_arc(f, u, du, p, q, a, factor=b"2", sign=lambda f, du: du):
    p.rhs = _times(f, du, _constant(f, factor))
    q.rhs = _times(f, p, du)
    a.rhs = binary(f.record, b"/", sign(f, du), q)


def _build_acotan(f, u, du, p, q, a):
    _build_arc(f, u, du, p, q, a, sign=_minus)


def _build_area(f, u, du, p, q, a):
    _build_arc(f, u, du, p, q, a, factor=b"-2")


def _build_hyperbolic(f, u, du, first, second):
    second.rhs = _times(f, first, du)
    first.rhs = _times(f, second, du)


def _build_tanh(f, u, du, y):
    y.rhs = binary(f.record, b"-", du, _square_times(f, y, du))


def _build_sqrt(f, u, du, s):
    s.rhs = _times(f, binary(f.record, b"/", du, s), _constant(f, b"0.5"))


def _build_exp(f, u, du, e):
    e.rhs = _times(f, du, e)


def _build_ln(f, u, du, variable):
    # On purpose by the new variable, not by the argument.
    variable.rhs = binary(f.record, b"/", du, variable)


# initial values, right-hand sides, which variable stands in the function's place
_CONVERSIONS = {
    "sin": (_values("sin", "cos"), _build_sin, 0),
    "cos": (_cosine_and_minus_sine, _build_cos, 0),
    "tan": (_values("tan"), _build_tan, 0),
    "cotan": (_values("cotan"), _build_cotan, 0),
    "asin": (_arc_sine_and_root, _build_asin, 0),
    "atan": (_arc("atan"), _build_arc, 2),
    "acotan": (_arc("acotan"), _build_acotan, 2),
    "sinh": (_values("sinh", "cosh"), _build_hyperbolic, 0),
    "cosh": (_values("cosh", "sinh"), _build_hyperbolic, 0),
    "tanh": (_values("tanh"), _build_tanh, 0),
    "cotanh": (_values("cotanh"), _build_tanh, 0),
    "atanh": (_area("atanh"), _build_area, 2),
    "acotanh": (_area("acotanh"), _build_area, 2),
    "sqrt": (_values("sqrt"), _build_sqrt, 0),
    "exp": (_values("exp"), _build_exp, 0),
    "ln": (_values("ln"), _build_ln, 0),
}
_CLASS_NAMES = {"acos": b"ACos", "asinh": b"ASinh", "acosh": b"ACosh"}


class Function(UnOp):
    """An elementary function of an expression."""

    name = None

    def __init__(self, record, operand):
        super().__init__(record, operand)
        self.under_way = False
        self.variables = None  # of the conversion under way or, else, of the latest

    def compute_init_value(self, out):
        self.operand = self.operand.convert()
        BY_NAME[self.name](self.record, out, self.operand.get_init_value())

    def print(self):
        return self.name.encode() + b"(" + self.operand.print() + b")"

    def returned(self):
        return self.variables[_CONVERSIONS[self.name][2]]

    def create_variables(self):
        record = self.record
        values = _CONVERSIONS[self.name][0](record, self.operand.get_init_value())
        if self.variables is not None:
            return  # asking for the initial value has led back here
        self.variables = []
        for value in values:
            variable = Differential(record, b"%%%d" % record.next_temporary)
            record.next_temporary += 1
            variable.set_start(value)
            self.variables.append(variable)
            record.equations[variable.name] = variable

    def convert(self):
        if self.name in _CLASS_NAMES:
            self.record.stderr.write(
                b"#(ERR) " + _CLASS_NAMES[self.name] + b"::ConvertExpr() is not implemented\n")
            raise Ended(1)
        if self.under_way:
            self.record.conversion_met_itself = True
            if self.variables is None:
                self.create_variables()
            return self.returned()
        if self.record.conversion_met_itself and self.variables is not None:
            return self.returned()
        self.under_way = True
        self.variables = None
        self.convert_afresh()
        self.under_way = False
        return self.returned()

    def convert_afresh(self):
        self.operand = self.operand.convert()
        if self.name == "asin":
            # The argument is converted twice, its derivative not at all.
            self.operand = self.operand.convert()
            derivative = self.operand.get_derivative()
        else:
            derivative = self.operand.get_derivative().convert()
        if self.variables is None:
            self.create_variables()
        _CONVERSIONS[self.name][1](self, self.operand, derivative, *self.variables)


class Sin(Function):
    name = "sin"

    def sum_result(self, out):
        functions.sin(self.record, out, self.operand.get_value())

    def make_derivative(self):
        cosine = node_classes["cos"](self.record, self.operand)
        return binary(self.record, b"*", self.operand.get_derivative(), cosine)


class Trunc(Function):
    """Keeps its place: it has values, but neither terms nor a derivative."""

    name = "trunc"

    def sum_result(self, out):
        mpf.trunc(out.p, self.operand.get_value().p)

    def convert(self):
        return unary(self.record, "trunc", self.operand.convert())


node_classes.update({
    name: type(name.capitalize(), (Function,), {"name": name}) for name in BY_NAME})
node_classes.update({"sin": Sin, "trunc": Trunc})
