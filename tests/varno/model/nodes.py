"""Nodes of the expressions: their Taylor terms, values, derivatives and printed forms.

Term k of a node is h^k u^(k) / k!, so that the value at the end of a step is the sum of the
terms. Nodes keep terms and value under the record's stamp; a new stamp invalidates all of them.
get_term and get_value return the node's own number, which its reader must not change.
"""

import mpf
from build import binary, node_classes, unary
from ends import Ended, NotModelled
from mpf import Mpf, absolute, add, assign, cmp, mul, neg, sub
from number_format import number


class Expr:
    is_number = False

    def __init__(self, record):
        self.record = record
        self.terms = []
        self.valid = -1
        self.value = Mpf()
        self.result = Mpf()
        self.init_value = Mpf()
        self.value_stamp = self.term_stamp = record.stamp - 1
        self.derivative = None  # None stands for the empty expression
        self.steady = False

    # -- Taylor terms

    def reset_terms(self):
        """On a new stamp: forgets the terms."""
        if self.term_stamp != self.record.stamp:
            self.term_stamp = self.record.stamp
            self.valid = -1

    def get_term(self, k):
        if self.term_stamp != self.record.stamp:
            self.reset_terms()
        if k > self.record.term_count:
            raise NotModelled("a term beyond the term count")
        if k > self.valid:
            while len(self.terms) <= k:
                self.terms.append(Mpf())
            out = self.terms[k]
            self.get_dy(k, out)
            out.check_range()
            self.valid = k
            self.record.terms_computed += 1
        return self.terms[k]

    def get_dy(self, k, out):
        raise NotImplementedError

    # -- value at the end of the step

    def get_value(self):
        record = self.record
        self.reset_terms()
        if self.value_stamp == record.stamp and not record.recompute:
            return self.result
        record.recompute = False
        self.value_stamp = record.stamp
        self.sum_result(self.result)
        self.result.check_range()
        self.steady = bool(record.steady_stop) and self.is_steady()
        return self.result

    def is_steady(self):
        change = Mpf()
        sub(change.p, self.value.p, self.result.p)
        absolute(change.p, change.p)
        return cmp(change.p, self.record.accuracy.p) < 0

    def sum_result(self, out):
        raise NotImplementedError

    # -- value at the initial time, symbolic derivative, conversion

    def get_init_value(self):
        self.compute_init_value(self.init_value)
        return self.init_value

    def compute_init_value(self, out):
        raise NotImplementedError

    def get_derivative(self):
        """The derivative, or the record's empty expression where there is none."""
        if self.derivative is None:
            made = self.make_derivative()
            self.derivative = None if isinstance(made, Nothing) else made
        return self.derivative or Nothing(self.record)

    def make_derivative(self):
        return None

    def convert(self):
        """The expression that stands in this one's place during the integration."""
        return self

    def print(self):
        raise NotImplementedError

    def _stub(self, signature, marks):
        self.record.stderr.write(b"#(ERR) " + signature + b" called" + marks + b"\n")
        raise Ended(1)


def _no_value(record):
    record.stderr.write(
        b"#(ERR) An expression without a value was used (a step function, or a derivative that"
        b" does not exist)\n")
    raise Ended(1)


class _WithoutTerms(Expr):
    def get_term(self, k):
        _no_value(self.record)

    def sum_result(self, out):
        pass

    def compute_init_value(self, out):
        pass


class Nothing(_WithoutTerms):
    """The empty expression."""

    def print(self):
        return b"[NULL]"


class StepFunction(Nothing):
    """What a step function leaves in the tree; it never gets as far as the integration."""


class Equation(_WithoutTerms):
    """A reference to an equation by name; conversion puts the variable in its place."""

    def __init__(self, record, name):
        super().__init__(record)
        self.name = name

    def convert(self):
        variable = self.record.equations.get(self.name)
        if variable is None:
            self.record.stderr.write(
                b"\n#(ERR) Reference to undefined equation \"" + self.name + b"\"\n")
            raise Ended(1)
        return variable

    def print(self):
        return self.name


class Number(Expr):
    is_number = True

    def __init__(self, record, constant):
        super().__init__(record)
        assign(self.value.p, constant.p)

    def get_term(self, k):
        return self.record.zero if k else self.value

    def sum_result(self, out):
        assign(out.p, self.value.p)

    def compute_init_value(self, out):
        assign(out.p, self.value.p)

    def make_derivative(self):
        return Number(self.record, self.record.zero)

    def print(self):
        return number(self.record, self.value)


