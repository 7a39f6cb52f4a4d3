#!/usr/bin/env python3
"""Runs two builds of varno side by side and compares what they write, to the byte.

Usage: compare_programs.py OLD NEW [COUNT [FIRST_SEED]]

Run are all cases of tests/varno/cases and COUNT systems of equations made at random (2000 if not
given), each with random options. Compared are standard output, standard error and status; the time
report and the build date, which vary, are masked. A run that is stopped after CPU_SECONDS is compared
by its status and by the part of its output that both wrote.

Ends with status 0 when there is no difference.
"""

import os
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests"), str(ROOT / "tests" / "varno" / "support")]
sys.dont_write_bytecode = True

import run_case
from equation_generator import Generator

CASES = ROOT / "tests" / "varno" / "cases"
CPU_SECONDS = 1
CASE_CPU_SECONDS = 60
MOST_OUTPUT_BYTES = 20_000_000

# Beside those of the generator.
MORE_OPTIONS = (
    ("-w", "30"), ("-p", "3"), ("-p", "25"), ("-o", "3"), ("-z", "2"), ("-O", "0"), ("-P", "y0:"),
    ("-N", "y0:"), ("-F", "0.3"), ("-A", "1"), ("-g", "png"), ("-t", "0.35"), ("-t", "-1"),
    ("-s", "1"), ("-W", "64"), ("-W", "1000"), ("-a", "1e-3"), ("-x", "2"), ("-r", "y0:2:0"))


def limit(seconds):
    def set_limits():
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        # A run without end writes without end.
        resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_OUTPUT_BYTES, MOST_OUTPUT_BYTES))
    return set_limits


def run(program, arguments, folder, home, stdin, seconds):
    with open(home / "out", "w+b") as out, open(home / "err", "w+b") as err:
        with open(stdin, "rb") as source:
            status = subprocess.run(
                # The name of the program is part of messages.
                ["varno", *arguments], executable=program, cwd=folder, env=run_case.make_environment(home), stdin=source,
                stdout=out, stderr=err, preexec_fn=limit(seconds)).returncode
        out.seek(0)
        err.seek(0)
        return status, run_case.mask(out.read()), run_case.mask(err.read())


def same(old, new):
    stopped = (-signal.SIGXCPU, -signal.SIGXFSZ, -signal.SIGKILL)
    if old[0] in stopped or new[0] in stopped:
        return all(a.startswith(b) or b.startswith(a) for a, b in zip(cut(old), cut(new)))
    return old == new


def cut(outcome):
    """What a stopped run wrote, without the last line, which may be cut off."""
    return [text[:text.rfind(b"\n") + 1] for text in outcome[1:]]


def prepare_case(case, program, scratch):
    """The working folder and the home of a case."""
    folder = scratch / "work"
    home = scratch / "home"
    folder.mkdir()
    home.mkdir()
    run_case.copy_inputs(case, folder)
    if (case / "varnorc").exists():
        shutil.copy2(case / "varnorc", home / ".varnorc")
    if (case / "setup").exists():
        environment = {**run_case.make_environment(home), "VARNO_PROGRAM": str(program),
                       "PYTHONPATH": str(ROOT / "tests" / "support")}
        run_case.run_script(case / "setup", folder, environment, CASE_CPU_SECONDS)
    return folder, home


def run_one_case(program, case):
    with tempfile.TemporaryDirectory(prefix="varno-compare-") as scratch:
        folder, home = prepare_case(case, program, Path(scratch))
        stdin = case / "stdin" if (case / "stdin").exists() else os.devnull
        return run(program, run_case.read_arguments(case), folder, home, stdin, CASE_CPU_SECONDS)


def options_of(seed, generator):
    chosen = random.Random(f"options {seed}").sample(MORE_OPTIONS, 3)
    return generator.options() + [text for option in chosen for text in option]


def run_random(program, seed):
    generator = Generator(seed)
    with tempfile.TemporaryDirectory(prefix="varno-compare-") as scratch:
        folder, home = Path(scratch) / "work", Path(scratch) / "home"
        folder.mkdir()
        home.mkdir()
        (folder / "input.varno").write_text(generator.equations())
        arguments = [*options_of(seed, generator), "input.varno"]
        return run(program, arguments, folder, home, os.devnull, CPU_SECONDS)


def report(name, old, new):
    print(f"difference: {name}: status {old[0]} and {new[0]}")
    for stream, a, b in zip(("standard output", "standard error"), old[1:], new[1:]):
        lines = zip(a.splitlines() + [b"(end)"], b.splitlines() + [b"(end)"])
        for number, (one, other) in enumerate(lines, 1):
            if one != other:
                print(f"  {stream}, line {number}:\n    {one!r}\n    {other!r}")
                break


def compare(old, new, runs):
    """`runs` are pairs of a name and a function of the program. Returns the number of differences."""
    def both(entry):
        name, function = entry
        return name, function(old), function(new)

    differences = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for name, before, after in pool.map(both, runs):
            if not same(before, after):
                differences += 1
                report(name, before, after)
    return differences


def main(arguments):
    if not 2 <= len(arguments) <= 4:
        sys.exit("usage: compare_programs.py OLD NEW [COUNT [FIRST_SEED]]")
    old, new = (Path(path).resolve() for path in arguments[:2])
    count = int(arguments[2]) if len(arguments) > 2 else 2000
    first = int(arguments[3]) if len(arguments) > 3 else 0

    cases = sorted(path.parent for path in CASES.glob("*/*/why"))
    differences = compare(old, new, (
        (str(case.relative_to(CASES)), lambda program, case=case: run_one_case(program, case))
        for case in cases))
    differences += compare(old, new, (
        (f"seed {seed}", lambda program, seed=seed: run_random(program, seed))
        for seed in range(first, first + count)))
    print(f"{len(cases)} cases and {count} random systems: {differences} differences")
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
