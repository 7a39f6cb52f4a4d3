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
    "solve/command/console.cpp": "streams_test.py and the cases see what it writes",
    "solve/command/exit_status.h": "a list of constants",
    "solve/command/file_descriptor.h": "a descriptor that closes itself; output_file_test opens and loses them",
    "solve/command/long_options.cpp": "inside of command_line, whose tests abbreviate and repeat options",
    "solve/command/main.cpp": "one call; every case runs it",
    "solve/command/program.cpp": "the cases run it with every kind of command line",
    "solve/command/row_output.cpp": "joins output_file and the writers, which have tests; the cases run it",
    "solve/command/standard_error.cpp": "streams_test.py closes and fills the stream",
    "solve/command/standard_streams.cpp": "streams_test.py starts the program without them",
    "solve/command/usage_error.h": "a struct without functions",
    "solve/evaluation/domain_error.h": "a struct without functions",
    "solve/evaluation/size.cpp": "inside of evaluator, whose constants are refined by sizes",
    "solve/graph/operation.cpp": "a list of names, which the printed tapes and models show",
    "solve/integration/line_sizes.cpp": "inside of step_control",
    "solve/integration/lockstep.cpp": "every verified solution of library/solution_test walks two runs by it",
    "solve/integration/path.cpp": "library/solution_test begins before, inside and behind intervals",
    "solve/integration/run_settings.cpp": "one formula; closed_forms_test integrates by it at 15 to 300 digits",
    "solve/integration/step_length.cpp": "inside of run",
    "solve/language/syntax_actions.cpp": "inside of parse",
    "solve/language/syntax_error.cpp": "inside of parse, whose tests show every hint",
    "solve/language/token.h": "a struct without functions",
    "solve/library/ends.cpp": "inside of solution, whose tests read the messages",
    "solve/library/option_constants.cpp": "inside of solution",
    "solve/library/problem.cpp": "inside of solution; the parts have tests in model",
    "solve/library/problem_data.h": "a struct without functions",
    "solve/library/solution_data.cpp": "inside of solution",
    "solve/library/solve.h": "the functions are in problem, solution and value",
    "solve/library/value.cpp": "inside of solution",
    "solve/model/binding.cpp": "library/solution_test solves with parameters",
    "solve/model/expansion.cpp": "inside of build_model",
    "solve/model/model.h": "structs without functions",
    "solve/model/model_builder.cpp": "inside of build_model",
    "solve/model/resolution.cpp": "inside of build_model",
    "solve/number/exponent_range.h": "equal_constants_test computes beyond the usual range",
    "solve/number/rational.h": "two names for classes of GMP",
    "solve/rows/csv_writer.cpp": "writers_test has all three",
    "solve/rows/json_writer.cpp": "writers_test has all three",
    "solve/rows/row_writer.h": "an interface",
    "solve/rows/table_writer.cpp": "writers_test has all three",
    "solve/rows/text_sink.h": "an interface",
    "solve/series/series.h": "an interface",
    "solve/source/place.h": "a struct without functions",
    "solve/tape/degree.cpp": "inside of compile",
    "solve/tape/functions.cpp": "inside of compile",
    "solve/tape/line_table.cpp": "inside of compile",
    "solve/tape/linear_form.cpp": "inside of compile",
    "solve/tape/print.cpp": "compile_test reads tapes by it",
    "solve/tape/tape.h": "structs without functions",
    "solve/verification/attempt.cpp": "inside of verified_rows",
    "solve/verification/column_values.cpp": "inside of verified_rows",
    "solve/verification/row_schedule.cpp": "inside of verified_rows",
    "solve/verification/verified_rows.cpp": "library/solution_test escalates, ends and verifies zeros by it",
}
# Tests of a subject that stands in no file of its own.
FURTHER_TESTS = {
    "varno/parser/grammar": "grammar.yy",
    "varno/expr/print": "Print of all kinds of nodes",
    "solve/integration/closed_forms": "whole solutions",
    "solve/integration/invariants": "whole solutions",
    "solve/rows/writers": "table, csv and json",
    "solve/series/identities": "all functions, by identities",
    "solve/series/taylor_terms": "all functions, against mpmath",
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
