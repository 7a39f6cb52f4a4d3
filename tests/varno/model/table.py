"""The result table, or the matrices that stand in its place."""

import mpf
from number_format import number


def shown_in_table(record):
    return [
        equation for equation in record.sorted_equations()
        if equation.printed and (record.print_temporary or b"%" not in equation.name)]


def shown_in_matrix(record):
    return [
        equation for equation in record.sorted_equations()
        if equation.printed and b"%" not in equation.name]


def _in_lines(items, columns, line_end):
    """The items, with a line end after every so many of them."""
    return b"".join(
        b" " + item + (line_end if i % columns == 0 else b"") for i, item in enumerate(items, 1))


def write_header(record):
    if record.matrix_columns > 0:
        names = [equation.name for equation in shown_in_matrix(record)]
        text = b"#\xa0" + _in_lines(names, record.matrix_columns, b"\n#")
    else:
        text = b"# ORDER" if record.print_order else b"# "
        text += b" TIME"
        text += b"".join(b" " + equation.name for equation in shown_in_table(record))
        if record.use_all_terms:
            text += b" log(|DY(max)|)     log(|DY(max)|)    h"
    record.stdout.write(text + b"\n")


def write_row(record, hold_back):
    if record.matrix_columns > 0:
        _write_matrix(record, hold_back)
    elif not hold_back:
        _write_table_row(record)


def _value(record, equation):
    return number(record, equation.get_value())


def _write_table_row(record):
    text = b"%3d " % record.order if record.print_order else b""
    text += number(record, record.time)
    text += b"".join(b" " + _value(record, equation) for equation in shown_in_table(record))
    if record.use_all_terms:
        text += b" %d %d %s" % (
            mpf.binary_exponent(record.smallest), mpf.binary_exponent(record.largest),
            number(record, record.step))
    record.stdout.write(text + b"\n")


def _write_matrix(record, hold_back):
    text = b""
    if record.all_matrices:
        text = b"e\n\nset output 'o%06d.%s'\nsplot '-'  matrix with lines\n" % (
            1, record.gnuplot_terminal)
    elif not hold_back:
        return
    values = [_value(record, equation) for equation in shown_in_matrix(record)]
    record.stdout.write(text + _in_lines(values, record.matrix_columns, b"\n") + b"\n")
