#!/usr/bin/env python3
"""A runner that lets a wrong program pass is worse than none: it must fail what must fail.

The programs here are small shell scripts in place of varno.
"""

import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from run_case import project_version

RUNNER = Path(__file__).resolve().parent / "run_case.py"
HOLDS, FAILS, BAD_CASE = 0, 1, 2


class RunCaseTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)

    def run_case(self, script, **files):
        """Runs the case with these files on a program made of the shell script."""
        program = self.scratch / "program"
        program.write_text("#!/bin/bash\n" + script)
        program.chmod(0o755)
        case = self.scratch / "some_case"
        case.mkdir()
        for name, content in {"why": "by hand", **files}.items():
            name = name.replace("input_varno", "input.varno")
            (case / name).write_bytes(content if isinstance(content, bytes) else content.encode())
        return subprocess.run(
            [sys.executable, RUNNER, program, case], stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True)

    def assert_outcome(self, result, status, *texts):
        self.assertEqual(result.returncode, status, result.stdout)
        for text in texts:
            self.assertIn(text, result.stdout)

    # --- output and status

    def test_equal_output_holds(self):
        result = self.run_case("echo 1; echo 2 >&2; exit 3", stdout="1\n", stderr="2\n", status="3\n")
        self.assert_outcome(result, HOLDS)
        self.assertEqual(result.stdout, "")

    def test_missing_files_mean_empty_empty_0(self):
        self.assert_outcome(self.run_case("true"), HOLDS)

    def test_other_stdout_fails_with_diff(self):
        result = self.run_case("echo 1.50; echo x", stdout="1.5\nx\n")
        self.assert_outcome(result, FAILS, "-1.5\\n\n", "+1.50\\n\n", " x\\n", "by hand")

    def test_unexpected_stdout_fails(self):
        self.assert_outcome(self.run_case("echo 1"), FAILS, "+1\\n")

    def test_unexpected_stderr_fails(self):
        self.assert_outcome(self.run_case("echo 1 >&2"), FAILS, "stderr actual", "+1\\n")

    def test_missing_final_newline_fails(self):
        self.assert_outcome(self.run_case("printf 1", stdout="1\n"), FAILS, "-1\\n\n+1\n")

    def test_tab_for_space_fails(self):
        self.assert_outcome(self.run_case(r"printf 'a\tb\n'", stdout="a b\n"), FAILS, r"+a\tb\n")

    def test_carriage_return_fails(self):
        self.assert_outcome(self.run_case(r"printf 'a\r\n'", stdout="a\n"), FAILS, r"+a\r\n")

    def test_bytes_that_are_no_text_are_compared(self):
        self.assert_outcome(self.run_case(r"printf '\xff\n'", stdout=b"\xfe\n"), FAILS, r"+\xff\n")

    def test_other_status_fails(self):
        self.assert_outcome(self.run_case("exit 1"), FAILS, "expected 0, got 1")

    def test_signal_by_name(self):
        self.assert_outcome(self.run_case("kill -SEGV $$", status="SIGSEGV\n"), HOLDS)

    def test_signal_is_no_exit_status(self):
        self.assert_outcome(
            self.run_case("kill -SEGV $$", status="139"), FAILS, "expected 139, got SIGSEGV")

    # --- what the program gets

    def test_argument_is_the_input_unless_told(self):
        self.assert_outcome(
            self.run_case('echo "$#"; cat "$1"', input_varno="x' = x;\n", stdout="1\nx' = x;\n"), HOLDS)

    def test_arguments_are_quoted_as_in_a_shell(self):
        self.assert_outcome(
            self.run_case(r'printf "<%s>\n" "$@"', args="-a 'b c'\n-d\n", stdout="<-a>\n<b c>\n<-d>\n"),
            HOLDS)

    def test_empty_args_mean_no_argument(self):
        self.assert_outcome(self.run_case("echo $#", args="", stdout="0\n"), HOLDS)

    def test_standard_input(self):
        self.assert_outcome(self.run_case("cat", stdin="1\n", stdout="1\n"), HOLDS)

    def test_no_standard_input(self):
        self.assert_outcome(self.run_case("cat"), HOLDS)

    def test_home_is_its_own(self):
        self.assert_outcome(
            self.run_case('ls -A "$HOME"; cat "$HOME/.varnorc"; echo "$LC_ALL"',
                          varnorc="_ORDER 5\n", stdout=".varnorc\n_ORDER 5\nC\n"), HOLDS)

    def test_working_folder_holds_inputs_but_no_expectations(self):
        self.assert_outcome(
            self.run_case("ls -A", input_varno="", stdout="input.varno\nstderr.actual\nstdout.actual\n"),
            HOLDS)

    def test_input_from_the_source_tree(self):
        self.assert_outcome(
            self.run_case("ls -A; cmp run_case.py " + str(RUNNER), input_from="tests/run_case.py\n",
                          stdout="run_case.py\nstderr.actual\nstdout.actual\n"), HOLDS)

    def test_setup_prepares_the_folder(self):
        self.assert_outcome(self.run_case("cat made", setup="echo 5 > made\n", stdout="5\n"), HOLDS)

    def test_time_limit(self):
        start = time.monotonic()
        result = self.run_case("echo 1; sleep 30 & wait", timeout="0.5", stdout="1\n")
        self.assert_outcome(result, FAILS, "not finished after 0.5 seconds")
        self.assertLess(time.monotonic() - start, 10)

    # --- check

    def test_check_in_bash(self):
        self.assert_outcome(
            self.run_case("echo 1; exit 2", status="2",
                          check='[[ $(<stdout.actual) == 1 && $(<status.actual) == 2 ]]\n'), HOLDS)

    def test_check_in_python(self):
        self.assert_outcome(
            self.run_case("echo 1 >&2", check="#!/usr/bin/env python3\nassert open('stderr.actual').read() == '1\\n'\n"),
            HOLDS)

    def test_check_imports_shared_modules(self):
        self.assert_outcome(self.run_case("true", check="#!/usr/bin/env python3\nimport case_support\n"), HOLDS)

    def test_check_that_fails(self):
        self.assert_outcome(
            self.run_case("echo 1", check="echo too small; exit 4\n"), FAILS, "too small", "status 4")

    def test_check_ends_in_time_with_all_that_it_started(self):
        start = time.monotonic()
        # What is left would hold the pipe open.
        result = self.run_case("true", timeout="0.5", check="sleep 30 & wait\n")
        self.assert_outcome(result, FAILS, "check: not finished after 0.5 seconds")
        self.assertLess(time.monotonic() - start, 10)

    def test_check_does_not_replace_given_output(self):
        self.assert_outcome(self.run_case("echo 1", stdout="2\n", check="true\n"), FAILS, "+1\\n")

    def test_check_does_not_replace_status(self):
        self.assert_outcome(self.run_case("exit 1", check="true\n"), FAILS, "expected 0, got 1")

    # --- masks

    def test_time_report_is_masked(self):
        self.assert_outcome(
            self.run_case(r"printf '#(INFO) utime=1s234us \tstime=0s5us\n' >&2",
                          stderr="#(INFO) utime=0s0us \tstime=0s0us\n"), HOLDS)

    def test_time_report_in_another_form_is_not_masked(self):
        self.assert_outcome(
            self.run_case(r"printf '#(INFO) utime=1s234us stime=0s5us\n' >&2",
                          stderr="#(INFO) utime=0s0us \tstime=0s0us\n"), FAILS)

    def test_build_date_is_masked(self):
        self.assert_outcome(
            self.run_case("echo 'VARNO/C  1.0  (Jan  1 2000)'", stdout="VARNO/C  1.0  (Dec 24 1999)\n"),
            HOLDS)

    def test_version_is_not_masked(self):
        self.assert_outcome(
            self.run_case("echo 'VARNO/C  1.1  (Jan  1 2000)'", stdout="VARNO/C  1.0  (Jan  1 2000)\n"),
            FAILS)

    def test_version_of_the_project_is_filled_in(self):
        self.assert_outcome(
            self.run_case(f"echo 'VARNO/C version {project_version()}'",
                          stdout="VARNO/C version @VERSION@\n"), HOLDS)

    # --- cases that are at fault themselves

    def test_empty_why(self):
        self.assert_outcome(self.run_case("true", why=" \n"), BAD_CASE, "why")

    def test_unknown_status(self):
        self.assert_outcome(self.run_case("true", status="SIGNONE"), BAD_CASE, "SIGNONE")

    def test_input_from_nowhere(self):
        self.assert_outcome(self.run_case("true", input_from="no/such"), BAD_CASE, "'no/such'")

    def test_failing_setup(self):
        self.assert_outcome(self.run_case("true", setup="exit 1"), BAD_CASE, "setup")

    def test_missing_program(self):
        case = self.scratch / "case"
        case.mkdir()
        (case / "why").write_text("by hand")
        result = subprocess.run(
            [sys.executable, RUNNER, self.scratch / "none", case], stdout=subprocess.PIPE, text=True)
        self.assert_outcome(result, BAD_CASE, "no such program")


if __name__ == "__main__":
    unittest.main()
