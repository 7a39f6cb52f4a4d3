"""Solutions of ordinary differential equations to as many digits as asked for.

>>> import varno
>>> varno.solve("y' = y & 1;", last=True, digits=30).texts("y")
['2.71828182845904523536028747135e+00']

The equations are written in the language of varno-solve(1), whose pages describe it.
"""

from .core import InputError, Options, Problem, Reader
from .core import version as __version__
from .constants import expression
from .result import Point, Result, RunEnded, read
from .sweep import combinations, run_all

__all__ = ["InputError", "Point", "Result", "RunEnded", "explain", "solve"]


def solve(text, to=1, *, from_=None, every=None, points=None, at=None, steps=False, last=False,
          digits=15, tiny="1e-1000", columns=(), set=None, sweep=None, check=True, dense=False,
          jobs=0, max_steps=None, max_seconds=None, max_bits=None, name="equations"):
    """Solves equations: a Result, whose columns are result["t"], result["x"], ...

    Times and values are numbers or constant expressions such as "10*pi". A float counts as what
    Python prints of it: 0.1 is one tenth.

    text            the equations, as in a file for varno-solve; `name` stands for it in messages
    from_, to       first and last time; to may lie before from_ (from_: the time of the start
                    values, else 0)
    every, points, at, steps, last
                    which rows, one of these: multiples of a time; so many equal parts; a list of
                    times; the solver's own steps (True); the last time only (True). (points=100)
    digits          significant digits, 1 to 10,000: numpy arrays up to 15, mpmath's numbers beyond
    tiny            what is smaller counts as 0
    columns         these, in this order (all)
    set             parameters and start values, {"mu": 7, "x(0)": 2}
    sweep           values of such names, {"mu": [1, 2, 5]}: a run for each combination, and a list
                    of Results; a run that ends early has its `error` set
    check           two runs instead of one: without, nothing is verified
    dense           keep the steps, for Result.at
    jobs            threads (as many as there are processors)
    max_steps, max_seconds, max_bits
                    limits

    Raises InputError, with all mistakes and their places, and RunEnded where a run ends early. Other
    Python threads go on meanwhile, and Ctrl-C ends it with KeyboardInterrupt.
    """
    problem = Problem(text, name)
    rows = _row_choice(every=every, points=points, at=at, steps=steps, last=last)

    def run(settings, stop=None, threads=jobs):
        options = Options()
        options.choose_rows(rows)
        options.from_ = None if from_ is None else expression(from_)
        options.to = expression(to)
        options.digits = digits
        options.tiny = expression(tiny)
        options.columns = [columns] if isinstance(columns, str) else list(columns)
        options.check = check
        options.keep_steps = dense
        options.jobs = threads
        options.max_steps = max_steps
        options.max_seconds = max_seconds
        if max_bits is not None:
            options.max_bits = max_bits
        changed = problem.with_settings([f"{key}={expression(settings[key])}" for key in settings])
        return read(Reader(changed, options, stop), digits, settings)

    settings = dict(set or {})
    if sweep is not None:
        every_settings = [{**settings, **swept} for swept in combinations(sweep)]
        return run_all(lambda one, stop: run(one, stop, threads=1), every_settings, jobs)
    result = run(settings)
    if result.error is not None:
        raise result.error
    return result


def explain(text, *, set=None, digits=15, name="equations"):
    """How equations are understood and would be solved, in several lines. Raises InputError."""
    options = Options()
    options.digits = digits
    settings = [f"{key}={expression(value)}" for key, value in (set or {}).items()]
    return Reader(Problem(text, name).with_settings(settings), options).explain()


def _row_choice(*, every, points, at, steps, last):
    chosen = [
        *([("every", expression(every))] if every is not None else []),
        *([("points", points)] if points is not None else []),
        *([("at", [expression(time) for time in at])] if at is not None else []),
        *([("steps", None)] if steps else []),
        *([("last", None)] if last else []),
    ]
    if len(chosen) > 1:
        raise InputError(f"{chosen[0][0]} and {chosen[1][0]} exclude each other")
    return chosen[0] if chosen else ("points", 100)
