"""The grammar of the input language and what its rules do.

The language is that of an LALR(1) parser with default reductions: whatever a rule does happens
before an error found at the token behind it, and the first error ends the parse.
"""

import mpf
from build import binary, unary
from ends import Ended, NotModelled
from functions import BY_NAME
from mpf import Mpf, add, mul, neg, sub
from nodes import Algebraic, Differential, Equation, Number, StepFunction, Time
from scanner import Scanner

HIGHEST_ORDER = 10_000
DEEPEST_NESTING = 1_000  # of parentheses, calls and signs; the program's own limit lies beyond
INT_MAX = 2**31 - 1


class SyntaxFailed(Exception):
    pass


def variable_key(name, order):
    """The name of the variable that is the derivative of that order."""
    return name + b"'"*order


class Parser:
    def __init__(self, record, text):
        self.record = record
        self.scanner = Scanner(text)
        self.lookahead = None
        self.depth = 0
        self.met_step_function = False

    # -- tokens

    def peek(self):
        if self.lookahead is None:
            self.lookahead = self.scanner.next()
        return self.lookahead

    def take(self):
        token = self.peek()
        self.lookahead = None
        return token

    def sees(self, *kinds):
        return self.peek().kind in kinds

    def expect(self, *kinds):
        if not self.sees(*kinds):
            self.fail()
        return self.take()

    def report(self, message, token):
        text = token.text.split(b"\0")[0]
        self.record.stderr.write(
            b"#(ERR) ERROR: %s \"%s\" at line #%d\n" % (message, text, self.scanner.line))

    def fail(self):
        self.report(b"parse error", self.peek())
        raise SyntaxFailed

    def nested(self, parse):
        self.depth += 1
        if self.depth > DEEPEST_NESTING:
            raise NotModelled("deep nesting")
        result = parse()
        self.depth -= 1
        return result

    # -- statements

    def parse_program(self):
        self.parse_statement()
        while not self.sees("END"):
            self.parse_statement()

    def parse_statement(self):
        name = self.expect("NAME").value
        order = 0
        if self.sees("DERIV"):
            token = self.take()
            order = token.value
            if order > HIGHEST_ORDER:
                self.report(b"derivative order too large", token)
                raise SyntaxFailed
        if self.expect(b"=", b"(").kind == b"=":
            self.parse_equation(name, order)
        else:
            self.parse_start_statement(name, order)

    def parse_equation(self, name, order):
        self.met_step_function = False
        expression = self.parse_sum(_TREES)
        start = None
        if self.sees(b"&"):
            self.take()
            start = self.parse_sum(_CONSTANTS)
        self.expect(b";")
        self.enter_equation(name, order, expression)
        if start is not None:
            self.record.start_values[name] = start

    def enter_equation(self, name, order, expression):
        equations = self.record.equations
        if order == 0:
            equations[name] = last = Algebraic(self.record, name, expression)
        else:
            key = variable_key(name, order - 1)
            equations[key] = last = variable = Differential(self.record, key, expression)
            for k in reversed(range(order - 1)):
                key = variable_key(name, k)
                equations[key] = variable = Differential(self.record, key, variable)
        last.uses_step_function = self.met_step_function

    def parse_start_statement(self, name, order):
        point = self.expect("REAL", "INTEGER")
        if not mpf.from_text(point.text).is_zero():
            self.report(
                b"Start condition must be defined for zero, not for other value", point)
        self.expect(b")")
        self.expect(b"=")
        value = self.parse_sum(_CONSTANTS)
        self.expect(b";")
        self.record.start_values[variable_key(name, order)] = value

    # -- expressions; a kind of values is _TREES or _CONSTANTS

    def parse_sum(self, values):
        left = self.parse_product(values)
        while self.sees(b"+", b"-"):
            operator = self.take().kind
            left = values.binary(self.record, operator, left, self.parse_product(values))
        return left

    def parse_product(self, values):
        left = self.parse_factor(values)
        while self.sees(b"*", b"/"):
            operator = self.take().kind
            left = values.binary(self.record, operator, left, self.parse_factor(values))
        return left

    def parse_factor(self, values):
        token = self.peek()
        kind = token.kind
        if kind == b"-":
            self.take()
            operand = self.nested(lambda: self.parse_factor(values))
            return values.negate(self.record, operand)
        if kind == b"+":
            self.take()
            return self.nested(lambda: self.parse_factor(values))
        if kind == b"(":
            return self.parse_parentheses(values)
        if kind == "FUNCTION":
            self.take()
            if not self.sees(b"("):
                self.fail()
            return values.call(self.record, token.value, self.parse_parentheses(values))
        if kind in ("REAL", "INTEGER", "PI"):
            return values.number(self.record, self.take())
        if values is _TREES:
            return self.parse_variable()
        return self.fail()

    def parse_parentheses(self, values):
        self.expect(b"(")
        inner = self.nested(lambda: self.parse_sum(values))
        self.expect(b")")
        return inner

    def parse_variable(self):
        if self.sees("TIME"):
            self.take()
            return Time(self.record)
        if self.sees(b"["):
            return self.parse_step_function()
        name = self.expect("NAME").value
        if self.sees("DERIV"):
            self.take()
        return Equation(self.record, name)

    # -- step functions: words, but no value

    def say(self, word):
        self.record.stderr.write(word + b" ")

    def parse_step_function(self):
        self.expect(b"[")
        over_time = self.expect("NAME", "TIME").kind == "TIME"
        self.expect(b"<")
        self.parse_step_segments()
        self.expect(b"]")
        self.say(b"stepfT" if over_time else b"stepf")
        self.met_step_function = True
        return StepFunction(self.record)

    def parse_step_segments(self):
        further = 0
        while True:
            self.parse_step_values()
            self.expect(b":")
            self.parse_sum(_CONSTANTS)
            if not self.sees(b";"):
                break
            self.take()
            further += 1
        self.say(b"stepfrep2")
        for _ in range(further):
            self.say(b"stepfrep1")

    def parse_step_values(self):
        self.parse_sum(_CONSTANTS)
        further = 0
        while self.sees(b","):
            self.take()
            self.parse_sum(_CONSTANTS)
            further += 1
        self.say(b"steplimit2")
        for _ in range(further):
            self.say(b"steplimit1")


