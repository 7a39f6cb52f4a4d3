#!/usr/bin/env python3
"""Output appears at once, ends quietly with its reader, and is never lost in silence.

Usage: streams_test.py PROGRAM
"""

import os
import pty
import select
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROGRAM = Path(sys.argv.pop(1)).resolve()
EQUATION = "x' = -x & 1;\n"
# A run that lasts much longer than any test, and falls silent on both streams after its first step:
# what is not flushed then never comes.
ENDLESS = ("-t", "1e15", "-f", "1", "-F", "1e14", "-x", "-1")
SECONDS = 60
HEADER = b"# ORDER TIME x"
LOST_OUTPUT = "#(ERR) Cannot write the results to standard output\n"


class StreamsTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        (self.folder / "input.varno").write_text(EQUATION)

    def start(self, *options, **streams):
        process = subprocess.Popen(
            [PROGRAM, *options, "input.varno"], cwd=self.folder, stdin=subprocess.DEVNULL,
            env={**os.environ, "HOME": str(self.folder)}, **streams)
        self.addCleanup(process.__exit__, None, None, None)
        self.addCleanup(process.kill)
        return process

    def start_endless(self, stdout):
        return self.start(*ENDLESS, stdout=stdout, stderr=subprocess.PIPE)

    def read_lines(self, descriptor, count):
        """The lines that appear before the program falls silent, without their ends."""
        text = b""
        while text.count(b"\n") < count:
            ready = select.select([descriptor], [], [], SECONDS)[0]
            self.assertTrue(ready, f"nothing came after {text!r}")
            text += os.read(descriptor, 4096)
        return text.splitlines()

    def assert_row_while_running(self, process, descriptor):
        header, row = self.read_lines(descriptor, 2)
        self.assertEqual(header, HEADER)
        self.assertEqual(row.split()[1], b"0.00000000000e+00")
        self.assertIsNone(process.poll())

    # --- prompt

    def test_rows_reach_a_pipe_at_once(self):
        process = self.start_endless(subprocess.PIPE)
        self.assert_row_while_running(process, process.stdout.fileno())

    def test_rows_reach_a_terminal_at_once(self):
        try:
            controller, terminal = pty.openpty()
        except OSError as error:
            self.skipTest(f"no terminal to be had: {error}")
        self.addCleanup(os.close, controller)
        process = self.start_endless(terminal)
        os.close(terminal)
        self.assert_row_while_running(process, controller)

    def test_commentary_reaches_a_pipe_at_once(self):
        process = self.start_endless(subprocess.DEVNULL)
        lines = self.read_lines(process.stderr.fileno(), 6)
        self.assertEqual(lines[:5], [
            b"#(INFO) Parsing input", b"#(INFO) Initializing values", b"#(INFO) Starting solving",
            b"", b"#(COMP) System is STIFF!"])
        self.assertTrue(lines[5].startswith(b"#(TST) "), lines[5])
        self.assertIsNone(process.poll())

    # --- closed

    def test_closed_pipe_ends_the_run_quietly(self):
        process = self.start("-t", "1e15", "-f", "1", "-x", "-1", stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE)
        process.stdout.readline()
        process.stdout.close()
        commentary = process.stderr.read().decode()
        self.assertEqual(process.wait(SECONDS), -signal.SIGPIPE)
        self.assertIn("Starting solving", commentary)
        self.assertNotIn("#(ERR)", commentary)

    # --- full

    def assert_loss_is_reported(self, *options):
        with open("/dev/full", "wb") as full:
            process = self.start(*options, stdout=full, stderr=subprocess.PIPE)
        commentary = process.communicate()[1].decode()
        self.assertEqual(process.returncode, 1, commentary)
        self.assertTrue(commentary.endswith(LOST_OUTPUT), commentary)
        self.assertEqual(commentary.count("#(ERR)"), 1)

    def test_full_disk_is_reported(self):
        for options in ((), ("-L", "1"), ("-g", "png"), ("-3", "1"), ("-P", "none:")):
            with self.subTest(options):
                self.assert_loss_is_reported(*options)

    def test_full_disk_for_the_commentary_harms_no_results(self):
        with open("/dev/full", "wb") as full:
            process = self.start(stdout=subprocess.PIPE, stderr=full)
        results = process.communicate()[0].splitlines()
        self.assertEqual(process.returncode, 0)
        self.assertEqual(results[0], HEADER)
        self.assertEqual(results[-1].split()[1], b"1.00000000000e+00")


if __name__ == "__main__":
    unittest.main()
