"""The command line: options as GNU getopt reads them, then the input file."""

import errno
import os

import mpf
from ends import Ended
from mpf import cmp, neg
from settings_file import KEYWORDS
from texts import to_flag, to_int
from usage import VERSION, usage

OPTIONS_WITHOUT_ARGUMENT = b"hv"
OPTIONS_WITH_ARGUMENT = b"3AadDfFgGiNoOpPrRsStTUwWxXzL"


def _setting(name, convert):
    return lambda record, value: setattr(record, name, convert(value))


def _like(keyword):
    return KEYWORDS[keyword][1]


def _period(record, value):
    name, _, rest = value.partition(b":")
    count, _, derivative = rest.partition(b":")
    record.period_equation = name
    record.period_count = to_int(count) if name else 0
    mpf.set_text(record.period_derivative, derivative)


_EFFECTS = {
    b"3": _setting("matrix_columns", to_int),
    b"A": _like(b"ALL3DVALUES"),
    b"a": _like(b"ACCURACY"),
    b"d": _like(b"DUMPTREE"),
    b"D": _like(b"DUMPDY"),
    b"f": _like(b"FIXEDSTEP"),
    b"F": _like(b"PRINTEVERYRESULT"),
    b"g": _like(b"GNUPLOT_OUTPUT"),
    b"G": _like(b"GNUPLOT_FILENAME"),
    b"i": _like(b"SIMPLIFYSMALLNUMBERS"),
    b"L": _like(b"PRINTONLYTMAX"),
    b"N": _setting("no_print_list", bytes),
    b"o": _like(b"MAXORDER"),
    b"O": _like(b"PRINTORD"),
    b"p": _like(b"PRINTNUMCHARS"),
    b"P": _setting("print_list", bytes),
    b"r": _period,
    b"R": _setting("period_buffer", to_int),
    b"s": _like(b"INITIALINTSTEP"),
    b"S": _like(b"STOPSTEADYSTATE"),
    b"t": _like(b"TMAX"),
    b"T": _like(b"PRINTTEMPQ"),
    b"U": _like(b"USEALLTERMS"),
    b"w": _like(b"PRINTNUMWIDTH"),
    b"W": _like(b"GMPWORDSIZE"),
    b"x": _like(b"STIFFSYSTEMDETECTEXPDIFF"),
    b"X": _like(b"STIFFDETECTEVERYSTEP"),
    b"z": _like(b"ZEROTAYLORTERMS"),
}


def _scan(arguments):
    """Yields (option, value) pairs; at last (None, list of the other arguments). An option of
    "?" carries getopt's complaint."""
    others = []
    arguments = list(arguments)
    while arguments:
        argument = arguments.pop(0)
        if argument == b"--":
            others += arguments
            break
        if argument == b"-" or not argument.startswith(b"-"):
            others.append(argument)
            continue
        while len(argument) > 1:
            option, argument = argument[1:2], b"-" + argument[2:]
            if option in OPTIONS_WITH_ARGUMENT:
                if len(argument) > 1:
                    value = argument[1:]
                elif arguments:
                    value = arguments.pop(0)
                else:
                    yield b"?", b"option requires an argument -- '" + option + b"'"
                    break
                yield option, value
                break
            if option in OPTIONS_WITHOUT_ARGUMENT:
                yield option, b""
            else:
                yield b"?", b"invalid option -- '" + option + b"'"
    yield None, others


def _open_input(record, folder, name):
    try:
        if not name:
            raise FileNotFoundError(errno.ENOENT, "")
        return (folder / os.fsdecode(name)).read_bytes()
    except OSError as error:
        reason = os.strerror(error.errno).encode()
        record.stderr.write(b"#(WARN) Error by opening input file: " + reason + b"\n")
        raise Ended(1)


def read_command_line(record, program, arguments, folder):
    """Returns the bytes of the input file, or None where standard input is to be read."""
    others = []
    for option, value in _scan(arguments):
        if option is None:
            others = value
        elif option == b"v":
            record.stdout.write(VERSION)
            raise Ended(0)
        elif option in (b"?", b"h"):
            if option == b"?":
                record.stderr.write(program + b": " + value + b"\n")
            record.stderr.write(usage(record))
            raise Ended(1)
        else:
            _EFFECTS[option](record, value)

    text = None
    if others and others[0] != b"-":
        text = _open_input(record, folder, others[0])
    if len(others) > 1:
        record.stderr.write(b"#(WARN) Some unused parameters in the way...\n")

    # A negative interval -n stands for Tmax/n.
    if cmp(record.print_every.p, record.zero.p) < 0:
        neg(record.print_every.p, record.print_every.p)
        mpf.div(record.print_every, record.tmax, record.print_every)
    return text
