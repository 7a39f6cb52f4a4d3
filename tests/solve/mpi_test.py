#!/usr/bin/env python3
"""Sweeps by several ranks of MPI give the bytes of one thread.

Usage: mpi_test.py PROGRAM PROGRAM_MPI
"""

import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import counts_of_lines

PROGRAM = Path(sys.argv.pop(1)).resolve()
PROGRAM_MPI = Path(sys.argv.pop(1)).resolve()
TIMEOUT = 120
EQUATIONS = "w = 1;\nx' = v & 1;\nv' = -w*x;\n"
SWEEP = ["--to", "2", "--every", "1/2", "--digits", "10", "--format", "csv"]
ENVIRONMENT = {
    **os.environ,
    "LC_ALL": "C",
    "OMPI_ALLOW_RUN_AS_ROOT": "1",
    "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1",
    "OMPI_MCA_rmaps_base_oversubscribe": "1",
    "OMPI_MCA_hwloc_base_binding_policy": "none",
    "OMPI_MCA_btl": "self,vader",
    "OMPI_MCA_plm_rsh_agent": "",
    # Containers often forbid what this would be faster with.
    "OMPI_MCA_btl_vader_single_copy_mechanism": "none",
}


def ranks_of(mpirun):
    """The processes that mpirun has started."""
    children = Path(f"/proc/{mpirun.pid}/task/{mpirun.pid}/children").read_text()
    return [int(pid) for pid in children.split()]


class MpiTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        (self.folder / "oscillator.varno").write_text(EQUATIONS)

    def run_command(self, command, **options):
        return subprocess.run(command, cwd=self.folder, env=ENVIRONMENT, capture_output=True,
                              timeout=TIMEOUT, **options)

    def straight(self, *arguments):
        return self.run_command([PROGRAM, "--jobs", "1", *arguments])

    def ranks(self, count, *arguments, **options):
        return self.run_command(["mpirun", "-n", str(count), PROGRAM_MPI, "--jobs", "1", *arguments],
                                **options)

    def wait_for_rows(self, process, path, size):
        """Until a process that goes on has written as many bytes."""
        deadline = time.monotonic() + TIMEOUT
        while not (path.exists() and path.stat().st_size >= size):
            self.assertIsNone(process.poll())
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.005)

    def check(self, count, *arguments):
        expected, actual = self.straight(*arguments), self.ranks(count, *arguments)
        self.assertEqual(expected.stdout, actual.stdout, actual.stderr)
        self.assertEqual(expected.returncode, actual.returncode, actual.stderr)
        return actual

    # Runs that fail are among them, and first ones that take longest.
    def test_four_ranks(self):
        (self.folder / "root.varno").write_text("w = 1;\ny' = -sqrt(w - t)*cos(w*t)^2 & w;\n")
        done = self.check(4, "root.varno", *SWEEP, "--sweep", "w=20,1:3:1/5".split(",")[0] + ",3,1,2,5,2/3,4")
        self.assertIn(b"run 3 (w = 1)", done.stderr)

    def test_one_rank(self):
        command = ["oscillator.varno", *SWEEP, "--sweep", "w=1:3:1/2"]
        done = self.check(1, *command)
        without_mpirun = self.run_command([PROGRAM_MPI, *command])
        self.assertEqual(done.stdout, without_mpirun.stdout)

    def test_events_are_among_the_rows(self):
        (self.folder / "events.varno").write_text(
            EQUATIONS + "event zero: x falling;\nevent end: t - 3/2*w stop;\n")
        done = self.check(2, "events.varno", "--to", "5", "--every", "1", "--sweep", "w=1:5:1")
        self.assertEqual(3, done.stdout.count(b"# event end"))

    def test_many_short_runs_from_standard_input(self):
        command = ["-", "--last", "--digits", "5", "--sweep", "w=1/1000:1/10:1/1000"]
        expected = self.run_command([PROGRAM, *command], input=EQUATIONS.encode())
        actual = self.ranks(4, *command, input=EQUATIONS.encode())
        self.assertEqual(expected.stdout, actual.stdout, actual.stderr)
        self.assertEqual(0, actual.returncode)

    def test_rows_larger_than_a_message(self):
        names = "".join(f"c{i} = x + {i};\n" for i in range(300))
        (self.folder / "large.varno").write_text("w = 1;\nx' = w & 1;\n" + names)
        self.check(3, "large.varno", "--digits", "5000", "--last", "--no-check", "--format", "csv",
                   "--sweep", "w=1/3,1/7,1/9")

    def test_mistakes_and_single_problems_need_no_other_rank(self):
        for arguments in (["missing.varno", "--sweep", "w=1,2"], ["--version"],
                          ["oscillator.varno", "--last"]):
            with self.subTest(arguments):
                self.check(2, *arguments)

    def test_state_keeps_what_is_done_when_a_rank_dies(self):
        command = ["oscillator.varno", *SWEEP, "--sweep", "w=1,2,3,4,1e13"]
        process = subprocess.Popen(
            ["mpirun", "-n", "3", PROGRAM_MPI, "--jobs", "1", *command, "--output", "rows", "--save",
             "state"],
            cwd=self.folder, env=ENVIRONMENT | counts_of_lines.away_from(self.folder),
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        rows = self.folder / "rows"
        deadline = time.monotonic() + TIMEOUT
        while time.monotonic() < deadline:
            if rows.exists() and rows.read_bytes().count(b"\n4,2,") == 1:
                break
            time.sleep(0.01)
        os.kill(ranks_of(process)[-1], signal.SIGKILL)
        process.wait(TIMEOUT)

        expected = self.straight("oscillator.varno", *SWEEP, "--sweep", "w=1,2,3,4").stdout
        state = (self.folder / "state").read_text()
        self.assertIn('"current": 4', state)
        self.assertTrue(rows.read_bytes().startswith(expected))

    # The last run takes for ever, so that the sweep is never through before a rank dies; a limit ends
    # it afterwards.
    def test_the_rest_is_done_after_a_rank_has_died(self):
        values = "w=" + ",".join(map(str, range(1, 41))) + ",1e13"
        command = ["oscillator.varno", "--to", "8", "--every", "1/4", "--sweep", values]
        limit = ["--max-steps", "2000"]
        expected = self.straight(*command, *limit).stdout
        rows, state = self.folder / "rows", self.folder / "state"
        for victim, program in (0, [PROGRAM]), (1, ["mpirun", "-n", "2", PROGRAM_MPI]):
            with self.subTest(victim):
                rows.unlink(missing_ok=True)
                process = subprocess.Popen(
                    ["mpirun", "-n", "2", PROGRAM_MPI, "--jobs", "1", *command, "--output", "rows",
                     "--save", "state"], cwd=self.folder,
                    env=ENVIRONMENT | counts_of_lines.away_from(self.folder),
                    stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                self.addCleanup(process.wait)
                self.wait_for_rows(process, rows, 5000)
                os.kill(ranks_of(process)[victim], signal.SIGKILL)
                process.wait(TIMEOUT)
                # Of the last run nothing but its first row can be there.
                self.assertLessEqual(rows.stat().st_size, len(expected))
                done = self.run_command([*program, "--resume", "state", "--save", "state", *limit])
                self.assertEqual(2, done.returncode, done.stderr)
                self.assertIn(b"run 41 (w = 10000000000000): --max-steps 2000 reached", done.stderr)
                self.assertEqual(expected, rows.read_bytes())

    def test_plain_program_needs_no_mpi(self):
        # Linked with archives alone it has no libraries, and ldd fails.
        libraries = subprocess.run(["ldd", PROGRAM], capture_output=True).stdout
        self.assertNotIn(b"libmpi", libraries)

    def test_plain_program_refuses_several_ranks(self):
        environment = {**ENVIRONMENT, "OMPI_COMM_WORLD_SIZE": "4"}
        for rank, message in ("0", b"varno-solve-mpi does"), ("1", b""):
            done = subprocess.run([PROGRAM, "oscillator.varno"], cwd=self.folder,
                                  capture_output=True,
                                  env={**environment, "OMPI_COMM_WORLD_RANK": rank})
            self.assertEqual(1, done.returncode)
            self.assertEqual(b"", done.stdout)
            self.assertIn(message, done.stderr)


if __name__ == "__main__":
    unittest.main()
