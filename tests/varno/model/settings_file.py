"""The file .varnorc in the home folder: lines of keyword and value."""

import re

import mpf
from texts import to_finite_double, to_flag, to_int

BLANKS = b" \t"
WHITE_SPACE = b" \t\n\v\f\r"


def _tmax(record, value):
    mpf.set_text(record.tmax, value)


def _print_every(record, value):
    mpf.set_text(record.print_every, value)


def _accuracy(record, value):
    mpf.set_double(record.accuracy, to_finite_double(record, value))


def _step(record, value):
    record.set_step_from_double(to_finite_double(record, value))


def _gnuplot(record, value):
    record.gnuplot = True
    record.gnuplot_terminal = value


def _word_size(_, value):
    mpf.set_default_precision(to_int(value))


def _setting(name, convert):
    return lambda record, value: setattr(record, name, convert(value))


KEYWORDS = {
    b"TMAX": ("MaxTime", _tmax),
    b"MAXORDER": ("MaxOrder", lambda r, v: r.set_term_count(to_int(v) + r.zero_terms)),
    b"PRINTORD": ("Print order", _setting("print_order", to_flag)),
    b"ALL3DVALUES": ("Print all values (3D)", _setting("all_matrices", to_flag)),
    b"ACCURACY": ("Accuracy", _accuracy),
    b"DUMPTREE": ("Dump tree", _setting("dump_tree", to_flag)),
    b"DUMPDY": ("Dump DY values", _setting("dump_terms", to_int)),
    b"FIXEDSTEP": ("Fixed int.step", _setting("fixed_step", to_flag)),
    b"GNUPLOT_FILENAME": ("GnuPlot File", _setting("gnuplot_file", bytes)),
    b"GNUPLOT_OUTPUT": ("GnuPlot Output", _gnuplot),
    b"SIMPLIFYSMALLNUMBERS": ("Ignore small numbers", _setting("simplify_small", to_flag)),
    b"PRINTONLYTMAX": ("Print only Tmax", _setting("print_only_tmax", to_flag)),
    b"PRINTNUMCHARS": ("Characters of number to print", _setting("digits", to_int)),
    b"INITIALINTSTEP": ("Initial step size", _step),
    b"STOPSTEADYSTATE": ("Step when steady solution is found", _setting("steady_stop", to_int)),
    b"PRINTNUMWIDTH": ("Number digits to print", _setting("width", to_int)),
    b"GMPWORDSIZE": ("GMP word size", _word_size),
    b"ZEROTAYLORTERMS": (
        "Number of Taylor terms equal to zero", lambda r, v: r.set_zero_terms(to_int(v))),
    b"PRINTTEMPQ": ("Print temporary equations", _setting("print_temporary", to_flag)),
    b"PRINTEVERYRESULT": ("Print every result", _print_every),
    b"STIFFSYSTEMDETECTEXPDIFF": (
        "Stiff system detect exponent difference", _setting("stiff_difference", to_int)),
    b"USEALLTERMS": ("Use all terms", _setting("use_all_terms", to_flag)),
    b"STIFFDETECTEVERYSTEP": (
        "Stiff system detected every step ", _setting("stiff_every_step", to_flag)),
}


def _upper(text):
    """toupper in the C locale."""
    return bytes(c - 32 if 97 <= c <= 122 else c for c in text)


def apply_setting(record, keyword, value):
    label, apply = KEYWORDS[keyword]
    apply(record, value)
    record.stderr.write(b"#(RES_SET) " + label.encode() + b" = " + value + b"\n")


def _parse_line(record, line, number):
    """Returns keyword and value, or None for a line that sets nothing."""
    line = line.lstrip(WHITE_SPACE)
    end = re.search(rb"[:=]|$(?!\n)", line).start()
    keyword = _upper(line[:end].translate(None, WHITE_SPACE))
    rest = line[end + 1:].lstrip(WHITE_SPACE)
    value = re.match(rb"[A-Za-z0-9+-]*", rest).group()
    known = keyword in KEYWORDS
    if not known:
        record.stderr.write(
            b"(WARN) Invalid keyword in rc file, line %d: '%s'\n" % (number, keyword))
    if not value:
        record.stderr.write(b"(WARN) No value set for option '" + keyword + b"' in rc file.\n")
    return (keyword, value) if known and value else None


def read_settings_file(record, home):
    """home is a Path, the folder of the file."""
    try:
        text = (home / ".varnorc").read_bytes()
    except OSError:
        return
    lines = text.split(b"\n")
    if not lines[-1]:
        lines.pop()
    for number, line in enumerate(lines, 1):
        line = re.split(rb"[#%;]", line, maxsplit=1)[0].rstrip(BLANKS).lstrip(BLANKS)
        if line:
            setting = _parse_line(record, line, number)
            if setting:
                apply_setting(record, *setting)
