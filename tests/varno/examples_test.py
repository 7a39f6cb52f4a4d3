#!/usr/bin/env python3
"""The comment of an example, its case, its picture and its place in the gallery belong together.

Usage: examples_test.py PROGRAM
"""

import math
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from check_plot import is_bright, read_png

PROGRAM = Path(sys.argv.pop()).resolve()
ROOT = Path(__file__).resolve().parents[2]
EXAMPLES = sorted((ROOT / "examples" / "varno").glob("*.varno"))
LEAST_POINTS = 50


class ExamplesTest(unittest.TestCase):
    def test_there_are_examples(self):
        self.assertGreaterEqual(len(EXAMPLES), 12)

    def test_comment_tells_command_and_what_to_look_for(self):
        for example in EXAMPLES:
            text = example.read_text(encoding="ascii")
            with self.subTest(example.name):
                self.assertRegex(
                    text, rf"\A(// \S.*\n)+//\n//     varno .*{example.name}\n"
                          rf"//     gnuplot {example.stem}\.gnuplot\n//\n"
                          r"// Look for: ")

    def test_case_runs_the_command_of_the_comment(self):
        for example in EXAMPLES:
            command = re.search(r"^//     varno (.*)$", example.read_text(), re.MULTILINE)
            case = ROOT / "tests" / "varno" / "cases" / "examples" / f"example_{example.stem}"
            with self.subTest(example.name):
                self.assertEqual((case / "args").read_text().strip(), command[1])
                self.assertEqual(
                    (case / "input_from").read_text().strip(), f"examples/varno/{example.name}")
                self.assertTrue((case / "check").exists())

    def test_gallery_shows_every_picture_with_its_commands(self):
        page = (ROOT / "docs" / "varno" / "gallery.md").read_text()
        for example in EXAMPLES:
            commands = re.findall(r"^//(     \S.*\n)", example.read_text(), re.MULTILINE)
            with self.subTest(example.name):
                self.assertEqual(len(commands), 2)
                self.assertIn(f"](gallery/{example.stem}.png)", page)
                self.assertIn("".join(command.removeprefix(" ") for command in commands), page)
                picture = ROOT / "docs" / "varno" / "gallery" / f"{example.stem}.png"
                self.assertTrue(picture.read_bytes().startswith(b"\x89PNG"))


def cells_of_the_chain(time, cell):
    """Two sines of the start, each of which falls by its own exponential."""
    return sum(math.sin(bellies*cell*math.pi/101)*part
               * math.exp(-4*math.sin(bellies*math.pi/202)**2*time)
               for bellies, part in ((1, 1), (3, 1/2)))


class PicturesTest(unittest.TestCase):
    """What the gnuplot scripts of the examples draw."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="varno-pictures-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for path in (ROOT / "examples" / "varno").iterdir():
            shutil.copy(path, self.folder)
        # The scripts call the program by its name.
        (self.folder / "varno").symlink_to(PROGRAM)

    def gnuplot(self, *arguments):
        path = f"{self.folder}:{os.environ['PATH']}"
        result = subprocess.run(
            ["gnuplot", *arguments], cwd=self.folder, capture_output=True, text=True,
            env={**os.environ, "HOME": str(self.folder), "PATH": path, "LC_ALL": "C"})
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def curves(self, name):
        """The points of each curve, as gnuplot lists them in place of a picture."""
        script = (self.folder / f"{name}.gnuplot").read_text()
        script = re.sub(r"^set (term|out) .*\n", "", script, flags=re.MULTILINE)
        # Points beyond the range of an axis are drawn up to its end only.
        script = re.sub(r"^set [xy]range .*\n", "", script, flags=re.MULTILINE)
        (self.folder / "listing").write_text("set table 'points'\n" + script)
        self.gnuplot("listing")
        curves = {}
        for line in (self.folder / "points").read_text().splitlines():
            if title := re.fullmatch(r'# Curve title: "(.*)"', line):
                points = curves.setdefault(title[1], [])
            elif line.strip() and not line.startswith("#"):
                points.append(tuple(map(float, line.split()[:2])))
        return curves

    def assert_on_curve(self, points, function):
        """To the six digits that gnuplot lists; the curve may be steep, the numbers of order 1."""
        self.assertGreaterEqual(len(points), LEAST_POINTS)
        for x, y in points:
            self.assertAlmostEqual(y, function(x), delta=2e-5*max(1, abs(y)), msg=f"at {x}")

    def test_script_draws_its_picture(self):
        for example in EXAMPLES:
            with self.subTest(example.name):
                self.gnuplot(f"{example.stem}.gnuplot")
                _, colours = read_png(self.folder / f"{example.stem}.png")
                drawn = sum(count for colour, count in colours.items() if is_bright(colour))
                self.assertGreater(drawn, 1000)

    def test_key_stands_outside_of_the_curves(self):
        for example in EXAMPLES:
            with self.subTest(example.name):
                script = (self.folder / f"{example.stem}.gnuplot").read_text()
                self.assertIn("\nset key outside ", script)

    def test_values_stand_at_their_own_time(self):
        def rc(time):
            return 5*(1 - math.exp(-time/0.01))

        def b(time):
            return (math.exp(-0.4*time) - math.exp(-time))/0.6

        self.assert_on_curve(self.curves("rc")["voltage"], rc)
        self.assert_on_curve(self.curves("oscillator")["x"], math.cos)
        self.assert_on_curve(self.curves("kinetics")["b"], b)

    def test_every_curve_over_time_begins_one_step_behind_the_start(self):
        for name, start in (("brusselator", 1), ("lotka_volterra", 2), ("pendulum", 3),
                            ("predator", 0.9), ("rlc", 10), ("sir", 0.999), ("vanderpol", 0.1)):
            with self.subTest(name):
                (time, value), *_ = next(iter(self.curves(name).values()))
                self.assertGreater(time, 0)
                self.assertAlmostEqual(value, start, delta=0.1*start)

    def test_kepler_is_one_orbit(self):
        orbit = self.curves("kepler")["orbit"]
        self.assertGreaterEqual(len(orbit), LEAST_POINTS)
        for x, y in orbit:
            # The half axes are 1 and sqrt(0.19), the centre lies at (0.9, 0).
            self.assertAlmostEqual((x - 0.9)**2 + y**2/0.19, 1, delta=1e-4)
        self.assertLess(min(x for x, _ in orbit), -0.0995)
        self.assertGreater(max(x for x, _ in orbit), 1.8995)

    def test_lorenz_has_two_wings(self):
        (points,) = self.curves("lorenz").values()
        # The fixed points in the wings' middle are (+-sqrt(72), 27).
        for side in (-1, 1):
            wing = [z for x, z in points if side*x > math.sqrt(72)]
            self.assertGreater(max(wing), 27)
            self.assertLess(min(wing), 27)

    def test_chain_shows_the_cells_at_their_times(self):
        for title, points in self.curves("chain").items():
            time = float(title.removeprefix("time "))
            self.assertEqual([cell for cell, _ in points], list(range(1, 101)))
            self.assert_on_curve(points, lambda cell: cells_of_the_chain(time, cell))


if __name__ == "__main__":
    unittest.main()
