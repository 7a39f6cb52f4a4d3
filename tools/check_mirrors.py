#!/usr/bin/env python3
"""Checks that the unit tests mirror the sources, where they promise it.

Usage: check_mirrors.py [ROOT]

Below the folders of PROMISED in src/: to each source src/ROOM/NAME.cpp, and to each header without a source of that name, belongs a unit test
tests/ROOM/unit/NAME_test.cpp, or several NAME_TOPIC_test.cpp; the folder unit stands below the
program's, as in tests/varno/unit/expr/sum_test.cpp. EXCEPTIONS names the others, with the reason. A
unit test of nothing is reported, too.
"""

import re
import sys
from pathlib import Path

PROMISED = ("arith", "varno")
EXCEPTIONS = {
    "arith/limb_accumulator.h": "inside of convolution, whose tests compare it with GMP",
    "varno/config/setters.h": "one-line setters; those of options, settings_file and usage_text run each",
    "varno/core/expr_type.h": "a list of constants",
    "varno/parser/semantic_value.h": "a struct without functions",
    "varno/solver/main.cpp": "four calls; every case runs it",
    "varno/sys/exit_status.h": "a list of constants",
}
# Tests of a subject that stands in no file of its own.
FURTHER_TESTS = {
    "varno/parser/grammar": "grammar.yy",
    "varno/expr/print": "Print of all kinds of nodes",
}


def sources(root):
    """Names such as varno/expr/sum.cpp."""
    for path in sorted(path for folder in PROMISED for path in (root / "src" / folder).rglob("*")):
        name = str(path.relative_to(root / "src"))
        if path.suffix == ".cpp" or path.suffix == ".h" and not path.with_suffix(".cpp").exists():
            yield name


def tests(root):
    """Names such as varno/expr/sum of the units that have a test."""
    for path in sorted(path for folder in PROMISED
                       for path in (root / "tests" / folder / "unit").rglob("*_test.cpp")):
        name = str(path.relative_to(root / "tests"))
        yield re.sub(r"(^|/)unit/", r"\1", name).removesuffix("_test.cpp")


def problems_of(root):
    units = {name.rpartition(".")[0]: name for name in sources(root)}
    tested = set()
    for test in tests(root):
        # functions_failure_test is one of those of functions, period_watch_test of period.
        unit = test
        while unit not in units and "_" in unit.rpartition("/")[2]:
            unit = unit.rpartition("_")[0]
        tested.add(unit)
        if unit not in units and test not in FURTHER_TESTS:
            yield f"{test}_test.cpp: there is no such source"
    for unit, name in units.items():
        if unit not in tested and name not in EXCEPTIONS:
            yield f"src/{name}: no unit test, and no reason in tools/check_mirrors.py"
        if unit in tested and name in EXCEPTIONS:
            yield f"src/{name}: has a unit test, yet is an exception in tools/check_mirrors.py"
    for name in sorted(EXCEPTIONS.keys() - set(units.values())):
        yield f"src/{name}: an exception in tools/check_mirrors.py that does not exist"


def main(arguments):
    root = Path(arguments[0] if arguments else Path(__file__).parents[1]).resolve()
    problems = list(problems_of(root))
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
