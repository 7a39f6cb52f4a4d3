"""Well-formed equations and options, made at random from a seed."""

import random

# The first group takes any argument. The second ends a run when it is asked for a value outside of its
# domain, or always in a differential equation: few runs would go further if it were not rare.
TOTAL_FUNCTIONS = ("cos", "atan", "acotan", "sinh", "cosh", "tanh", "exp")
PARTIAL_FUNCTIONS = (
    "sin", "tan", "cotan", "asin", "acos", "cotanh", "asinh", "acosh", "atanh", "argcotanh", "sqrt",
    "ln", "trunc")
PARTIAL_SHARE = 0.15


class Generator:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.names = [f"y{i}" for i in range(self.random.randint(1, 5))]

    def number(self):
        return self.random.choice(
            ("0", "1", "1", "2", "2", "10", ".5", ".5", "3.25", "1e-3", "2.5E+1", "pi", "pi"))

    def function(self):
        partial = self.random.random() < PARTIAL_SHARE
        return self.random.choice(PARTIAL_FUNCTIONS if partial else TOTAL_FUNCTIONS)

    def constant(self):
        return self.expression(2, self.number)

    def leaf(self):
        return self.number() if self.random.random() < 0.3 else self.random.choice(
            [*self.names, "t"])

    def expression(self, depth, leaf):
        kind = self.random.random()
        if depth == 0 or kind < 0.2:
            return leaf()
        first = self.expression(depth - 1, leaf)
        if kind < 0.3:
            return self.random.choice("+-") + first
        if kind < 0.4:
            return f"({first})"
        if kind < 0.55:
            return f"{self.function()}({first})"
        operator = self.random.choice("++++--****/")
        return f"{first} {operator} {self.expression(depth - 1, leaf)}"

    def statement(self, name):
        order = self.random.choice(("'", "'", "'", "'", "'", "'", "''", "'3", ""))
        text = f"{name}{order} = {self.expression(4, self.leaf)}"
        if self.random.random() < 0.8:
            text += f" & {self.constant()}"
        text += ";\n"
        if self.random.random() < 0.2:
            text += f"{name}{order and self.random.choice(('', order))}(0) = {self.constant()};\n"
        return text

    def equations(self):
        return "".join(map(self.statement, self.names))

    def options(self):
        choices = (
            ("-U", "1"), ("-i", "0"), ("-d", "1"), ("-D", "3"), ("-T", "1"), ("-W", "300"), ("-o", "10"),
            ("-z", "1"), ("-F", "-3"), ("-L", "1"), ("-3", "2"), ("-S", "2"), ("-s", "0.5"),
            ("-a", "1e-30"), ("-X", "1"))
        selected = self.random.sample(choices, 4)
        # A variable that stays 0 has no end of halved steps, and happens often here.
        if self.random.random() < 0.8:
            selected.append(("-f", "1"))
        return [text for option in selected for text in option]
