#!/usr/bin/env python3
"""What becomes of rows and messages when pipes close, disks fill, terminals watch or signals come.

Usage: streams_test.py PROGRAM
"""

import fcntl
import os
import pty
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time
import unittest
from pathlib import Path

import counts_of_lines

PROGRAM = Path(sys.argv.pop(1)).resolve()
EQUATIONS = "x' = v & 1;\nv' = -x;\n"
#: more rows than any test waits for
ENDLESS = ["--to", "1e9", "--every", "1"]
ROW = re.compile(r"^[0-9.e+]+ +-?[0-9.]+e[+-]\d\d +(-?[0-9.]+e[+-]\d\d|0)$")
TIMEOUT = 60


def ignore_interrupts():
    signal.signal(signal.SIGINT, signal.SIG_IGN)


class StreamsTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        self.file = self.folder / "oscillator.varno"
        self.file.write_text(EQUATIONS)

    def start(self, *arguments, **options):
        process = subprocess.Popen(
            [PROGRAM, self.file, *arguments],
            **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "stdin": subprocess.DEVNULL,
               **options})
        self.addCleanup(self.stop, process)
        return process

    @staticmethod
    def stop(process):
        if process.poll() is None:
            process.kill()
        process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            if stream:
                stream.close()

    def finish(self, process):
        """Returns the exit status and what stood on standard error."""
        errors = process.stderr.read().decode()
        return process.wait(TIMEOUT), errors

    @staticmethod
    def wait_for_full_pipe(reader):
        """Returns when the pipe has no room for another row."""
        size = fcntl.fcntl(reader, fcntl.F_GETPIPE_SZ)
        held = bytearray(4)
        while int.from_bytes(held, sys.byteorder) < size - 4096:
            time.sleep(0.01)
            fcntl.ioctl(reader, termios.FIONREAD, held)

    def shell(self, command):
        return subprocess.run(
            ["bash", "-c", command, "bash", PROGRAM, self.file], cwd=self.folder,
            env=counts_of_lines.away_from(self.folder), capture_output=True, text=True,
            timeout=TIMEOUT)

    # Pipes and disks

    def test_closed_pipe_ends_quietly(self):
        process = self.start(*ENDLESS)
        self.assertEqual(process.stdout.readline(), b"# t  x  v\n")
        process.stdout.close()
        self.assertEqual(self.finish(process), (128 + signal.SIGPIPE, ""))

    def test_closed_pipe_for_the_help(self):
        reader, writer = os.pipe()
        os.close(reader)
        process = self.start("--help", stdout=writer)
        os.close(writer)
        self.assertEqual(self.finish(process), (128 + signal.SIGPIPE, ""))

    def test_full_disk_is_noticed_at_the_first_row(self):
        with open("/dev/full", "wb") as full:
            process = self.start(*ENDLESS, stdout=full)
            status, errors = self.finish(process)
        self.assertEqual(status, 3)
        self.assertEqual(errors, "varno-solve: cannot write standard output: No space left on "
                                 "device; lost from the row t = 0 on\n")

    def test_full_disk_for_the_help(self):
        result = self.shell('"$1" --help >/dev/full')
        self.assertEqual(result.returncode, 3)
        self.assertEqual(
            result.stderr,
            "varno-solve: cannot write standard output: No space left on device\n")

    def test_disk_that_fills_up_later(self):
        result = self.shell(
            'ulimit -f 1; trap "" XFSZ; "$1" "$2" --to 1e9 --every 1 --output rows')
        self.assertEqual(result.returncode, 3)
        rows = (self.folder / "rows").read_text().splitlines()
        lost = re.fullmatch(
            r"varno-solve: cannot write 'rows': File too large; lost from the row t = (\d+) on\n",
            result.stderr)
        self.assertTrue(lost, result.stderr)
        # A header, the rows 0, 1, ..., and the beginning of the lost one.
        self.assertIn(len(rows), (int(lost[1]) + 1, int(lost[1]) + 2))

    def test_folder_that_takes_no_files(self):
        # The administrator may write everywhere, so somebody else runs a copy of the program.
        self.folder.chmod(0o755)
        program = self.folder / "varno-solve"
        shutil.copy2(PROGRAM, program)
        closed = self.folder / "closed"
        closed.mkdir(0o555)
        counts = self.folder / "counts"
        counts.mkdir()
        counts.chmod(0o777)
        result = subprocess.run(
            [program, self.file, "--output", closed / "rows"], capture_output=True, text=True,
            env=counts_of_lines.away_from(counts), timeout=TIMEOUT,
            **({"user": 65534} if os.geteuid() == 0 else {}))
        self.assertEqual(result.returncode, 3)
        self.assertEqual(
            result.stderr, f"varno-solve: cannot write '{closed}/rows': Permission denied\n")

    def test_each_row_is_there_at_once(self):
        # The pipe stays open, and the run goes on: nothing but the row itself can bring it here.
        process = self.start(*ENDLESS)
        self.assertEqual(process.stdout.readline(), b"# t  x  v\n")
        self.assertTrue(process.stdout.readline().startswith(b"0 "))

    def test_pipe_that_does_not_block(self):
        reader, writer = os.pipe()
        fcntl.fcntl(writer, fcntl.F_SETFL, os.O_NONBLOCK)
        process = self.start("--points", "20000", stdout=writer)
        os.close(writer)
        self.wait_for_full_pipe(reader)
        with open(reader, "rb") as file:
            rows = file.read().splitlines()
        self.assertEqual(self.finish(process)[0], 0)
        self.assertEqual(len(rows), 20002)

    # Closed standard streams

    def test_closed_standard_output(self):
        result = self.shell('"$1" "$2" >&-')
        self.assertEqual(result.returncode, 3)
        self.assertIn("cannot write standard output: Bad file descriptor", result.stderr)

    def test_closed_standard_error(self):
        result = self.shell('"$1" "$2" --points 4 --progress --output rows 2>&-')
        self.assertEqual((result.returncode, result.stdout), (0, ""))
        rows = (self.folder / "rows").read_text().splitlines()
        self.assertEqual(len(rows), 6)
        self.assertEqual(rows[0], "# t  x  v")

    def test_closed_standard_input(self):
        result = self.shell('"$1" - <&-')
        self.assertEqual(result.returncode, 1)
        self.assertEqual(
            result.stderr, "varno-solve: cannot read '<stdin>': Bad file descriptor\n")

    # Signals

    def assert_interrupted(self, process, signal_number):
        process.send_signal(signal_number)
        # What the pipe still holds must not keep it from ending.
        reader = subprocess.Popen(["cat"], stdin=process.stdout, stdout=subprocess.DEVNULL)
        status, errors = self.finish(process)
        reader.wait()
        self.assertEqual(status, 128 + signal_number)
        self.assertRegex(errors, r"\Avarno-solve: interrupted[^\n]*\n[^\n]*\n[^\n]*\n[^\n]*\n\Z")

    def test_interrupt_ends_with_a_summary(self):
        process = self.start(*ENDLESS)
        process.stdout.readline()
        self.assert_interrupted(process, signal.SIGINT)

    def test_termination_ends_with_a_summary(self):
        process = self.start(*ENDLESS)
        process.stdout.readline()
        self.assert_interrupted(process, signal.SIGTERM)

    def test_interrupt_inside_of_a_step(self):
        # A single step takes minutes here.
        self.file.write_text("x' = sin(x)^300 & 1/2;\n")
        process = self.start("--digits", "10000")
        process.stdout.readline()
        process.stdout.readline()
        self.assert_interrupted(process, signal.SIGINT)

    def test_interrupt_while_nobody_reads(self):
        process = self.start(*ENDLESS)
        process.stdout.readline()
        self.wait_for_full_pipe(process.stdout.fileno())
        process.send_signal(signal.SIGINT)
        status, errors = self.finish(process)
        self.assertEqual(status, 128 + signal.SIGINT)
        self.assertRegex(errors, r"\Avarno-solve: interrupted")

    def test_interrupt_while_the_equations_are_typed(self):
        process = subprocess.Popen([PROGRAM, "-"], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(self.stop, process)
        process.stdin.write(b"x' = ")
        process.stdin.flush()
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(TIMEOUT), -signal.SIGINT)

    def test_ignored_interrupt_stays_ignored(self):
        process = self.start(*ENDLESS, preexec_fn=ignore_interrupts)
        process.stdout.readline()
        process.send_signal(signal.SIGINT)
        for _ in range(1000):
            self.assertTrue(process.stdout.readline())
        self.assert_interrupted(process, signal.SIGTERM)

    def test_interrupted_file_holds_whole_rows(self):
        rows = self.folder / "rows"
        process = self.start(*ENDLESS, "--output", rows)
        while not rows.exists() or rows.stat().st_size < 1000:
            time.sleep(0.01)
        process.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(process)[0], 128 + signal.SIGINT)
        text = rows.read_text()
        self.assertTrue(text.endswith("\n"))
        for row in text.splitlines()[1:]:
            self.assertRegex(row, ROW)

    # Terminals

    def on_terminal(self, *arguments, same_for_rows):
        """Everything a terminal gets to see."""
        controller, terminal = pty.openpty()
        process = self.start(
            *arguments, stderr=terminal,
            stdout=terminal if same_for_rows else subprocess.DEVNULL)
        os.close(terminal)
        seen = b""
        while True:
            select.select([controller], [], [], TIMEOUT)
            try:
                block = os.read(controller, 65536)
            except OSError:  # the other side is closed
                break
            if not block:
                break
            seen += block
        os.close(controller)
        self.assertEqual(process.wait(TIMEOUT), 0)
        return seen.decode().replace("\r\n", "\n")

    def test_progress_does_not_mix_with_rows(self):
        text = self.on_terminal("--to", "20", "--every", "1", same_for_rows=True)
        # A carriage return and the code that clears the line take away what stands in it.
        lines = [line.rpartition("\r\033[K")[2] for line in text.rstrip("\n").split("\n")]
        self.assertEqual(lines[0], "# t  x  v")
        for line in lines[1:22]:
            self.assertRegex(line, ROW)
        self.assertEqual(len(lines), 22 + 3)  # and the summary

    def test_progress_line_is_taken_away_at_the_end(self):
        text = self.on_terminal("--to", "20", "--every", "1", same_for_rows=False)
        lines = [line.rpartition("\r\033[K")[2] for line in text.rstrip("\n").split("\n")]
        self.assertEqual(len(lines), 3)
        self.assertRegex(lines[0], "steps?, order")

    def test_quiet_means_no_progress_on_a_terminal(self):
        self.assertEqual(self.on_terminal("--to", "20", "--quiet", same_for_rows=False), "")


if __name__ == "__main__":
    # Whoever runs this in the background may have it ignore interrupts, which programs inherit.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    unittest.main()
