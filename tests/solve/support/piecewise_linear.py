"""Random systems that are linear on each side of a plane and between some times, with their exact
solutions: a matrix exponential on each piece, and the times of switches as roots on them.
"""

import random
from fractions import Fraction

import mpmath

STEP = Fraction(1, 32)
#: of a Taylor polynomial over a step; (15/32)^50/50! is far below any digit looked at
TERMS = 50
#: a plane that is touched, or crossed more slowly than this, is nobody's test
LEAST_SPEED = 0.02
#: what is asked of the sign s of the distance u = c x - d: text, and the value for each sign as
#: (factor of u, constant)
KINDS = {
    "sign({u})": {-1: (0, -1), 1: (0, 1)},
    "if({u} < 0, 2, -1/2)": {-1: (0, 2), 1: (0, Fraction(-1, 2))},
    "abs({u})": {-1: (-1, 0), 1: (1, 0)},
    "max({u}, 0)": {-1: (0, 0), 1: (1, 0)},
    "min(-({u})/2, {u})": {-1: (1, 0), 1: (Fraction(-1, 2), 0)},
}


class Unsuitable(Exception):
    """A system whose solution touches its plane, or nearly so."""


def _mpf(number):
    return mpmath.mpf(number.numerator)/number.denominator


class System:
    """x' = A x + b + p kind(c x - d), and a pulse in the first equation: for times and rows."""

    def __init__(self, seed):
        rng = random.Random(seed)
        number = lambda most, denominator=4: Fraction(rng.randint(-most, most), denominator)
        self.size = rng.randint(1, 3)
        indices = range(self.size)
        self.names = ["x", "y", "z"][:self.size]
        self.matrix = [[number(6) + 3*(j - i) - (i == j) for j in indices] for i in indices]
        self.constants = [number(8) for _ in indices]
        self.normal = [number(8) for _ in indices]
        self.distance = number(6)
        self.kind = rng.choice(sorted(KINDS))
        self.push = [number(6) for _ in indices]
        self.pulse_begin = Fraction(rng.randint(1, 20), 10)
        self.pulse_end = self.pulse_begin + Fraction(rng.randint(1, 20), 10)
        self.pulse = number(8)
        self.start = [number(12) for _ in indices]
        self.end = Fraction(4)
        self.row_step = Fraction(1, 2)
        if not any(self.normal) or not any(self.push):
            raise Unsuitable

    def text(self):
        argument = " + ".join(f"({c})*{name}" for c, name in zip(self.normal, self.names))
        kind = self.kind.format(u="u")
        lines = [f"u = {argument} - ({self.distance});"]
        for i, name in enumerate(self.names):
            sum_ = " + ".join(f"({a})*{other}" for a, other in zip(self.matrix[i], self.names))
            pulse = f" + [t < {self.pulse_begin}, {self.pulse_end} : {self.pulse}]" if i == 0 else ""
            lines.append(f"{name}' = {sum_} + ({self.constants[i]}) + ({self.push[i]})*{kind}{pulse}"
                         f" & {self.start[i]};")
        return "\n".join(lines) + "\n"

    def generator(self, sign, pulsed):
        """The matrix M with (x, 1)' = M (x, 1)."""
        factor, constant = KINDS[self.kind][sign]
        size = self.size
        result = mpmath.zeros(size + 1)
        for i in range(size):
            for j in range(size):
                result[i, j] = _mpf(self.matrix[i][j] + self.push[i]*factor*self.normal[j])
            result[i, size] = _mpf(self.constants[i] + self.push[i]*(constant - factor*self.distance)
                                   + (self.pulse if pulsed and i == 0 else 0))
        return result

    def plane(self):
        return mpmath.matrix([[_mpf(c) for c in self.normal] + [-_mpf(self.distance)]])


class Solution:
    """The exact states at the rows, as far as the solution goes."""

    def __init__(self, system):
        self.system = system
        self.rows = []           # of states
        self.switches = 0
        self.sliding_at = None   # where the field points back on both sides
        self._follow()

    def _follow(self):
        system = self.system
        plane = system.plane()
        state = mpmath.matrix([_mpf(x) for x in system.start] + [1])
        u = (plane*state)[0]
        if abs(u) < LEAST_SPEED:
            raise Unsuitable
        sign = 1 if u > 0 else -1
        breaks = sorted({time for time in (system.pulse_begin, system.pulse_end) if time < system.end}
                        | {system.end})
        begin = Fraction(0)
        for end in breaks:
            pulsed = system.pulse_begin <= begin < system.pulse_end
            state, sign = self._follow_smoothly(state, sign, pulsed, begin, end)
            if self.sliding_at is not None:
                return
            begin = end
        self._add_rows(state, mpmath.zeros(system.size + 1), system.end, system.end + 1)

    def _add_rows(self, state, generator, begin, end):
        """From a time, which may be no fraction, up to another, without that."""
        while True:
            time = len(self.rows)*self.system.row_step
            if time > self.system.end or _mpf(time) >= (_mpf(end) if isinstance(end, Fraction) else end):
                return
            since = _mpf(time) - (_mpf(begin) if isinstance(begin, Fraction) else begin)
            self.rows.append((mpmath.expm(generator*since)*state)[:self.system.size])

    def _follow_smoothly(self, state, sign, pulsed, begin, end):
        """From a time to the next break, over all switches between."""
        system, plane = self.system, self.system.plane()
        time, end_time = _mpf(begin), _mpf(end)
        while True:
            generator = system.generator(sign, pulsed)
            crossing = self._first_crossing(state, generator, sign, end_time - time)
            until = end_time if crossing is None else time + crossing
            self._add_rows(state, generator, time, until)
            state = mpmath.expm(generator*(until - time))*state
            if crossing is None:
                return state, sign
            before = sign*(plane*generator*state)[0]
            after = sign*(plane*system.generator(-sign, pulsed)*state)[0]
            if before > -LEAST_SPEED or abs(after) < LEAST_SPEED:
                raise Unsuitable
            self.switches += 1
            if after > 0:
                self.sliding_at = until
                return state, sign
            time, sign = until, -sign
            if self.switches > 40:
                raise Unsuitable

    def _first_crossing(self, state, generator, sign, length):
        """The time until the plane; None when it is not reached."""
        plane = self.system.plane()
        step = _mpf(STEP)
        small = mpmath.expm(generator*step)
        first, since = state, mpmath.mpf(0)
        slope = plane*generator
        while since < length:
            second = small*first
            if sign*(plane*second)[0] <= 0:
                root = self._root(first, generator, sign, step) + since
                return root if root < length else None
            if sign*(slope*first)[0] < 0 < sign*(slope*second)[0]:
                lowest = min(sign*(plane*first)[0], sign*(plane*second)[0])
                if lowest < LEAST_SPEED + step*abs((slope*first)[0]):
                    raise Unsuitable  # nearly touched between
            first, since = second, since + step
        return None

    def _root(self, state, generator, sign, step):
        """Of the Taylor polynomial of the distance from the plane, by bisection and Newton's method."""
        plane = self.system.plane()
        coefficients = []
        for k in range(TERMS):
            coefficients.insert(0, (plane*state)[0])
            state = generator*state/(k + 1)
        low, high = mpmath.mpf(0), step
        # Where it leaves the plane the first value is nothing but rounding: the side is `sign`.
        for _ in range(7):
            middle = (low + high)/2
            low, high = (middle, high) if mpmath.polyval(coefficients, middle)*sign > 0 else (low, middle)
        root = (low + high)/2
        for _ in range(7):
            value, slope = mpmath.polyval(coefficients, root, derivative=True)
            root -= value/slope
        return root