class _Trees:
    """Expressions become nodes."""

    def binary(self, record, operator, left, right):
        return binary(record, operator, left, right)

    def negate(self, record, operand):
        return unary(record, "negation", operand)

    def call(self, record, name, operand):
        return unary(record, name, operand)

    def number(self, record, token):
        return Number(record, _CONSTANTS.number(record, token))


class _Constants:
    """Constant expressions become numbers at once."""

    def binary(self, record, operator, a, b):
        result = Mpf()
        if operator == b"+":
            add(result.p, a.p, b.p)
        elif operator == b"-":
            sub(result.p, a.p, b.p)
        elif operator == b"*":
            mul(result.p, a.p, b.p)
        else:
            mpf.div(result, a, b)
        result.check_range()
        return result

    def negate(self, record, operand):
        result = Mpf()
        neg(result.p, operand.p)
        return result

    def call(self, record, name, operand):
        result = Mpf()
        BY_NAME[name](record, result, operand)
        result.check_range()
        return result

    def number(self, record, token):
        if token.kind == "PI":
            return mpf.copy(record.pi)
        if token.kind == "INTEGER" and int(token.text) <= INT_MAX:
            return mpf.from_int(int(token.text))
        return mpf.from_text(token.text)


_TREES = _Trees()
_CONSTANTS = _Constants()


def parse(record, text):
    try:
        Parser(record, text).parse_program()
    except SyntaxFailed:
        record.stderr.write(b"#(ERR) Compile error occured...\n")
        raise Ended(3)
    _give_start_values(record)


def _give_start_values(record):
    """A variable holds its start value from the end of the parse on: functions of variables that
    stand later in the table need it during conversion."""
    for name, variable in record.equations.items():
        start = record.start_values.get(name)
        if start is not None:
            variable.set_start(start)
