"""Rows of a solution as columns."""

from collections.abc import Mapping

from . import core
from .constants import expression

#: Up to so many digits numbers are doubles.
MOST_DIGITS_OF_DOUBLES = 15


class RunEnded(RuntimeError):
    """A run that ended early; str() says how far it got and why.

    reason  "singularity", "lost_domain", "out_of_range", "limit" or "interrupted"
    result  the rows before, a Result
    """

    def __init__(self, message, reason, result):
        super().__init__(message)
        self.reason = reason
        self.result = result


class Result(Mapping):
    """The columns of a solution by their names, "t" first: numpy arrays up to 15 digits, lists of
    mpmath's numbers beyond. A verified zero is 0.

    summary   steps, order, bits, digits, rows, verified, seconds, remark
    settings  what was set for this run, {"mu": 7}
    error     of a run of a sweep that ended early: RunEnded; else None
    """

    def __init__(self, reader, digits, settings):
        self._reader = reader
        self._digits = digits
        self._names = ["t", *reader.columns]
        self._columns = {}
        self.summary = reader.summary
        self.settings = settings
        self.error = None

    @property
    def _are_doubles(self):
        return self._digits <= MOST_DIGITS_OF_DOUBLES

    def _index(self, name):
        if name not in self._names:
            raise KeyError(name)
        return self._names.index(name)

    def __getitem__(self, name):
        if name not in self._columns:
            index = self._index(name)
            self._columns[name] = (
                self._reader.doubles(index) if self._are_doubles
                else [_mpf(number) for number in self._reader.integers(index)])
        return self._columns[name]

    def __iter__(self):
        return iter(self._names)

    def __len__(self):
        return len(self._names)

    def __repr__(self):
        return f"<varno.Result: {self.summary.rows} rows of {', '.join(self._names)}>"

    def texts(self, name):
        """A column as the program prints it: "1.50000e+00", "0", "0e-30", "nan"."""
        return self._reader.texts(self._index(name))

    def at(self, time):
        """The solution at a time between the rows, for solve(..., dense=True): a Point."""
        numbers, verified = self._reader.at(expression(time), self._are_doubles)
        if not self._are_doubles:
            numbers = [_mpf(number) for number in numbers]
        return Point(zip(self._names[1:], numbers), verified)

    def explain(self):
        """How the equations are understood and solved."""
        return self._reader.explain()


class Point(dict):
    """Numbers by the names of their columns.

    verified  whether a second run agrees on each of them
    """

    def __init__(self, numbers, verified):
        super().__init__(numbers)
        self.verified = verified


def read(reader, digits, settings):
    """The result of a run; `error` is set where it ended early."""
    end = reader.read_all()
    result = Result(reader, digits, settings)
    if end is not None:
        reason, message = end
        result.error = RunEnded(message, reason.name, result)
    return result


def _mpf(number):
    """mpmath's number of (mantissa, exponent), not rounded to the precision at hand."""
    import mpmath

    if number is None:
        return mpmath.mpf("nan")
    return mpmath.make_mpf(mpmath.libmp.from_man_exp(*number))


__all__ = ["MOST_DIGITS_OF_DOUBLES", "Point", "Result", "RunEnded", "core", "read"]
