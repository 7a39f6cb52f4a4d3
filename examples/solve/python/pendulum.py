"""A pendulum let go at several angles, drawn by matplotlib, and its period to 40 digits.

    python3 pendulum.py pendulum.png

Look for: the higher it starts, the longer it takes; from 3.14 it lingers at the top.
"""

import sys

import varno

PENDULUM = "a'' = -sin(a); a(0) = 2;"


def main(picture):
    import matplotlib
    matplotlib.use("Agg")
    from matplotlib import pyplot

    runs = varno.solve(PENDULUM, to=20, points=400, columns="a", sweep={"a(0)": [1, 2, 3, 3.14]})
    for run in runs:
        pyplot.plot(run["t"], run["a"], label=f"from {run.settings['a(0)']}")
    pyplot.xlabel("time")
    pyplot.ylabel("angle")
    pyplot.legend()
    pyplot.savefig(picture)
    print("period from 2 radians:", period())


def period():
    """Four times the time to the vertical, by Newton's method on the solution between the rows."""
    from mpmath import nstr, workdps

    solution = varno.solve(PENDULUM, to=3, last=True, digits=45, dense=True)
    with workdps(45):
        time = 2
        for _ in range(8):
            point = solution.at(time)
            time -= point["a"] / point["a'"]
        return nstr(4 * time, 40)


if __name__ == "__main__":
    main(sys.argv[1] if len(sys.argv) > 1 else "pendulum.png")
