"""Five problems, each in the languages of the programs that work_precision.py compares.

The states of a problem are compared in the order of `columns`. `text` is read by varno-solve and varno
alike, `derivatives` and `start` are for mpmath. odeint_problems.cpp has the same problems.
"""

from dataclasses import dataclass
from typing import Callable

import mpmath

CELLS = 10


@dataclass
class Problem:
    name: str
    end: int
    columns: list[str]
    text: str
    derivatives: Callable
    start: Callable


def lorenz(_, state):
    x, y, z = state
    return [10*(y - x), x*(28 - z) - y, x*y - mpmath.mpf(8)/3*z]


def kepler(_, state):
    x, y, u, v = state
    square = x*x + y*y
    inverse_cube = 1/(square*mpmath.sqrt(square))
    return [u, v, -x*inverse_cube, -y*inverse_cube]


def van_der_pol(_, state):
    x, v = state
    return [v, (1 - x*x)*v - x]


def brusselator(_, state):
    """u and v of each cell in turn; 1 and 3 at both ends."""
    cells = [(1, 3), *zip(state[::2], state[1::2]), (1, 3)]
    spread = mpmath.mpf(121)/50
    result = []
    for (u0, v0), (u, v), (u1, v1) in zip(cells, cells[1:], cells[2:]):
        reaction = u*u*v
        result.append(1 + reaction - 4*u + spread*(u0 + u1 - 2*u))
        result.append(3*u - reaction + spread*(v0 + v1 - 2*v))
    return result


def brusselator_start():
    return [value for i in range(1, CELLS + 1)
            for value in (1 + mpmath.mpf(i*(CELLS + 1 - i))/30, mpmath.mpf(3))]


def brusselator_text():
    def cell(name, i, end):
        return f"{name}{i}" if 0 < i <= CELLS else str(end)

    def spread(name, i, end):
        return f"121/50*({cell(name, i - 1, end)} + {cell(name, i + 1, end)} - 2*{name}{i})"

    return "".join(
        f"u{i}' = 1 + u{i}*u{i}*v{i} - 4*u{i} + {spread('u', i, 1)} & 1 + {i*(CELLS + 1 - i)}/30;\n"
        f"v{i}' = 3*u{i} - u{i}*u{i}*v{i} + {spread('v', i, 3)} & 3;\n" for i in range(1, CELLS + 1))


PROBLEMS = [
    Problem("Lorenz", 5, ["x", "y", "z"],
            "x' = 10*(y - x) & 1; y' = x*(28 - z) - y & 1; z' = x*y - 8/3*z & 1;\n",
            lorenz, lambda: [mpmath.mpf(1)]*3),
    Problem("Kepler", 10, ["x", "y", "u", "v"],
            "x' = u & 1/2; y' = v & 0; u' = -x/((x*x + y*y)*sqrt(x*x + y*y)) & 0;\n"
            "v' = -y/((x*x + y*y)*sqrt(x*x + y*y)) & sqrt(3);\n",
            kepler, lambda: [mpmath.mpf(1)/2, mpmath.mpf(0), mpmath.mpf(0), mpmath.sqrt(3)]),
    Problem("pendulum", 10, ["a", "w"], "a' = w & 2; w' = -sin(a) & 0;\n",
            lambda _, state: [state[1], -mpmath.sin(state[0])],
            lambda: [mpmath.mpf(2), mpmath.mpf(0)]),
    Problem("van der Pol", 10, ["x", "v"], "x' = v & 2; v' = (1 - x*x)*v - x & 0;\n",
            van_der_pol, lambda: [mpmath.mpf(2), mpmath.mpf(0)]),
    Problem("Brusselator line", 2, [f"{name}{i}" for i in range(1, CELLS + 1) for name in "uv"],
            brusselator_text(), brusselator, brusselator_start),
]
