#!/usr/bin/env python3
"""Installs the build into a temporary folder, and builds and runs the library's examples against it.

Usage: library_example_test.py CMAKE BUILD_FOLDER CXX_COMPILER
"""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import mpmath

import closed_form

COMPILER = sys.argv.pop()
BUILD = Path(sys.argv.pop())
CMAKE = sys.argv.pop()
EXAMPLES = "share/doc/varno/examples/solve/library"
ROOT = Path(__file__).resolve().parents[2]


def call(*arguments):
    result = subprocess.run(
        arguments, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if result.returncode != 0:
        raise AssertionError(f"{arguments}: status {result.returncode}\n{result.stdout}")


def logistic(rate):
    return lambda t, k: 1/(1 + 9*mpmath.exp(-mpmath.mpf(rate)*t))


class LibraryExampleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="varno-library-")
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = Path(folder.name) / "installed"
        cls.build = Path(folder.name) / "build"
        call(CMAKE, "--install", BUILD, "--prefix", cls.prefix)
        # The examples as installed, and nothing of the source tree.
        call(CMAKE, "-S", cls.prefix / EXAMPLES, "-B", cls.build, "-G", "Ninja",
             f"-DCMAKE_PREFIX_PATH={cls.prefix}", f"-DCMAKE_CXX_COMPILER={COMPILER}")
        call(CMAKE, "--build", cls.build)

    def run_example(self, *arguments, program="growth"):
        return subprocess.run(
            [self.build / program, *arguments], capture_output=True, text=True, check=False)

    def test_header_and_archive_are_installed(self):
        self.assertTrue((self.prefix / "include/varno/solve.h").is_file())
        self.assertEqual(len(list(self.prefix.glob("lib*/**/libvarno-solve.a"))), 1)

    def test_rows_are_those_of_the_closed_form(self):
        for arguments, rate in ((), "1"), (("0.8",), "0.8"):
            with self.subTest(rate):
                result = self.run_example(*arguments)
                self.assertEqual(result.stderr, "")
                faults = closed_form.compare(
                    result.stdout, {"y": logistic(rate)}, times=lambda k: 2*k, rows=6, digits=25)
                self.assertEqual(faults, [])
                value = float(logistic(rate)(10, 5))
                self.assertEqual(result.stdout.splitlines()[-1], f"# {value:g}, verified")

    # The first passage is a quarter of the period 4 K(sin 1), and the first coefficients follow from
    # a'' = -sin(a): 2, 0, -sin(2)/2, 0, cos(2) sin(2)/24. The value at 1/3 is that of the Jacobi functions:
    # a = 2 asin(k cd(t, k)) with k = sin 1.
    def test_solution_between_rows_and_its_series(self):
        result = self.run_example(program="anywhere")
        self.assertEqual(result.stderr, "")
        lines = dict(re.split(" = |: ", line, maxsplit=1) for line in result.stdout.splitlines())
        with mpmath.workdps(40):
            m = mpmath.sin(1)**2
            quarter = mpmath.ellipk(m)
            self.assertEqual(float(lines["first at t"]), float(f"{float(quarter):.12g}"))
            self.assertEqual(lines["swings"], str(int((20/quarter + 1)/2)))
            value, mark = lines["a(0.33333333333333333333)"].split(", ")
            third = mpmath.mpf(1)/3
            cd = mpmath.ellipfun("cd", third, m=m)
            exact = 2*mpmath.asin(mpmath.sin(1)*cd)
            self.assertLess(abs(mpmath.mpf(value) - exact), mpmath.mpf("1e-19"))
            self.assertEqual(mark, "verified")
            sine, cosine = mpmath.sin(2), mpmath.cos(2)
            for k, exact in enumerate((2, 0, -sine/2, 0, sine*cosine/24)):
                self.assertLessEqual(
                    abs(mpmath.mpf(lines[f"term {k}"]) - exact), mpmath.mpf("1e-19"))
        self.assertEqual(lines["called after each step of both runs"], "yes")

    def test_several_threads(self):
        result = self.run_example(program="threads")
        self.assertEqual(result.stderr, "")
        lines = result.stdout.splitlines()
        self.assertEqual(len(lines), 4)
        with mpmath.workdps(40):
            for line, rate in zip(lines, (-1, mpmath.mpf(1)/2, 1, mpmath.log(2))):
                value = mpmath.mpf(line.rpartition(": ")[2])
                self.assertLess(abs(value/mpmath.exp(rate) - 1), mpmath.mpf("1e-29"))

    def test_lines_of_the_page_stand_in_the_programs(self):
        programs = "".join(path.read_text() for path in (ROOT / "examples/solve/library").iterdir()
                           if path.is_file())
        programs = re.sub(r"(?m)^ +", "", programs)
        blocks = re.findall(r"(?m)((?:^    .*\n|^\n(?=    ))+)",
                            (ROOT / "docs/solve/library.md").read_text())
        self.assertGreater(len(blocks), 6)
        for block in blocks:
            self.assertIn(re.sub(r"(?m)^ +", "", block).strip("\n"), programs)

    def test_mistake_is_an_exception_with_its_place(self):
        result = self.run_example("1 +")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "")
        self.assertIn("^", result.stderr)


if __name__ == "__main__":
    unittest.main()
