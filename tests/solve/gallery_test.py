#!/usr/bin/env python3
"""Solves the examples of the gallery, and compares with closed forms, invariants and another method.

Usage: gallery_test.py PROGRAM
"""

import csv
import re
import subprocess
import sys
import unittest
from math import asinh, cos, exp, log, pi, sin, sinh, sqrt
from pathlib import Path

from case_support import runge_kutta

PROGRAM = Path(sys.argv.pop()).resolve()
ROOT = Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples" / "solve"
CASES = ROOT / "tests" / "solve" / "cases" / "examples"
# Of numbers with 12 digits, and of the method of Runge and Kutta
CLOSED, STEPPED = 2e-11, 2e-7


def solve(name, *arguments):
    """Rows as dictionaries of floats."""
    result = subprocess.run(
        [PROGRAM, EXAMPLES / f"{name}.varno", "--digits", "12", "--format", "csv", "--quiet",
         *arguments], check=True, capture_output=True, text=True)
    return [{key: float(value) for key, value in row.items()}
            for row in csv.DictReader(result.stdout.splitlines())]


class GalleryTest(unittest.TestCase):
    def require(self, name, arguments, expected, tolerance=CLOSED):
        """expected(t) gives some of the columns."""
        rows = solve(name, *arguments)
        self.assertGreater(len(rows), 1)
        for row in rows:
            for column, value in expected(row["t"]).items():
                self.assertLessEqual(abs(row[column] - value), tolerance*max(1, abs(value)),
                                     f"{name}: {column} at {row['t']}")

    def require_stepped(self, name, slopes, start, to, step, *arguments):
        """By the method of Runge and Kutta, for the variables in the order of `start`."""
        last = solve(name, "--to", str(to), "--last", *arguments)[0]
        states = list(runge_kutta(lambda state: slopes(*state), list(start.values()), [to], step))
        for column, value in zip(start, states[-1]):
            self.assertLessEqual(abs(last[column] - value), STEPPED*max(1, abs(value)),
                                 f"{name}: {column}")

    def test_cannonball(self):
        def slopes(x, u, y, v):
            speed = sqrt(u*u + v*v)
            return [u, -speed*u/1000, v, -9.81 - speed*v/1000]

        fast = 300/sqrt(2)
        self.require_stepped("cannonball", slopes, {"x": 0, "x'": fast, "y": 0, "y'": fast}, 20, 0.01)
        self.require("cannonball", ["--to", "30", "--points", "3", "--set", "drag=0"],
                     lambda t: {"x": fast*t, "y": fast*t - 9.81*t*t/2})

    def test_blasius(self):
        self.require_stepped("blasius", lambda f, g, h: [g, h, -f*h/2],
                             {"f": 0, "f'": 0, "f''": 0.332057336215196}, 8, 0.01)
        self.assertAlmostEqual(solve("blasius", "--to", "8", "--last")[0]["f'"], 1, 5)

    def test_brusselator(self):
        self.require_stepped("brusselator", lambda x, y: [1 + x*x*y - 4*x, 3*x - x*x*y],
                             {"x": 1, "y": 1}, 10, 0.005)

    def test_decay_chain(self):
        def two_decays(t, first=log(2)/5500, second=log(2)/3.1):
            return {"radon": exp(-first*t), "sum": 1,
                    "polonium": first/(second - first)*(exp(-first*t) - exp(-second*t))}

        self.require("decay_chain", ["--to", "300", "--every", "60"], two_decays)

    def test_drift(self):
        self.require("drift", ["--to", "30", "--points", "6"],
                     lambda t: {"x": t - sin(t), "y": 1 - cos(t)})

    def test_fireflies(self):
        def slopes(a, b, c):
            return [1.0 + 0.1*(sin(b - a) + sin(c - a)), 1.1 + 0.1*(sin(a - b) + sin(c - b)),
                    1.2 + 0.1*(sin(a - c) + sin(b - c))]

        self.require_stepped("fireflies", slopes, {"a": 0, "b": 2, "c": 4}, 30, 0.02)

    def test_fitzhugh_nagumo(self):
        self.require_stepped("fitzhugh_nagumo",
                             lambda v, w: [v - v**3/3 - w + 0.5, (v + 0.7 - 0.8*w)*0.08],
                             {"v": -1, "w": -0.5}, 40, 0.02)

    def test_friedmann(self):
        def size(t, matter=0.3, dark=0.7):
            today = asinh(sqrt(dark/matter))/1.5/sqrt(dark)
            return {"a": (matter/dark)**(1/3)*sinh(1.5*sqrt(dark)*(t + today))**(2/3)}

        self.require("friedmann", ["--from", "-1/2", "--to", "2", "--points", "10"], size)

    def test_henon_heiles(self):
        start = {"x": 0, "y": 0, "u": 0.5*cos(pi/9), "v": 0.5*sin(pi/9), "p": 0, "q": 1, "r": 0, "s": 0}
        self.require_stepped(
            "henon_heiles",
            lambda x, y, u, v, p, q, r, s: [u, v, -x - 2*x*y, -y - x*x + y*y, r, s,
                                            -(1 + 2*y)*p - 2*x*q, -2*x*p - (1 - 2*y)*q],
            start, 10, 0.01)
        row = solve("henon_heiles", "--to", "10", "--last")[0]
        self.assertAlmostEqual(row["kept"], 1/8, 11)
        self.assertAlmostEqual(row["growth"], log(sum(row[name]**2 for name in "pqrs"))/20, 11)

    def test_lotka_volterra(self):
        self.require("lotka_volterra", ["--to", "12", "--points", "6"],
                     lambda t: {"kept": 2 - log(2) + 0.5 - log(0.5)})
        self.require_stepped("lotka_volterra", lambda x, y: [x*(1 - y), y*(x - 1)],
                             {"prey": 2, "predators": 0.5}, 12, 0.01)

    def test_medicine(self):
        self.require("medicine", ["--to", "24", "--points", "6"],
                     lambda t: {"gut": 100*exp(-t), "blood": 120*(exp(-t/6) - exp(-t))})

    def test_mercury(self):
        ellipse = ["--to", "12*pi", "--points", "30", "--set", "correction=0"]
        # The time itself is rounded to 12 digits.
        self.require("mercury", ellipse,
                     lambda t: {"u": 1 + 0.6*cos(t), "u'": -0.6*sin(t)}, tolerance=1e-10)
        for row in solve("mercury", "--to", "12*pi", "--points", "30"):
            u, speed = row["u"], row["u'"]
            self.assertAlmostEqual(speed**2/2 + u**2/2 - u - u**3/150, 1.6**2/2 - 1.6 - 1.6**3/150, 10)

    def test_quantum_oscillator(self):
        self.require("quantum_oscillator", ["--to", "6", "--points", "6"],
                     lambda t: {"psi": (1 - 2*t*t)*exp(-t*t/2)})

    # A peak is the largest x on the way.
    def test_roessler(self):
        def slopes(x, y, z):
            return [-y - z, x + 0.2*y, 0.2 + z*(x - 5.7)]

        self.require_stepped("roessler", slopes, {"x": 1, "y": 1, "z": 0}, 10, 0.005)
        times = [i/1000 for i in range(1, 10_001)]
        way = [x for x, _, _ in runge_kutta(lambda state: slopes(*state), [1, 1, 0], times, 0.01)]
        peaks = [x for before, x, behind in zip(way, way[1:], way[2:]) if before < x >= behind]
        kept = solve("roessler", "--to", "10", "--last")[0]["peak"]
        self.assertAlmostEqual(kept, peaks[-1], 4)

    def test_solow(self):
        self.require("solow", ["--to", "100", "--points", "5"],
                     lambda t: {"capital": (4 - 3*exp(-t/30))**1.5})

    def test_vanderpol(self):
        self.require_stepped("vanderpol", lambda x, v: [v, 3*(1 - x*x)*v - x],
                             {"x": 0.01, "v": 0}, 10, 0.005)

    def test_wing_nut(self):
        self.require("wing_nut", ["--to", "60", "--points", "6"],
                     lambda t: {"energy": 1 + 5e-7, "momentum": 4 + 1e-6})
        self.require_stepped("wing_nut", lambda p, q, r: [-q*r, r*p, -p*q/3],
                             {"p": 0.001, "q": 1, "r": 0}, 20, 0.02)

    def test_each_example_is_tested_and_shown(self):
        page = (ROOT / "docs" / "solve" / "gallery.md").read_text()
        solved = {path.read_text().strip().rpartition("/")[2].removesuffix(".varno")
                  for path in CASES.glob("*/input_from")}
        solved |= {name.removeprefix("test_") for name in dir(self) if name.startswith("test_")}
        examples = sorted(path.stem for path in EXAMPLES.glob("*.varno"))
        self.assertGreater(len(examples), 15)
        for name in examples:
            self.assertIn(name, solved)
            self.assertIn(f"\n![{name}](gallery/{name}.png)\n", page)
            self.assertTrue((ROOT / "docs" / "solve" / "gallery" / f"{name}.png").is_file(), name)
            text = (EXAMPLES / f"{name}.varno").read_text()
            self.assertIn("\n// Look for: ", text)
            # The page shows the commands as they stand in the example.
            for command in re.findall(r"(?m)^//     (varno-solve .*)$", text):
                self.assertIn(f"\n    {command}\n", page)


if __name__ == "__main__":
    unittest.main()
