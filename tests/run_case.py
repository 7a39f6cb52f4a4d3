#!/usr/bin/env python3
"""Runs one end-to-end case of varno and compares what came out with what should.

Usage: run_case.py PROGRAM CASE_FOLDER

A case is a folder. Only `why` is required.

  why      where the expected values come from, in one line
  args     the exact argument list, quoted as in a shell, over one or more lines;
           missing: the one argument input.varno
  input_from
           files of the source tree that are copied into the working folder, one path from
           the root of the tree on each line
  stdin    standard input; missing: empty
  varnorc  becomes ~/.varnorc
  timeout  seconds after which the program is stopped; missing: 60
  setup    bash script that prepares the working folder before the program starts
  stdout, stderr
           what the program must write, to the byte, where @VERSION@ stands for the version of
           the project; missing: nothing, or, when there is a check, anything
  status   exit status, or the name of a signal such as SIGSEGV; missing: 0
  check    bash or python script (the first line tells) for what a rule decides, such as
           a closed form; it must end with status 0, and finds the outcome in the files
           stdout.actual, stderr.actual and status.actual of the working folder
  not_instrumented
           why the case cannot run in an instrumented program; CMake leaves it out there
  long     why the case takes many seconds; CMake gives it the label long, and "./dev test"
           without options leaves it out

Everything else in the folder (input.varno, for one) is copied into the working folder,
which is temporary, as is the home folder. The scripts find the program's path in
VARNO_PROGRAM, can run what stands in tests/support (closed_form.py, which compares rows with a closed
form) and can import it. Two things vary from run to
run or from build to build and are masked on both sides, see mask_time_report and
mask_build_date; nothing else is.

Ends with status 0 when the case holds, 1 when it does not, 2 when it cannot be run.
"""

import difflib
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

DESCRIPTION_FILES = {
    "why", "args", "input_from", "stdin", "varnorc", "timeout", "setup", "stdout", "stderr",
    "status", "check", "not_instrumented", "long",
}
DEFAULT_TIMEOUT_SECONDS = 60
SOURCE_ROOT = Path(__file__).resolve().parents[1]
MAX_DIFF_LINES = 200


class BadCase(Exception):
    """The case itself is at fault, not the program."""


# ---------------------------------------------------------------------------------------
# Masks


def mask_time_report(text):
    """Makes the CPU times equal: #(INFO) utime=0s1234us \\tstime=0s12us"""
    return re.sub(
        rb"(#\(INFO\) utime=) *\d+s *\d+(us \tstime=) *\d+s *\d+(us)", rb"\1...s...\2...s...\3", text)


def mask_build_date(text):
    """Makes the date in the banner equal: VARNO/C  1.0  (Jan  1 2000)"""
    return re.sub(
        rb"(VARNO/C  \d+\.\d+  )\([A-Z][a-z]{2} [ \d]\d \d{4}\)", rb"\1(Mon dd yyyy)", text)


def mask(text):
    return mask_build_date(mask_time_report(text))


# ---------------------------------------------------------------------------------------
# Reading the case


def read_text(path, default):
    return path.read_text(encoding="utf-8").strip() if path.exists() else default


def read_arguments(case):
    path = case / "args"
    if not path.exists():
        return ["input.varno"]
    return shlex.split(path.read_text(encoding="utf-8"))


def read_timeout(case):
    text = read_text(case / "timeout", str(DEFAULT_TIMEOUT_SECONDS))
    try:
        return float(text)
    except ValueError:
        raise BadCase(f"timeout: not a number of seconds: {text!r}")


def read_status(case):
    text = read_text(case / "status", "0")
    is_exit_status = text.isdecimal() and int(text) <= 255
    if not is_exit_status and text not in signal.Signals.__members__:
        raise BadCase(f"status: neither an exit status nor the name of a signal: {text!r}")
    return text


