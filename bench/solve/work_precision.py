#!/usr/bin/python3
"""What digits cost: varno-solve, varno, Boost.Odeint and mpmath's odefun on five problems.

Usage: work_precision.py VARNO_SOLVE VARNO ODEINT_PROBLEMS PICTURE

Asks each program for 10, 15, 30, 60 and 250 digits of the states at the end of each problem of
problems.py, as far as it has them within a minute. Prints a table in Markdown, of processor seconds
and of the digits that are right in the worst state, and draws both: digits over seconds.

Seconds are those of whole commands for varno-solve and varno, and of the integration alone for the
others; the least of three runs where these are short. Right is what varno-solve says with 20 digits
more than anybody is asked for, so that the others' digits are a test of it, too.
"""

import os
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

import mpmath

from problems import PROBLEMS

DIGITS = [10, 15, 30, 60, 250]
REFERENCE_DIGITS = DIGITS[-1] + 20
MOST_SECONDS = 60
RUNS = 3
ODEFUN = Path(__file__).with_name("odefun.py")

SCRIPT = """\
set terminal pngcairo noenhanced size 1500,900 font ",11"
set output "{picture}"
set logscale xy
set format x "%g"
set xlabel "processor seconds"
set ylabel "right digits"
set yrange [5:400]
set grid
set multiplot layout 2,3
set key off
{plots}
set key center center
unset border; unset tics; unset grid; unset xlabel; unset ylabel; unset title
plot {keys}
"""


def limit_time():
    """Of the elapsed time: under a limit of processor time the clock of a process moves in ticks."""
    signal.alarm(MOST_SECONDS)


def run(command, folder):
    """Processor seconds of a command and the words of its last line; None beyond the time it has."""
    least = None
    for _ in range(RUNS):
        with tempfile.TemporaryFile("w+") as output:
            process = subprocess.Popen(command, cwd=folder, stdout=output, stderr=subprocess.DEVNULL,
                                       env={**os.environ, "HOME": str(folder)},
                                       preexec_fn=limit_time)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            if process.returncode != 0:
                return None
            output.seek(0)
            words = output.read().splitlines()[-1].split()
        seconds = usage.ru_utime + usage.ru_stime
        least = min(seconds, least or seconds)
        if seconds > 1:
            break
    return least, words


class VarnoSolve:
    def __init__(self, program, name, *options):
        self.program, self.name, self.options = program, name, options

    def solve(self, problem, digits, folder):
        result = run([self.program, "problem.varno", "--to", str(problem.end), "--last", "--digits",
                      str(digits), "--columns", ",".join(problem.columns), *self.options], folder)
        return result and (result[0], result[1][1:])


class Varno:
    """A row has the values at the end of its step: a run that ends one initial step earlier has
    those at the end, unless its first steps were halved. Then a shorter one is tried."""

    def __init__(self, program):
        self.program, self.name = program, "varno"

    def solve(self, problem, digits, folder):
        (folder / "clocked.varno").write_text(problem.text + "clock' = 1 & 0;\n")
        for halvings in range(3, 12):
            step = 2**-halvings
            result = run([self.program, "-W", str(int(digits*3.33) + 64), "-o", str(20 + digits),
                          "-a", f"1e-{digits + 1}", "-w", str(digits + 10), "-p", str(digits + 5),
                          "-s", str(step), "-t", str(problem.end - step), "-L", "1", "-O", "0",
                          "-P", ":".join(["clock", *problem.columns, ""]), "clocked.varno"], folder)
            if result is None:
                return None
            seconds, (_, *values) = result
            names = sorted(["clock", *problem.columns])
            row = dict(zip(names, map(mpmath.mpf, values)))
            if row["clock"] == problem.end:
                return seconds, [row[name] for name in problem.columns]
        return None


class Odeint:
    def __init__(self, program, name, is_double):
        self.program, self.name, self.is_double = program, name, is_double

    def solve(self, problem, digits, folder):
        if self.is_double and digits > 15:
            return None
        own, tolerance = (0, min(digits, 14)) if self.is_double else (digits + 10, digits)
        result = run([self.program, problem.name, str(own), f"1e-{tolerance}"], folder)
        return result and (float(result[1][0]), result[1][1:])


class Odefun:
    name = f"mpmath odefun on {mpmath.libmp.BACKEND}"

    def solve(self, problem, digits, folder):
        result = run([sys.executable, ODEFUN, problem.name, str(digits + 10), f"1e-{digits}"], folder)
        return result and (float(result[1][0]), result[1][1:])


def right_digits(values, exact):
    """Of the worst state."""
    worst = max(abs(mpmath.mpf(value)/right - 1) for value, right in zip(values, exact, strict=True))
    return float(REFERENCE_DIGITS if worst == 0 else -mpmath.log10(worst))


def measure(problem, programs, folder):
    """For each program its points: digits asked for, seconds, right digits."""
    (folder / "problem.varno").write_text(problem.text)
    exact = [mpmath.mpf(value)
             for value in programs[0].solve(problem, REFERENCE_DIGITS, folder)[1]]
    points = {}
    for program in programs:
        points[program.name] = found = []
        for digits in DIGITS:
            result = program.solve(problem, digits, folder)
            if result is None:
                break
            seconds, values = result
            found.append((digits, seconds, right_digits(values, exact)))
            print(f"| {problem.name} | {program.name} | {digits} | {seconds:.2g} | {found[-1][2]:.1f} |",
                  flush=True)
    return points


def draw(measured, names, picture, folder):
    plots = []
    for number, (problem, points) in enumerate(measured.items()):
        lines = []
        for style, name in enumerate(names, start=1):
            data = folder / f"{number}-{style}.data"
            data.write_text("".join(f"{seconds} {right}\n" for _, seconds, right in points[name]))
            if points[name]:
                lines.append(f'"{data}" with linespoints lw 2 lt {style} pt {style} title "{name}"')
        plots.append(f'set title "{problem}"\nplot {", ".join(lines)}')
    keys = ", ".join(f'NaN with linespoints lw 2 lt {style} pt {style} title "{name}"'
                     for style, name in enumerate(names, start=1))
    script = SCRIPT.format(picture=picture, plots="\n".join(plots), keys=keys)
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def main(arguments):
    if len(arguments) != 4:
        sys.exit("Usage: work_precision.py VARNO_SOLVE VARNO ODEINT_PROBLEMS PICTURE")
    solve, varno, odeint, picture = (str(Path(argument).resolve()) for argument in arguments)
    programs = [VarnoSolve(solve, "varno-solve, verified"),
                VarnoSolve(solve, "varno-solve --no-check", "--no-check", "--jobs", "1"),
                Varno(varno), Odeint(odeint, "Boost.Odeint, double", is_double=True),
                Odeint(odeint, "Boost.Odeint, mpf_float", is_double=False), Odefun()]
    mpmath.mp.dps = REFERENCE_DIGITS + 10
    print(f"load {os.getloadavg()[0]:.1f}\n")
    print("| problem | program | digits asked for | seconds | right digits |\n|---|---|---|---|---|")
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        measured = {problem.name: measure(problem, programs, folder) for problem in PROBLEMS}
        draw(measured, [program.name for program in programs], picture, folder)


if __name__ == "__main__":
    main(sys.argv[1:])