class Time(Expr):
    def reset_terms(self):
        if self.term_stamp != self.record.stamp:
            self.term_stamp = self.record.stamp
            assign(self.value.p, self.result.p)

    def get_term(self, k):
        self.reset_terms()
        if k == 0:
            return self.value
        # Term 1 is 1 whatever the step.
        return self.record.one if k == 1 else self.record.zero

    def sum_result(self, out):
        assign(out.p, self.record.time.p)

    def compute_init_value(self, out):
        assign(out.p, self.record.zero.p)

    def make_derivative(self):
        return Number(self.record, self.record.one)

    def print(self):
        return b"t"


class Differential(Expr):
    """A variable y with y' = rhs."""

    def __init__(self, record, name, rhs=None):
        super().__init__(record)
        self.name = name
        self.rhs = Nothing(record) if rhs is None else rhs
        self.printed = record.is_printed(name)
        self.uses_step_function = False

    def set_start(self, start):
        assign(self.value.p, start.p)
        assign(self.result.p, start.p)
        assign(self.init_value.p, start.p)

    def reset_terms(self):
        record = self.record
        if self.term_stamp != record.stamp:
            self.term_stamp = record.stamp
            self.valid = 0
            if not self.terms:
                self.terms.append(Mpf())
            # After a rejected step the retry starts from the same value.
            if record.previous_stamp != record.stamp:
                assign(self.terms[0].p, self.result.p)
                assign(self.value.p, self.result.p)

    def get_dy(self, k, out):
        mul(out.p, self.rhs.get_term(k - 1).p, self.record.step_factor(k).p)

    def sum_result(self, out):
        """Adds terms until a run of them is small against the sum."""
        record = self.record
        assign(out.p, record.zero.p)
        limit, magnitude = Mpf(), Mpf()
        k = zeros = 0
        while k < record.term_count and zeros < record.zero_terms:
            term = self.get_term(k)
            add(out.p, out.p, term.p)
            mul(limit.p, out.p, record.accuracy.p)
            absolute(limit.p, limit.p)
            absolute(magnitude.p, term.p)
            if cmp(magnitude.p, limit.p) < 0:
                if not record.use_all_terms or k >= record.term_count - record.zero_terms:
                    zeros += 1
            else:
                zeros = 0
            k += 1
        record.order = max(record.order, k - zeros)

    def compute_init_value(self, out):
        assign(out.p, self.value.p)

    def make_derivative(self):
        return self.rhs

    def last_term(self):
        """The index of the last term but one that was computed, and the term."""
        index = self.valid - 1
        return index, self.terms[index] if index >= 0 else None

    def cached_terms(self):
        return self.valid + 1

    def print(self):
        return b"[" + self.name + b"]"

    def dump_tree(self):
        return b"#(TREEDUMP) DIF: \t%s' = %s & %s;\n" % (
            self.name, self.rhs.print(), number(self.record, self.value))


class Algebraic(Differential):
    """A variable x = rhs; a constant over each step to the series of the others."""

    def __init__(self, record, name, rhs=None):
        super().__init__(record, name, rhs)
        self.under_way = False

    def reset_terms(self):
        if self.term_stamp != self.record.stamp:
            self.term_stamp = self.record.stamp
            assign(self.value.p, self.result.p)

    def get_term(self, k):
        self.reset_terms()
        return self.record.zero if k else self.value

    def sum_result(self, out):
        assign(out.p, self.rhs.get_value().p)

    def _ask_rhs(self, ask):
        if self.under_way:
            self.record.stderr.write(
                b"#(ERR) Algebraic equation \"" + self.name + b"\" depends on itself\n")
            raise Ended(1)
        self.under_way = True
        answer = ask()
        self.under_way = False
        return answer

    def compute_init_value(self, out):
        assign(out.p, self._ask_rhs(self.rhs.get_init_value).p)

    def make_derivative(self):
        return self._ask_rhs(self.rhs.get_derivative)

    def last_term(self):
        return -1, None

    def cached_terms(self):
        return 0

    def print(self):
        return b"{" + self.name + b"}"

    def dump_tree(self):
        return b"#(TREEDUMP) ALG: \t%s = %s;\n" % (self.name, self.rhs.print())


