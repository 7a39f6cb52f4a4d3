"""Inputs made at random: equations, options and now and then a settings file, one per seed."""

import random

FUNCTIONS = (
    "cos", "tg", "arctg", "acotan", "sinh", "cosh", "tgh", "exp", "exp", "cos", "atan", "tanh",
    "argtanh", "argcotgh", "cotanh")
# These end the run for many arguments, or always.
PARTIAL_FUNCTIONS = (
    "sin", "sin", "tan", "cotan", "asin", "acos", "acosh", "asinh", "sqrt", "sqrt", "ln", "ln",
    "trunc", "acosh", "atanh")
NUMBERS = (
    "0", "1", "1", "2", "3", "10", ".5", "0.25", "3.25", "1e-3", "2.5E+1", "pi", "1.", "1e-11",
    "0.1", "7", "1e3", "1/3", "0.9999999999999")
RARE_NUMBERS = (
    "4294967296", "12345678901234567890", "99999999999999999999.5", "4.99999999999999999999",
    "5.99999999999999999999e-5", "0.99999999999999999949", "1e999999", "1e-999999", "2147483647",
    "2147483648", "9.5e300", "00.10e-002")
NAMES = ("a", "b", "x", "y", "y1", "y2", "z", "_u", "Y", "alpha", "xy2")
# What may come into the text where it does not belong.
DAMAGE = (
    ";", "", "(", ")", "^", "'", "&", "=", "[", "/* ", "//", "1.5", "t", "$", "\n", "*", ".", "1e",
    "y''2", "y'(1) = 2;", "[t < 1, 2 : 3; 4 : 5]", "[y < pi : 2*3]", "/* \n */", "// note\n",
    "\t\v\f\r ", "sin", "ln(-1)", "1/0", "w", "'10001")

OPTIONS = {
    "-3": ("1", "2", "3"),
    "-A": ("1",),
    "-D": ("1", "2", "3", "3"),
    "-F": ("-3", "-7", "0.1", "0.3", "2"),
    "-G": ("plot",),
    "-L": ("1",),
    "-N": ("y:", "%1:x:", "z:a:"),
    "-O": ("0",),
    "-P": ("y:", "x:y:%0:", "a:b:x:", "2:"),
    "-R": ("0", "1", "0", "5"),
    "-S": ("1", "2", "3"),
    "-T": ("1",),
    "-U": ("1",),
    "-W": ("53", "64", "100", "128", "200", "300"),
    "-X": ("1",),
    "-a": ("1e-30", "1e-20", "1e-15", "1e-5", "1e-3", "1e-8"),
    "-d": ("1",),
    "-f": ("1", "1", "0"),
    "-g": ("png", "x11", "svg"),
    "-i": ("0", "0", "1"),
    "-o": ("4", "8", "10", "15", "20", "40", "60"),
    "-p": ("-3", "0", "1", "3", "8", "15", "20", "25", "40"),
    "-r": ("y:3:0", "x:1:0.5", "nosuch:2:0", ":3:0"),
    "-s": ("0.5", "0.25", "0.01", "2", "1e-3", "-0.1", "0.3"),
    "-t": ("0", "0.5", "2", "3", "0.1", "-0.5", "1e-3"),
    "-w": ("0", "-3", "-2", "1", "2", "5", "8", "10", "20", "30", "11", "60"),
    "-x": ("2", "5", "10", "40"),
    "-z": ("1", "2", "3", "6"),
}
# Odd arguments, which may stand anywhere among the options.
ODD_ARGUMENTS = (
    ("-h",), ("-v",), ("-hv",), ("-Z",), ("-t",), ("-f1",), ("-O0", "-d1"), ("-f", "2"), ("--",),
    ("-",), ("missing.varno",), ("another",), ("-o", "text"), ("-t", "text"), ("-t", ""),
    ("-t", "5abc"), ("-s", "0.25x"), ("-s", "0"), ("-F", ".1"), ("-F", "text"), ("-a", "0x1p-20"),
    ("-r", "y"), ("-r", "y:2"), ("-r", "y:x:y:1"), ("-w", " 12"), ("-p", "+6"), ("-G", ""),
    ("-a", "inf"), ("-s", "1e999"), ("-O", "4294967297"), ("-w", "99999999999", "-h"),
    ("-o", "-9", "-f", "1"), ("-z", "0", "-f", "1"), ("-z", "-3", "-f", "1"))
