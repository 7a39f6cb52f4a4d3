"""The watch for a period of one equation.

Its sample buffer never serves: with room for 2 or more samples the set-up dies of a segmentation
fault, with less room no sample is ever stored. What remains visible is that the watch asks for
values, and so lets time pass in the right-hand side of the watched equation.
"""

from ends import KilledBySignal
from mpf import Mpf, absolute, cmp, sub

SMALLEST_FATAL_BUFFER = 2


class PeriodWatch:
    def __init__(self, record):
        self.record = record
        self.derivative = None
        if record.period_count <= 0:
            return
        self.equation = record.equations.get(record.period_equation)
        if self.equation is None:
            record.period_count = 0
            record.stderr.write(
                b"#(WARN) Equation " + record.period_equation
                + b" doesn't exist. The period. detection is disabled.\n")
        elif record.period_buffer >= SMALLEST_FATAL_BUFFER:
            raise KilledBySignal("SIGSEGV")

    def found(self):
        record = self.record
        if record.period_count < 1:
            return False
        if self.derivative is None:
            self.derivative = self.equation.get_derivative()
        distance = Mpf()
        sub(distance.p, self.derivative.get_value().p, record.accuracy.p)
        absolute(distance.p, distance.p)
        if cmp(distance.p, record.accuracy.p) <= 0:
            self.equation.get_value()
        return False
