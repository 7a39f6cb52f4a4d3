#!/usr/bin/env python3
"""Installs the build into a temporary folder, and builds and runs the library's example against it.

Usage: library_example_test.py CMAKE BUILD_FOLDER CXX_COMPILER
"""

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
EXAMPLE = "share/doc/varno/examples/solve/library"


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
        # The example as installed, and nothing of the source tree.
        call(CMAKE, "-S", cls.prefix / EXAMPLE, "-B", cls.build, "-G", "Ninja",
             f"-DCMAKE_PREFIX_PATH={cls.prefix}", f"-DCMAKE_CXX_COMPILER={COMPILER}")
        call(CMAKE, "--build", cls.build)

    def run_example(self, *arguments):
        return subprocess.run(
            [self.build / "growth", *arguments], capture_output=True, text=True, check=False)

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

    def test_mistake_is_an_exception_with_its_place(self):
        result = self.run_example("1 +")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "")
        self.assertIn("^", result.stderr)


if __name__ == "__main__":
    unittest.main()
