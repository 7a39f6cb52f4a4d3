#!/usr/bin/env python3
"""Installs the build into a temporary folder and uses it from there.

Usage: install_test.py CMAKE BUILD_FOLDER
"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BUILD = Path(sys.argv.pop())
CMAKE = sys.argv.pop()


class InstallTest(unittest.TestCase):
    def test_installed_program_solves_installed_example(self):
        with tempfile.TemporaryDirectory(prefix="varno-install-") as folder:
            subprocess.run(
                [CMAKE, "--install", BUILD, "--prefix", folder], check=True, capture_output=True)
            share = Path(folder) / "share"
            for name in ("man/man1/varno.1.gz", "bash-completion/completions/varno",
                         "man/man1/varno-solve.1.gz", "bash-completion/completions/varno-solve",
                         "doc/varno/docs/solve/manual.md", "doc/varno/examples/solve/kepler.varno",
                         "doc/varno/README.md", "doc/varno/LICENSE", "doc/varno/docs/varno/manual.md",
                         "doc/varno/docs/varno/gallery/lorenz.png"):
                self.assertTrue((share / name).is_file(), name)

            result = subprocess.run(
                [Path(folder) / "bin" / "varno", share / "doc/varno/examples/varno/lorenz.varno"],
                check=True, capture_output=True, text=True)
            self.assertTrue(result.stdout.startswith("# ORDER TIME x y z\n"), result.stdout)
            self.assertIn("1.00000000000e+00 ", result.stdout.splitlines()[-1])

            result = subprocess.run(
                [Path(folder) / "bin" / "varno-solve", "--last", "--quiet",
                 share / "doc/varno/examples/solve/sir.varno"],
                check=True, capture_output=True, text=True)
            self.assertTrue(
                result.stdout.startswith("# t  susceptible  infected  recovered  invariant\n"),
                result.stdout)


if __name__ == "__main__":
    unittest.main()
