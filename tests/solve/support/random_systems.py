"""Random differential equations with known solutions, made from a seed.

The solutions come first: smooth functions of t, later ones often made of earlier ones. Each equation
is the derivative of its solution, with parts that equal another solution replaced by that variable,
and with further terms that vanish on the solution but couple the variables, stable and unstable ones.
What the program prints must be the solutions, and so does every definition on the way.
"""

import random
from dataclasses import dataclass, field
from fractions import Fraction

import mpmath

from smooth_expressions import (
    ONE, PI, TIME, TWO, ZERO, derivative, minus, number, over, plus, power, replace, square, text, times,
    value, variable)

#: the solutions are looked at in so many points before they are taken
SAMPLES = 24
SAMPLE_DIGITS = 20
#: beyond it a solution says more about the range of numbers than about its digits
LARGEST_LOG10 = 300
#: how far solutions may rise or fall on their way, as log10
WIDEST_LOG10 = 60
#: how much a disturbance may grow by the terms added, as a natural logarithm
GROWTHS = (0.5, 3, 3, 10, 30)


@dataclass
class System:
    equations: str
    options: list
    digits: int
    #: of the interval
    length: Fraction
    #: of the column: its exact value as an expression of t
    columns: dict
    #: the exact times of the rows as expressions without t; None: the solver's own
    times: list = field(default=None)


