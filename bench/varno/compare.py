#!/usr/bin/python3
"""Compares varno with what one would take otherwise, and large systems with small ones.

Usage: compare.py VARNO ODEINT_KEPLER

It runs by the system's Python, for which Debian's mpmath and gmpy2 are installed. Prints two tables
in Markdown. Times are processor times, medians of five runs.

1. The reaction-diffusion ring with 100, 1000 and 10,000 cells: what an equation costs. The memory
   includes what a small Python takes, from which the program is started.
2. A body on an ellipse of eccentricity 1/2 from t = 0 to 10, with varno, Boost.Odeint (RK-Fehlberg
   7(8) in mpf_float, and in double precision for scale) and mpmath's odefun. The error is the
   distance from Kepler's closed solution, computed by mpmath with 80 digits.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

RUNS = 5
FINAL_TIME = 10
REFERENCE_DIGITS = 80

KEPLER = """
x' = u & 0.5; y' = v & 0; u' = -x*w & 0; v' = -y*w & sqrt(3);
w' = -3*w*q*(x*u + y*v) & 8; q' = -2*q*q*(x*u + y*v) & 4;
clock' = 1 & 0;
"""

# tolerance, varno's precision in bits and its maximum order, digits of the other programs
LEVELS = [("1e-10", 80, 30, 20), ("1e-20", 128, 40, 30), ("1e-30", 192, 60, 40),
          ("1e-50", 256, 80, 60)]

# Where Odeint would run for minutes.
ODEINT_TOLERANCES = {"1e-10", "1e-20", "1e-30"}


def exact_position(t):
    """x and y on the ellipse with semi-major axis 1 at time t, by Kepler's equation."""
    with mpmath.workdps(REFERENCE_DIGITS):
        anomaly = mpmath.findroot(lambda e: e - mpmath.sin(e) / 2 - t, t)
        return mpmath.cos(anomaly) - 0.5, mpmath.sqrt(3) / 2 * mpmath.sin(anomaly)


def error(x, y, t):
    with mpmath.workdps(REFERENCE_DIGITS):
        exact_x, exact_y = exact_position(mpmath.mpf(t))
        return mpmath.hypot(mpmath.mpf(x) - exact_x, mpmath.mpf(y) - exact_y)


class Run:
    """A finished run of a program: its output, processor time and largest size in memory."""

    def __init__(self, command, home):
        with tempfile.TemporaryFile("w+") as output, open(os.devnull, "w") as nowhere:
            process = subprocess.Popen(command, stdout=output, stderr=nowhere,
                                       env={**os.environ, "HOME": home})
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            if process.returncode != 0:
                raise RuntimeError(f"{command[0]} ended with status {process.returncode}")
            output.seek(0)
            self.output = output.read()
        self.seconds = usage.ru_utime + usage.ru_stime
        self.kibibytes = usage.ru_maxrss


def median_run(command, home):
    runs = sorted((Run(command, home) for _ in range(RUNS)), key=lambda run: run.seconds)
    return runs[RUNS // 2]


def by_varno(varno, level, folder):
    tolerance, bits, order, _ = level
    path = folder / "kepler.varno"
    path.write_text(KEPLER)
    # The values of a row belong to the end of its step, the initial step of 0.1 behind its time.
    run = median_run([varno, "-W", str(bits), "-o", str(order), "-a", tolerance, "-w", "70", "-p",
                      "65", "-t", str(FINAL_TIME - 0.1), "-L", "1", "-O", "0", "-P",
                      "clock:x:y:", str(path)], str(folder))
    _, clock, x, y = run.output.split("\n")[-2].split()
    return run.seconds, error(x, y, clock)


def by_odeint(program, digits, tolerance, folder):
    run = median_run([program, str(digits), tolerance, str(FINAL_TIME)], str(folder))
    _, x, y = run.output.split()
    return run.seconds, error(x, y, FINAL_TIME)


def by_mpmath(tolerance, digits):
    def derivatives(_, state):
        x, y, u, v = state
        inverse_cube = (x * x + y * y) ** (mpmath.mpf(-3) / 2)
        return [u, v, -x * inverse_cube, -y * inverse_cube]

    times = []
    for _ in range(RUNS):
        with mpmath.workdps(digits):
            start = time.process_time()
            solution = mpmath.odefun(derivatives, 0,
                                     [mpmath.mpf("0.5"), 0, 0, mpmath.sqrt(3)],
                                     tol=mpmath.mpf(tolerance))
            x, y, *_ = solution(FINAL_TIME)
            times.append(time.process_time() - start)
    return statistics.median(times), error(x, y, FINAL_TIME)


def print_comparison(varno, odeint, folder):
    print(f"| program | tolerance | seconds | error at t = {FINAL_TIME} |\n|---|---|---|---|")

    def row(program, tolerance, result):
        seconds, distance = result
        print(f"| {program} | {tolerance} | {seconds:.4f} | {mpmath.nstr(distance, 2)} |",
              flush=True)

    for level in LEVELS:
        tolerance, bits, _, digits = level
        row(f"varno, {bits} bits", tolerance, by_varno(varno, level, folder))
        if tolerance in ODEINT_TOLERANCES:
            row(f"Boost.Odeint, mpf_float, {digits} digits", tolerance,
                by_odeint(odeint, digits, tolerance, folder))
        row(f"mpmath odefun on {mpmath.libmp.BACKEND}, {digits} digits", tolerance, by_mpmath(tolerance, digits))
    row("Boost.Odeint, double", "1e-14", by_odeint(odeint, 0, "1e-14", folder))


def ring(cells):
    """Reaction and diffusion along a ring, as in problem.cpp."""
    return "".join(
        f"u{i}' = 10*(u{(i - 1) % cells} - 2*u{i} + u{(i + 1) % cells}) + u{i}*(1 - u{i})"
        f" & {'0.5' if i % 10 < 3 else '0.1'};\n" for i in range(cells))


def print_sizes(varno, folder):
    print("| equations | start, us each | integration to t = 1/2, us each | memory, MiB |")
    print("|---|---|---|---|")
    for cells in (100, 1000, 10_000):
        path = folder / "ring.varno"
        path.write_text(ring(cells))
        start = median_run([varno, "-t", "0", "-L", "1", str(path)], str(folder))
        whole = median_run([varno, "-t", "0.5", "-L", "1", str(path)], str(folder))
        print(f"| {cells} | {start.seconds / cells * 1e6:.1f} "
              f"| {(whole.seconds - start.seconds) / cells * 1e6:.1f} "
              f"| {whole.kibibytes / 1024:.0f} |", flush=True)


def main():
    if len(sys.argv) != 3:
        sys.exit("Usage: compare.py VARNO ODEINT_KEPLER")
    with tempfile.TemporaryDirectory() as folder:
        print_sizes(sys.argv[1], Path(folder))
        print()
        # Only now: a program that is started from a process counts that process's memory.
        global mpmath
        import mpmath
        print_comparison(sys.argv[1], sys.argv[2], Path(folder))


if __name__ == "__main__":
    main()