class BinOp(Expr):
    symbol = None

    def __init__(self, record, left, right):
        super().__init__(record)
        self.left = left
        self.right = right
        self.scratch = Mpf()

    def operate(self, out, a, b):
        raise NotImplementedError

    def sum_result(self, out):
        # Both first: they may lead back to this node's result.
        a = mpf.copy(self.left.get_value())
        self.operate(out, a, self.right.get_value())

    def compute_init_value(self, out):
        a = mpf.copy(self.left.get_init_value())
        self.operate(out, a, self.right.get_init_value())

    def convert(self):
        right = self.right.convert()
        left = self.left.convert()
        return binary(self.record, self.symbol, left, right)

    def print(self):
        return b"(%s %s %s)" % (self.left.print(), self.symbol, self.right.print())


class Plus(BinOp):
    symbol = b"+"

    def get_dy(self, k, out):
        add(out.p, self.left.get_term(k).p, self.right.get_term(k).p)

    def operate(self, out, a, b):
        add(out.p, a.p, b.p)

    def make_derivative(self):
        return binary(
            self.record, b"+", self.left.get_derivative(), self.right.get_derivative())


class Minus(BinOp):
    symbol = b"-"

    def get_dy(self, k, out):
        sub(out.p, self.left.get_term(k).p, self.right.get_term(k).p)

    def operate(self, out, a, b):
        sub(out.p, a.p, b.p)

    def make_derivative(self):
        return binary(
            self.record, b"-", self.left.get_derivative(), self.right.get_derivative())


def _derivatives_of_factors(node):
    """a' b and a b'."""
    return (
        binary(node.record, b"*", node.left.get_derivative(), node.right),
        binary(node.record, b"*", node.left, node.right.get_derivative()))


class Multiply(BinOp):
    symbol = b"*"

    def get_dy(self, k, out):
        """a[k] b[0] + a[k-1] b[1] + ... + a[0] b[k], in this order."""
        left, right, product = self.left.get_term, self.right.get_term, self.scratch
        assign(out.p, self.record.zero.p)
        for j in range(k + 1):
            mul(product.p, left(k - j).p, right(j).p)
            add(out.p, out.p, product.p)

    def operate(self, out, a, b):
        mul(out.p, a.p, b.p)

    def compute_init_value(self, out):
        # The right factor first: asking may create variables, or end the run.
        b = mpf.copy(self.right.get_init_value())
        self.operate(out, b, self.left.get_init_value())

    def make_derivative(self):
        return binary(self.record, b"+", *_derivatives_of_factors(self))


class Divide(BinOp):
    symbol = b"/"

    def get_dy(self, k, out):
        """(a[k] - (c[0] b[k] + ... + c[k-1] b[1])) / b[0] with the quotient's own terms c."""
        right, product, total = self.right.get_term, self.scratch, Mpf()
        for j in range(k):
            mul(product.p, self.get_term(j).p, right(k - j).p)
            add(total.p, total.p, product.p)
        sub(total.p, self.left.get_term(k).p, total.p)
        mpf.div(out, total, right(0))

    def operate(self, out, a, b):
        mpf.div(out, a, b)

    def make_derivative(self):
        above = binary(self.record, b"-", *_derivatives_of_factors(self))
        below = binary(self.record, b"*", self.right, self.right)
        return binary(self.record, b"/", above, below)


class UnOp(Expr):
    def __init__(self, record, operand):
        super().__init__(record)
        self.operand = operand

    def get_dy(self, k, out):
        self._stub(b"virtual void UnOp::GetDY(int, __mpf_struct (&)[1])", b"!")

    def sum_result(self, out):
        self._stub(b"virtual void UnOp::Result(__mpf_struct (&)[1], bool)", b"!")


class UnMinus(UnOp):
    def get_dy(self, k, out):
        neg(out.p, self.operand.get_term(k).p)

    def sum_result(self, out):
        neg(out.p, self.operand.get_value().p)

    def compute_init_value(self, out):
        neg(out.p, self.operand.get_init_value().p)

    def make_derivative(self):
        return unary(self.record, "negation", self.operand.get_derivative())

    def convert(self):
        return unary(self.record, "negation", self.operand.convert())

    def print(self):
        return b"(-" + self.operand.print() + b")"


node_classes.update({
    "number": Number, "negation": UnMinus, b"+": Plus, b"-": Minus, b"*": Multiply, b"/": Divide})