def project_version():
    """The version that the top CMakeLists.txt gives the programs."""
    project = (SOURCE_ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(\w+\s+VERSION ([\d.]+)$", project, re.MULTILINE)[1]


def read_expected_output(case, name):
    """Returns None for an output that is not compared."""
    path = case / name
    if path.exists():
        return path.read_bytes().replace(b"@VERSION@", project_version().encode())
    return None if (case / "check").exists() else b""


# ---------------------------------------------------------------------------------------
# Running


def make_environment(home):
    environment = {
        "HOME": str(home),
        "LC_ALL": "C",
        "PATH": os.environ.get("PATH", os.defpath),
    }
    # A program that dies of a signal must do so in an instrumented build, too.
    for name, addition in (
        ("ASAN_OPTIONS", "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_abort=0"),
        ("LSAN_OPTIONS", ""),
        ("UBSAN_OPTIONS", ""),
    ):
        options = ":".join(filter(None, (os.environ.get(name), addition)))
        if options:
            environment[name] = options
    return environment


def run_program(command, folder, environment, stdin_path, timeout):
    """Leaves the outcome in the *.actual files; returns whether the program ended in time."""
    with open(stdin_path, "rb") as stdin, \
            open(folder / "stdout.actual", "wb") as stdout, \
            open(folder / "stderr.actual", "wb") as stderr:
        process = subprocess.Popen(
            command, cwd=folder, env=environment, stdin=stdin, stdout=stdout, stderr=stderr,
            start_new_session=True)
        try:
            code = process.wait(timeout)
            in_time = True
        except subprocess.TimeoutExpired:
            # The program leads its own process group, so what it started ends with it.
            os.killpg(process.pid, signal.SIGKILL)
            code = process.wait()
            in_time = False

    status = str(code) if code >= 0 else signal.Signals(-code).name
    (folder / "status.actual").write_text(status + "\n")
    return in_time


def run_script(script, folder, environment, timeout):
    """Runs setup or check; returns its exit status and everything it wrote."""
    with open(script, encoding="utf-8") as file:
        interpreter = sys.executable if "python" in file.readline() else "bash"
    process = subprocess.Popen(
        [interpreter, script], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
    try:
        output, _ = process.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        # With what the script has started, which may be what takes so long.
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return 1, f"{script.name}: not finished after {timeout:g} seconds\n".encode()
    return process.returncode, output


# ---------------------------------------------------------------------------------------
# Comparing


def visible_lines(text):
    """Lines with tabs, line ends and odd bytes spelled out: a diff must show what differs."""
    return [repr(line)[2:-1] for line in text.splitlines(keepends=True)]


def show_difference(name, expected, actual):
    diff = list(difflib.unified_diff(
        visible_lines(expected), visible_lines(actual), f"{name} expected", f"{name} actual",
        lineterm=""))
    print("\n".join(diff[:MAX_DIFF_LINES]))
    if len(diff) > MAX_DIFF_LINES:
        print(f"... and {len(diff) - MAX_DIFF_LINES} more lines of difference")


def compare_output(case, folder, name):
    expected = read_expected_output(case, name)
    if expected is None:
        return True
    expected = mask(expected)
    actual = mask((folder / f"{name}.actual").read_bytes())
    if actual != expected:
        show_difference(name, expected, actual)
    return actual == expected


def compare_status(expected, folder):
    actual = (folder / "status.actual").read_text().strip()
    if actual != expected:
        print(f"status: expected {expected}, got {actual}")
    return actual == expected


# ---------------------------------------------------------------------------------------


def copy_inputs(case, folder):
    for path in case.iterdir():
        if path.name in DESCRIPTION_FILES:
            continue
        if path.is_dir():
            shutil.copytree(path, folder / path.name)
        else:
            shutil.copy2(path, folder / path.name)
    for name in read_text(case / "input_from", "").splitlines():
        path = SOURCE_ROOT / name
        if not path.is_file():
            raise BadCase(f"input_from: no such file in the source tree: {name!r}")
        shutil.copy2(path, folder / path.name)


def run_case(program, case, scratch):
    """Returns whether the case holds."""
    if not read_text(case / "why", ""):
        raise BadCase("why: missing or empty; say where the expected values come from")
    arguments = read_arguments(case)
    timeout = read_timeout(case)
    expected_status = read_status(case)

    folder = scratch / "work"
    home = scratch / "home"
    folder.mkdir()
    home.mkdir()
    environment = make_environment(home)
    script_environment = {
        **environment,
        "VARNO_PROGRAM": str(program),
        "PATH": f"{SOURCE_ROOT / 'tests' / 'support'}{os.pathsep}{environment['PATH']}",
        "PYTHONPATH": str(SOURCE_ROOT / "tests" / "support"),
        "PYTHONDONTWRITEBYTECODE": "1",
    }

    copy_inputs(case, folder)
    if (case / "varnorc").exists():
        shutil.copy2(case / "varnorc", home / ".varnorc")
    if (case / "setup").exists():
        status, output = run_script(case / "setup", folder, script_environment, timeout)
        if status != 0:
            sys.stdout.write(output.decode(errors="backslashreplace"))
            raise BadCase(f"setup: ended with status {status}")

    stdin_path = case / "stdin" if (case / "stdin").exists() else os.devnull
    in_time = run_program([program, *arguments], folder, environment, stdin_path, timeout)

    # Every comparison runs: one failure explains another.
    holds = [
        compare_status(expected_status, folder),
        compare_output(case, folder, "stdout"),
        compare_output(case, folder, "stderr"),
    ]
    if not in_time:
        print(f"stopped: not finished after {timeout:g} seconds")
        holds.append(False)
    elif (case / "check").exists():
        status, output = run_script(case / "check", folder, script_environment, timeout)
        if status != 0:
            sys.stdout.write(output.decode(errors="backslashreplace"))
            print(f"check: ended with status {status}")
        holds.append(status == 0)
    return all(holds)


def main(arguments):
    if len(arguments) != 2:
        sys.exit("usage: run_case.py PROGRAM CASE_FOLDER")
    program = Path(arguments[0]).resolve()
    case = Path(arguments[1]).resolve()

    # A case may expect a crash; no run should leave a core file behind.
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    try:
        if not case.is_dir():
            raise BadCase("no such folder")
        if not os.access(program, os.X_OK):
            raise BadCase(f"no such program: {program}")
        with tempfile.TemporaryDirectory(prefix="varno-case-") as scratch:
            holds = run_case(program, case, Path(scratch))
    except BadCase as problem:
        print(f"{case.name}: {problem}")
        return 2
    if not holds:
        print(f"{case.name}: failed; expected: {read_text(case / 'why', '')}")
    return 0 if holds else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
