"""One run of the program from the command line to the closing reports."""

import os
import sys
import threading

import conversion  # enters the classes of the functions
import mpf
from command_line import read_command_line
from dumps import dump_trees
from ends import Ended, KilledBySignal, NotModelled
from gnuplot import write_head, write_tail
from grammar import parse
from loop import Loop
from record import Record
from settings_file import read_settings_file
from table import write_header, write_row

TIME_REPORT = b"#(INFO) utime=0s0us \tstime=0s0us\n"
STACK_BYTES = 2**29
RECURSION_LIMIT = 200_000


def _initialize(record):
    for equation in record.sorted_equations():
        if equation.uses_step_function:
            record.stderr.write(
                b"#(ERR) Equation \"" + equation.name
                + b"\" uses a step function, which has no value\n")
            raise Ended(1)
        equation.rhs = equation.rhs.convert()
        start = record.start_values.setdefault(equation.name, record.zero)
        mpf.assign(equation.value.p, start.p)
        mpf.assign(equation.result.p, start.p)


def _solve(record, program, arguments, stdin, folder, home):
    read_settings_file(record, home)
    text = read_command_line(record, program, arguments, folder)
    record.stderr.write(b"#(INFO) Parsing input\n")
    parse(record, stdin() if text is None else text)
    record.stderr.write(b"#(INFO) Initializing values\n")
    _initialize(record)
    if record.dump_tree:
        dump_trees(record)
    record.stderr.write(b"#(INFO) Starting solving\n\n")
    if record.gnuplot:
        write_head(record)
    write_header(record)
    Loop(record).run()
    write_row(record, not record.print_only_tmax)
    record.stderr.write(TIME_REPORT)
    if record.gnuplot:
        write_tail(record)


def run(program, arguments, stdin, folder, home, stdout, stderr, effort=None):
    """Runs the model; returns the exit status as a text, or the name of a signal.

    program, arguments: bytes; stdin: called for the bytes of standard input, if they are wanted;
    folder: where relative paths start; home: the folder of the settings file; stdout, stderr:
    streams of bytes; effort: the number of Taylor terms, or of passes, after which the run is too
    long. Raises NotModelled.
    """
    record = Record(os.path.basename(program), stdout, stderr)
    record.effort = effort
    try:
        _solve(record, program, arguments, stdin, folder, home)
    except Ended as end:
        return str(end.status)
    except KilledBySignal as end:
        return end.signal_name
    except RecursionError:
        raise NotModelled("nesting too deep for Python") from None
    return "0"


def with_deep_stack(function):
    """Calls function() where expressions may be nested deeply; returns or raises as it does."""
    outcome = {}

    def call():
        try:
            outcome["result"] = function()
        except BaseException as problem:  # handed on to the caller
            outcome["problem"] = problem

    sys.setrecursionlimit(RECURSION_LIMIT)
    threading.stack_size(STACK_BYTES)
    thread = threading.Thread(target=call)
    thread.start()
    thread.join()
    if "problem" in outcome:
        raise outcome["problem"]
    return outcome["result"]
