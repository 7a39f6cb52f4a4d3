#!/usr/bin/env python3
"""Runs and sweeps that are interrupted, killed and gone on with give the bytes of straight ones.

Usage: saved_states_test.py PROGRAM
"""

import os
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import counts_of_lines

PROGRAM = Path(sys.argv.pop(1)).resolve()
TIMEOUT = 60
EQUATIONS = "w = 1;\nx' = v & 1;\nv' = -w*x;\n"
RUN = ["oscillator.varno", "--to", "20", "--every", "1/8", "--digits", "20"]
SWEEP = ["oscillator.varno", "--to", "4", "--every", "1", "--sweep", "w=1:8:1/4", "--jobs", "2"]
INTERRUPTED = {130, 143}


def limit_files(count):
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (count, count))


class SavedStatesTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        (self.folder / "oscillator.varno").write_text(EQUATIONS)

    def solve(self, *arguments):
        return subprocess.run([PROGRAM, *arguments], cwd=self.folder, capture_output=True,
                              stdin=subprocess.DEVNULL, timeout=TIMEOUT)

    def solve_with_room_for(self, count, *arguments):
        """No file can become longer than so many bytes, as on a full disk."""
        return subprocess.run([PROGRAM, *arguments], cwd=self.folder, capture_output=True,
                              env=counts_of_lines.away_from(self.folder),
                              stdin=subprocess.DEVNULL, timeout=TIMEOUT,
                              preexec_fn=lambda: limit_files(count))

    def straight(self, *arguments):
        done = self.solve(*arguments)
        self.assertEqual(0, done.returncode, done.stderr)
        return done.stdout

    def end_after_rows(self, signal_number, *arguments):
        """Starts the program and ends it as soon as there are some rows. Returns its status."""
        rows = self.folder / "rows"
        process = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder,
                                   env=counts_of_lines.away_from(self.folder),
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        before = rows.stat().st_size if rows.exists() else 0
        deadline = time.monotonic() + TIMEOUT
        while process.poll() is None and time.monotonic() < deadline:
            if rows.exists() and rows.stat().st_size > before + 100:
                break
            time.sleep(0.001)
        process.send_signal(signal_number)
        return process.wait(TIMEOUT)

    def resume_to_the_end(self):
        done = self.solve("--resume", "state", "--save", "state")
        self.assertEqual(0, done.returncode, done.stderr)
        return (self.folder / "rows").read_bytes()

    def check_interruptions(self, command, signal_number):
        expected = self.straight(*command)
        status = self.end_after_rows(signal_number, *command, "--output", "rows", "--save", "state")
        self.assertIn(status, {0, -signal.SIGKILL, *INTERRUPTED})
        # Once more, on the way
        self.end_after_rows(signal_number, "--resume", "state", "--save", "state")
        self.assertEqual(expected, self.resume_to_the_end())
        # There is nothing left to do.
        self.assertEqual(expected, self.resume_to_the_end())

    def test_run_after_interruptions(self):
        self.check_interruptions(RUN, signal.SIGINT)

    def test_run_after_its_death(self):
        self.check_interruptions(RUN, signal.SIGKILL)

    def test_sweep_after_interruptions(self):
        self.check_interruptions(SWEEP, signal.SIGTERM)

    def test_sweep_after_its_death(self):
        self.check_interruptions([*SWEEP, "--format", "csv"], signal.SIGKILL)

    def test_standard_output_goes_on_where_it_ended(self):
        for form in "table", "csv", "json":
            with self.subTest(form):
                command = [*RUN, "--format", form]
                expected = self.straight(*command)
                first = self.solve(*command, "--max-steps", "5", "--save", "state")
                self.assertEqual(2, first.returncode)
                second = self.solve("--resume", "state", "--max-steps", "1000000")
                self.assertEqual(0, second.returncode, second.stderr)
                self.assertTrue(first.stdout and second.stdout)
                self.assertEqual(expected, first.stdout + second.stdout)

    # A table of 31 runs has about 9 kB.
    def test_sweep_goes_on_after_a_full_disk(self):
        for form, jobs in ("table", "1"), ("table", "2"), ("csv", "2"):
            with self.subTest(form + jobs):
                command = [*SWEEP, "--format", form, "--jobs", jobs]
                expected = self.straight(*command)
                for room in 3000, 3300:
                    (self.folder / "state").unlink(missing_ok=True)
                    full = self.solve_with_room_for(room, *command, "--save", "state", "--output", "rows")
                    self.assertEqual(3, full.returncode)
                    self.assertIn(b"File too large", full.stderr)
                    self.assertEqual(expected, self.resume_to_the_end())

    def test_run_goes_on_after_a_full_disk(self):
        expected = self.straight(*RUN)
        full = self.solve_with_room_for(2000, *RUN, "--save", "state", "--output", "rows")
        self.assertEqual(3, full.returncode)
        self.assertEqual(expected, self.resume_to_the_end())

    # All of the run is made again, and with it its events are written anew.
    def test_events_are_those_of_a_straight_run(self):
        (self.folder / "oscillator.varno").write_text(EQUATIONS + "event zero: x;\n")
        self.straight(*RUN, "--events", "expected")
        self.solve(*RUN, "--events", "events", "--max-steps", "12", "--save", "state",
                   "--output", "rows")
        expected = (self.folder / "expected").read_bytes()
        part = (self.folder / "events").read_bytes()
        self.assertTrue(expected.startswith(part) and 0 < len(part) < len(expected))
        done = self.solve("--resume", "state", "--max-steps", "1000000")
        self.assertEqual(0, done.returncode, done.stderr)
        self.assertEqual(expected, (self.folder / "events").read_bytes())
        self.assertEqual(self.straight(*RUN), (self.folder / "rows").read_bytes())

    def test_failed_runs_are_told_once(self):
        (self.folder / "pole.varno").write_text("a = 1;\ny' = y^2 & a;\n")
        command = ["pole.varno", "--to", "1", "--every", "1/4", "--digits", "8", "--sweep",
                   "a=1/8:3:1/8", "--format", "csv", "--jobs", "1"]
        straight = self.solve(*command)
        self.assertEqual(2, straight.returncode)
        first = self.solve_with_room_for(1300, *command, "--save", "state", "--output", "rows")
        second = self.solve("--resume", "state", "--save", "state")
        self.assertEqual((3, 2), (first.returncode, second.returncode))
        self.assertEqual(straight.stdout, (self.folder / "rows").read_bytes())

        def told(*texts):
            return [line for text in texts for line in text.splitlines() if b": run " in line]

        self.assertEqual(told(straight.stderr), told(first.stderr, second.stderr))
        self.assertIn(b"24 runs, 17 failed", second.stderr)

    def test_equations_come_from_the_state(self):
        self.solve(*RUN, "--max-steps", "5", "--save", "state", "--output", "rows")
        (self.folder / "oscillator.varno").write_text("something else")
        self.assertEqual(0, self.solve("--resume", "state", "--max-steps", "1000000").returncode)
        (self.folder / "oscillator.varno").write_text(EQUATIONS)
        self.assertEqual(self.straight(*RUN), (self.folder / "rows").read_bytes())

    def test_run_goes_on_to_a_later_end(self):
        command = ["oscillator.varno", "--every", "1/4", "--format", "csv", "--to"]
        first = self.solve(*command, "1", "--save", "state")
        second = self.solve("--resume", "state", "--to", "2")
        self.assertEqual(self.straight(*command, "2"), first.stdout + second.stdout)

    def test_rows_that_would_be_others_are_refused(self):
        self.solve("oscillator.varno", "--points", "4", "--save", "state")
        other = self.solve("--resume", "state", "--to", "2")
        self.assertEqual(1, other.returncode)
        self.assertEqual(b"", other.stdout)
        self.assertIn(b"come out differently", other.stderr)

    def test_file_of_rows_must_be_there(self):
        self.solve(*SWEEP, "--save", "state", "--output", "rows")
        (self.folder / "rows").write_text("short")
        done = self.solve("--resume", "state")
        self.assertEqual(3, done.returncode)
        self.assertIn(b"shorter than", done.stderr)
        self.assertEqual("short", (self.folder / "rows").read_text())

    def test_wrong_states_and_options_are_refused(self):
        self.solve(*SWEEP, "--save", "state", "--output", "rows")
        text = (self.folder / "state").read_text()
        (self.folder / "damaged").write_text(text.replace("w=1:8:1/4", "w=1:9:1/4"))
        (self.folder / "truncated").write_text(text[:len(text)//2])
        (self.folder / "empty").touch()
        (self.folder / "foreign").write_text(EQUATIONS)
        os.mkfifo(self.folder / "pipe")
        for arguments, message in [
                (["--resume", "damaged"], b"the file has been damaged"),
                (["--resume", "truncated"], b"not a state of varno-solve"),
                (["--resume", "empty"], b"not a state of varno-solve"),
                (["--resume", "."], b"Is a directory"),
                (["--resume", "state", "--save", "pipe"], b"it is no plain file"),
                (["--resume", "foreign"], b"not a state of varno-solve"),
                (["--resume", "missing"], b"cannot read 'missing'"),
                (["--resume", "state", "oscillator.varno"], b"takes no FILE"),
                (["--resume", "state", "--digits", "7"], b"--digits cannot be changed"),
                (["--resume", "state", "--to", "7"], b"--to cannot be changed"),
                (["--resume", "state", "--save", "nowhere/state"], b"cannot write 'nowhere/state'"),
                ([*RUN, "--save", "oscillator.varno"], b"is the file of the equations"),
                ([*RUN, "--save", "s", "--output", "s"], b"--save 's' is the file of the rows"),
                ([*RUN, "--save", "s", "--events", "./s"], b"--save 's' is the file of the events"),
                (["--resume", "state", "--save", "rows"], b"--save 'rows' is the file of the rows"),
                ([*RUN, "--save", "s", "--plot", "p.png"], b"exclude each other")]:
            with self.subTest(arguments):
                done = self.solve(*arguments)
                self.assertIn(done.returncode, {1, 3})
                self.assertEqual(b"", done.stdout)
                self.assertIn(message, done.stderr)
        self.assertFalse((self.folder / "s").exists())
        self.assertEqual(EQUATIONS, (self.folder / "oscillator.varno").read_text())


if __name__ == "__main__":
    os.environ["LC_ALL"] = "C"
    unittest.main()
