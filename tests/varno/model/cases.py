"""Runs program and model on one input, a case or a random system, and tells what differs."""

import difflib
import io
import shutil
import sys
import tempfile
from contextlib import contextmanager
from pathlib import Path

from driver import run


def _import_runner():
    """The runner of the cases, run_case.py, stands in a folder above this one."""
    for folder in Path(__file__).resolve().parents:
        if (folder / "run_case.py").is_file():
            sys.path.insert(0, str(folder))
            import run_case
            return run_case
    sys.exit("no run_case.py in the folders above")


runner = _import_runner()
MARKS_OF_A_CASE = ("why", "args", "input.varno")
MOST_LINES_SHOWN = 20


def find_cases(root):
    """The folder of every case below root, by its name."""
    folders = {path.parent for mark in MARKS_OF_A_CASE for path in root.rglob(mark)}
    cases = {}
    for folder in sorted(folders):
        if not folders.isdisjoint(folder.parents):
            continue  # a folder inside of a case
        if folder.name in cases:
            sys.exit(f"two cases have the same name: {folder} and {cases[folder.name]}")
        cases[folder.name] = folder
    return cases


def _difference(name, of_program, of_model):
    lines = difflib.unified_diff(
        runner.visible_lines(of_program), runner.visible_lines(of_model),
        f"{name} of the program", f"{name} of the model", lineterm="", n=1)
    return "\n".join(list(lines)[:MOST_LINES_SHOWN])


def _compare_runs(program, arguments, folder, home, stdin_path, timeout, effort):
    encoded = [argument.encode(errors="surrogateescape") for argument in arguments]
    stdout, stderr = io.BytesIO(), io.BytesIO()
    with open(stdin_path, "rb") as stdin:
        status = run(
            str(program).encode(), encoded, stdin.read, folder, home, stdout, stderr, effort)
    of_model = [stdout.getvalue(), stderr.getvalue(), status.encode() + b"\n"]

    in_time = runner.run_program(
        [program, *arguments], folder, runner.make_environment(home), stdin_path, timeout)
    names = ("stdout", "stderr", "status")
    of_program = [(folder / f"{name}.actual").read_bytes() for name in names]
    if not in_time:
        of_program[-1] = b"stopped: it does not end\n"

    pairs = zip(names, map(runner.mask, of_program), map(runner.mask, of_model))
    return [_difference(name, ours, theirs) for name, ours, theirs in pairs if ours != theirs]


@contextmanager
def _scratch_folders():
    with tempfile.TemporaryDirectory(prefix="varno-model-") as scratch:
        folders = Path(scratch) / "work", Path(scratch) / "home"
        for folder in folders:
            folder.mkdir()
        yield folders


def compare_case(program, case, effort=None):
    """Returns the differences as texts, none where program and model agree. Raises NotModelled.

    effort: Taylor terms and passes after which a run is too long for the model. A case's own
    expectations and its check do not matter here, run_case.py looks at these.
    """
    with _scratch_folders() as (folder, home):
        runner.copy_inputs(case, folder)
        if (case / "varnorc").exists():
            shutil.copy2(case / "varnorc", home / ".varnorc")
        timeout = runner.read_timeout(case)
        if (case / "setup").exists():
            environment = {**runner.make_environment(home), "VARNO_PROGRAM": str(program)}
            status, output = runner.run_script(case / "setup", folder, environment, timeout)
            if status != 0:
                return [f"setup: ended with status {status}: {output}"]
        stdin_path = case / "stdin" if (case / "stdin").exists() else "/dev/null"
        return _compare_runs(
            program, runner.read_arguments(case), folder, home, stdin_path, timeout, effort)


def compare_system(program, system, effort=None):
    """The same for a RandomSystem."""
    with _scratch_folders() as (folder, home):
        (folder / "input.varno").write_bytes(system.text)
        if system.settings is not None:
            (home / ".varnorc").write_text(system.settings)
        return _compare_runs(
            program, system.arguments, folder, home, "/dev/null",
            runner.DEFAULT_TIMEOUT_SECONDS, effort)