SETTINGS = (
    "TMAX = 2", "tmax: 5e-1  # soon", "MAX ORDER = 20", "printord = 0", "ALL3DVALUES=1",
    "ACCURACY = 1e-20", "DUMPTREE = 1", "DUMPDY = 1", "FIXEDSTEP = 1",
    "GNUPLOT_FILENAME = my_plot", "GNUPLOT_OUTPUT: png", "SIMPLIFYSMALLNUMBERS = 0",
    "PRINTONLYTMAX = 1", "PRINTNUMCHARS = 6", "INITIALINTSTEP = 2e-1", "STOPSTEADYSTATE = 2",
    "PRINTNUMWIDTH = 20", "GMPWORDSIZE = 128", "ZEROTAYLORTERMS = 3", "PRINTTEMPQ = 1",
    "PRINTEVERYRESULT = -4", "STIFFSYSTEMDETECTEXPDIFF = 6", "USEALLTERMS = 1",
    "STIFFDETECTEVERYSTEP = 1", "FOO = 1", "TMAX := 5", "; nothing", "", "   ", "TMAX", "= 3")


class RandomSystem:
    """text: the equations; arguments: the options and the name of the input; settings: the text
    of the settings file, or None."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        count = self.random.choice((1, 1, 2, 2, 2, 3, 3, 4, 5))
        self.names = self.random.sample(NAMES, count)
        # What a system is like throughout: without functions, or with partial ones, say.
        self.functions = self.random.choice((0, 0.05, 0.15, 0.25))
        self.partial = self.random.choice((0, 0, 0.1, 0.3))
        self.algebraic = self.random.choice((0, 0, 0.2, 0.5))
        self.depth = self.random.choice((1, 2, 2, 3, 3, 4))
        self.text = "".join(map(self.statement, self.names))
        if self.random.random() < 0.06:
            self.damage()
        self.text = self.text.encode()
        if self.random.random() < 0.02:
            self.add_odd_byte()
        self.arguments = [*self.options(), "input.varno"]
        self.settings = None
        if self.random.random() < 0.15:
            lines = self.random.sample(SETTINGS, self.random.randint(1, 4))
            self.settings = "\n".join(lines) + self.random.choice(("\n", ""))

    def describe(self):
        text = self.text.decode("latin-1")
        return f"arguments {self.arguments}, settings {self.settings!r}\n{text}"

    def number(self):
        return self.random.choice(NUMBERS if self.random.random() < 0.97 else RARE_NUMBERS)

    def leaf(self):
        kind = self.random.random()
        if kind < 0.3:
            return self.number()
        if kind < 0.4:
            return "t"
        name = self.random.choice(self.names)
        return name + self.random.choice(("", "", "", "", "", "'"))

    def function(self):
        partial = self.random.random() < self.partial
        return self.random.choice(PARTIAL_FUNCTIONS if partial else FUNCTIONS)

    def expression(self, depth, leaf):
        kind = self.random.random()
        if depth == 0 or kind < 0.1:
            return leaf()
        first = self.expression(depth - 1, leaf)
        if kind < 0.18:
            return self.random.choice("--+") + first
        if kind < 0.26:
            return f"({first})"
        if kind < 0.26 + self.functions:
            return f"{self.function()}({first})"
        operator = self.random.choice("+++--****/")
        if self.random.random() < 0.3:
            first = f"({first})"
        return f"{first} {operator} {self.expression(depth - 1, leaf)}"

    def constant(self):
        return self.expression(self.random.choice((0, 0, 1, 2)), self.number)

    def statement(self, name):
        algebraic = self.random.random() < self.algebraic
        order = "" if algebraic else self.random.choice(("'",)*8 + ("''", "'2", "'3", "'1"))
        text = f"{name}{order} = {self.expression(self.depth, self.leaf)}"
        if self.random.random() < 0.85:
            text += f" & {self.constant()}"
        text += ";\n"
        if self.random.random() < 0.15:
            marks = self.random.choice(("", "'", "''", order))
            start = f"{name}{marks}({self.random.choice('00001')}) = {self.constant()};\n"
            text = self.random.choice((text + start, start + text))
        return text

    def damage(self):
        """Puts something where it does not belong, or a piece out of the text."""
        place = self.random.randrange(len(self.text))
        length = self.random.choice((0, 0, 1, 2))
        self.text = self.text[:place] + self.random.choice(DAMAGE) + self.text[place + length:]

    def add_odd_byte(self):
        place = self.random.randrange(len(self.text))
        self.text = self.text[:place] + bytes([self.random.randrange(256)]) + self.text[place:]

    def options(self):
        names = self.random.sample(sorted(OPTIONS), self.random.randint(0, 6))
        selected = [(name, self.random.choice(OPTIONS[name])) for name in names]
        # A variable that stays 0 has no end of halved steps, and happens often here.
        if self.random.random() < 0.5:
            selected.append(("-f", "1"))
        if self.random.random() < 0.08:
            selected.insert(
                self.random.randint(0, len(selected)), self.random.choice(ODD_ARGUMENTS))
        return [text for option in selected for text in option]