class SystemMaker:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.definitions = {}    # name: (its text, its value as an expression of t)
        self.parameters = {}     # name: value
        self.functions = []

    # -----------------------------------------------------------------------------------
    # Functions of t

    def chance(self, probability):
        return self.random.random() < probability

    def fraction(self, largest=3):
        numerator = self.random.choice([n for n in range(-7, 8) if n != 0])
        return Fraction(numerator, self.random.choice((1, 2, 3, 4, 5, 7, 8, 10)))*largest/7

    def constant(self):
        if self.chance(0.1):
            return self.random.choice((PI, ("sqrt", TWO), ("exp", number(Fraction(1, 3))), over(PI, TWO)))
        return number(self.fraction())

    def argument(self):
        """t, moved and scaled to the interval; now and then a power of it, so that series have gaps."""
        kind = self.random.random()
        scale = number(abs(self.fraction())/self.length*self.random.choice((1, 2, 5)))
        moved = minus(TIME, number(self.middle))
        if kind < 0.4:
            return TIME if self.is_near_zero else times(scale, moved)
        if kind < 0.75:
            return times(scale, moved)
        exponent = self.random.choice((2, 2, 3, 4, 5, 7, 12, 30))
        return power(over(moved, number(abs(self.length))), exponent)

    def bell(self):
        """A pulse somewhere on the way, sometimes a narrow one."""
        centre = number(self.start + (self.end - self.start)*Fraction(self.random.randint(1, 9), 10))
        width = number(self.length/self.random.choice((2, 5, 10, 40)))
        u = over(minus(TIME, centre), width)
        return self.random.choice((
            ("exp", minus(ZERO, square(u))),
            over(ONE, ("cosh", u)),
            over(ONE, plus(ONE, square(u))),
            ("tanh", u),
            ("erf", u),
            ("atan", u)))

    def shape(self, s):
        """A smooth function of s, defined everywhere."""
        positive = plus(ONE, square(s))
        positive = self.random.choice((
            positive, plus(TWO, ("sin", s)), plus(number(Fraction(5, 4)), ("cos", s)),
            plus(number(Fraction(1, 100)), square(s)), ("cosh", s)))
        bounded = self.random.choice((
            over(s, plus(ONE, square(s))), over(("sin", s), TWO), times(number(Fraction(3, 4)), ("tanh", s))))
        return self.random.choice((
            lambda: ("sin", s), lambda: ("cos", s), lambda: ("exp", s), lambda: ("exp", minus(ZERO, s)),
            lambda: ("atan", s), lambda: ("tanh", s), lambda: ("asinh", s), lambda: ("erf", s),
            lambda: ("sinh", s), lambda: ("cosh", s),
            lambda: ("exp", minus(ZERO, square(s))),
            lambda: over(ONE, positive), lambda: ("sqrt", positive), lambda: ("ln", positive),
            lambda: ("cbrt", positive), lambda: ("cbrt", minus(ZERO, positive)),
            lambda: power(positive, self.fraction()), lambda: power(positive, bounded),
            lambda: power(TWO, s), lambda: power(positive, -2), lambda: power(s, 3),
            lambda: ("asin", bounded), lambda: ("acos", bounded), lambda: ("atanh", bounded),
            lambda: ("tan", bounded), lambda: ("cotan", plus(ONE, bounded)),
            lambda: ("acosh", plus(ONE, positive)), lambda: ("argcotanh", plus(ONE, positive)),
            lambda: ("acotan", positive), lambda: ("cotanh", positive),
            lambda: ("atan2", s, positive), lambda: ("atan2", positive, s),
            lambda: over(s, positive), lambda: times(s, ("sin", s)),
        ))()

    def solution(self, earlier):
        kind = self.random.random()
        if kind < 0.15:
            u = self.bell()
        elif kind < 0.25:
            u = plus(self.constant(), times(self.constant(), self.argument()))
        elif earlier and kind < 0.5:
            u = self.shape(times(self.constant(), self.random.choice(earlier)))
        elif earlier and kind < 0.65:
            a, b = self.random.choice(earlier), self.shape(self.argument())
            u = self.random.choice((times(a, b), plus(a, b), minus(times(self.constant(), a), b)))
        elif kind < 0.8:
            u = self.shape(self.shape(self.argument()))
        else:
            u = self.shape(self.argument())
        if self.chance(0.3):
            u = times(self.constant(), u)
        if self.chance(0.15):
            u = plus(self.constant(), u)
        if self.chance(0.12):
            u = times(number(Fraction(10)**self.random.choice((-250, -40, -20, -6, 6, 20, 40, 250))), u)
        return u

    def samples(self, e):
        """Values along the way, None where there is none."""
        found = []
        with mpmath.workdps(SAMPLE_DIGITS):
            for i in range(SAMPLES + 1):
                time = self.first + (self.last - self.first)*Fraction(i, SAMPLES)
                try:
                    found.append(value(e, mpmath.mpf(time.numerator)/time.denominator))
                except (ValueError, ZeroDivisionError, OverflowError):
                    return None
        fits = all(isinstance(v, mpmath.mpf) and mpmath.isfinite(v) for v in found)
        return found if fits else None

    def is_moderate(self, e):
        found = self.samples(e)
        if found is None:
            return False
        largest, smallest = (choose(map(abs, found)) for choose in (max, min))
        if largest == 0:
            return False
        with mpmath.workdps(SAMPLE_DIGITS):
            if abs(mpmath.log10(largest)) > LARGEST_LOG10:
                return False
            return smallest == 0 or mpmath.log10(largest/smallest) < WIDEST_LOG10

    def make_solutions(self):
        found, count = [], self.random.choice((1, 2, 2, 3, 3, 4))
        while len(found) < count:
            u = self.solution(found)
            if u not in found and derivative(u) != ZERO and self.is_moderate(u) \
                    and self.is_moderate(derivative(u)):
                found.append(u)
        return found

    # -----------------------------------------------------------------------------------
    # Equations

    def size(self, e):
        return max(map(abs, self.samples(e)))

    def vanishing_term(self, i, solutions, states):
        """A term that is zero on the solution: a function of x_j - u_j, with a coefficient that lets a
        disturbance grow by a chosen factor at most."""
        j = self.random.randrange(len(solutions))
        u = self.with_variables(solutions[j], {e: v for e, v in states.items() if e != solutions[j]})
        gap = minus(states[solutions[j]], u)
        with mpmath.workdps(SAMPLE_DIGITS):
            size_i, size_j = self.size(solutions[i]), self.size(solutions[j])
            ratio = Fraction(10)**int(mpmath.floor(mpmath.log10(size_i/size_j)))
            scale_j = Fraction(10)**int(mpmath.floor(mpmath.log10(size_j)))
        growth = Fraction(self.random.choice(GROWTHS))/self.length
        if j == i and self.chance(0.5):
            growth = -4*growth
        elif self.chance(0.5):
            growth = -growth
        scaled = over(gap, number(scale_j))
        term = self.random.choice((
            lambda: gap,
            lambda: gap,
            lambda: times(number(scale_j), ("sin", scaled)),
            lambda: times(number(scale_j), square(scaled)),
            lambda: times(number(scale_j), minus(("exp", scaled), ONE)),
            lambda: times(gap, ("cos", states[solutions[i]])) if size_i < 1000 else gap,
            lambda: times(gap, ("exp", minus(ZERO, square(over(states[solutions[i]],
                                                               number(scale_j*ratio)))))),
            lambda: times(gap, ("atan", TIME)),
        ))()
        return times(number(growth*ratio/len(solutions)), term)

    def with_variables(self, e, states):
        """Writes variables for parts of e that equal their solutions, most of the time."""
        return replace(e, states, lambda: self.chance(0.7))

    def right_hand_side(self, i, solutions, states, speed):
        e = self.with_variables(speed, states)
        for _ in range(self.random.choice((0, 1, 1, 2))):
            e = plus(e, self.vanishing_term(i, solutions, states))
        return e

    def define_parts(self, e, exact):
        """Makes a definition or a parameter of some part of e now and then; both are e's two forms."""
        if e[0] in ("+", "*", "/") and self.chance(0.15):
            part, of_time = e[1], exact[1]
            if part[0] == "number" and part not in (ZERO, ONE):
                name = f"p{len(self.parameters)}"
                self.parameters[name] = part
                return (e[0], variable(name), *e[2:])
            if part[0] not in ("number", "pi", "t", "variable") and derivative(of_time) != ZERO:
                name = f"d{len(self.definitions)}"
                self.definitions[name] = (text(part), of_time)
                return (e[0], variable(name), *e[2:])
        if e[0] in ("number", "pi", "t", "variable"):
            return e
        return (e[0], *(self.define_parts(a, b) for a, b in zip(e[1:], exact[1:])))

    def constant_text(self, e, time):
        """e at a constant time, as text."""
        return text(replace(e, {TIME: number(time)}, lambda: True))

    def function_text(self, e):
        """e, perhaps by way of a function of one's own."""
        if e[0] not in ("+", "*") or not self.chance(0.2):
            return text(e)
        name = f"f{len(self.functions)}"
        self.functions.append(f"function {name}(u, v) = u {e[0]} v;")
        return f"{name}({text(e[1])}, {text(e[2])})"

    def make_equations(self, solutions):
        names = [f"x{i}" for i in range(len(solutions))]
        states = {u: variable(name) for u, name in zip(solutions, names)}
        exact = {name: u for u, name in zip(solutions, names)}
        lines, columns, starts = [], {}, []
        for i, (name, u) in enumerate(zip(names, solutions)):
            speed = derivative(u)
            columns[name] = u
            second = derivative(speed)
            if self.chance(0.2) and second != ZERO and self.is_moderate(second):
                rhs = self.with_variables(second, states)
                if self.chance(0.5):
                    rhs = plus(rhs, self.vanishing_term(i, solutions, states))
                columns[name + "'"] = speed
                lines.append(f"{name}'' = {self.function_text(rhs)};")
                starts += [(name, u), (name + "'", speed)]
                continue
            rhs = self.right_hand_side(i, solutions, states, speed)
            rhs = self.define_parts(rhs, self.of_time(rhs, exact))
            if self.uses_statements:
                lines.append(f"{name}' = {self.function_text(rhs)};")
                starts.append((name, u))
            else:
                lines.append(f"{name}' = {self.function_text(rhs)} & {self.constant_text(u, self.start)};")
        point = self.constant_text(TIME, self.start)
        lines += [f"{name}({point}) = {self.constant_text(e, self.start)};" for name, e in starts]
        for name, (definition, e) in self.definitions.items():
            lines.append(f"{name} = {definition};")
            columns[name] = e
        lines += [f"{name} = {text(e)};" for name, e in self.parameters.items()]
        return "\n".join(self.functions + lines) + "\n", columns

    def of_time(self, e, exact):
        """e with the solutions in the place of the variables."""
        if e[0] == "variable":
            return exact[e[1]]
        if e[0] in ("number", "pi", "t"):
            return e
        return (e[0], *(self.of_time(a, exact) for a in e[1:]))

    # -----------------------------------------------------------------------------------
    # Times and options

    def choose_interval(self):
        self.length = self.random.choice((
            Fraction(1, 1000), Fraction(1, 3), Fraction(1), Fraction(1), Fraction(2), Fraction(5),
            Fraction(10), Fraction(30)))
        self.first = self.random.choice((
            Fraction(0), Fraction(0), Fraction(0), Fraction(1, 3), Fraction(-2), Fraction(7), Fraction(-1),
            Fraction(1000), Fraction(-12345, 10), Fraction(10)**12))
        self.is_near_zero = abs(self.first) + self.length < 12
        self.last = self.first + self.length
        self.middle = self.first + self.length*Fraction(self.random.randint(-2, 12), 10)
        if self.chance(0.3):
            self.first, self.last = self.last, self.first
        self.start, self.end = self.first, self.last
        self.uses_statements = self.chance(0.4)
        if self.uses_statements and self.chance(0.5):
            self.start = self.first + (self.last - self.first)*Fraction(self.random.randint(1, 9), 10)

    def choose_rows(self):
        """The options, and the times."""
        first, last, way = self.first, self.last, self.last - self.first
        kind = self.random.randrange(6)
        if kind == 0:
            part = self.random.choice((Fraction(1, 3), Fraction(1, 7), Fraction(3, 10)))
            multiples = [first + way*part*i for i in range(int(1/part) + 1)]
            rows = multiples if multiples[-1] == last else [*multiples, last]
            return ["--every", str(abs(way*part))], rows
        if kind == 1:
            count = self.random.randint(1, 9)
            return ["--points", str(count)], [first + way*Fraction(i, count) for i in range(count + 1)]
        if kind == 2:
            parts = sorted(Fraction(self.random.randint(0, 1000), 1000) for _ in range(4))
            rows = [first + way*part for part in dict.fromkeys(parts)]
            return ["--at", ",".join(map(str, rows))], rows
        if kind == 3:
            return ["--last"], [last]
        if kind == 4:
            return ["--steps"], None
        return ["--points", "3"], [first + way*Fraction(i, 3) for i in range(4)]

    def choose_digits(self):
        return self.random.choice((
            1, 2, 3, 4, 5, 6, 8, 10, 12, 15, 15, 15, 16, 20, 25, 30, 40, 50, 70, 100, 120))

    def make(self):
        self.choose_interval()
        equations, columns = self.make_equations(self.make_solutions())
        options, rows = self.choose_rows()
        digits = self.choose_digits()
        options += [f"--from={self.first}", f"--to={self.last}", "--digits", str(digits), "--format",
                    self.random.choice(("json", "csv", "table"))]
        return System(equations, options, digits, self.length, columns, rows)


def make_system(seed):
    return SystemMaker(seed).make()
