"""The bash script around the table that writes gnuplot's command and data files."""

from table import shown_in_table


def write_head(record):
    b, terminal = record.gnuplot_file, record.gnuplot_terminal
    text = (
        b"#!/bin/bash\n# RUN THIS SCRIPT TO GET THE FILES REQUIRED FOR GNUPLOT!!!\n"
        b"cat<<END_OF_CMDS > %s.p\n# --8<---file: %s.p ----------------------------------\n"
        b"# Note: for persistent window in x11 start gnuplot:  gnuplot -persist %s.p\n#\n#\n"
        b"set title \"Output from VARNO/C\"\n" % (b, b, b))
    text += _labels(record)
    text += b"set term %s\n" % terminal
    if terminal != b"x11":
        text += b"set out \"%s.%s\"\n\n" % (b, terminal)
    text += _plot_command(record)
    text += (
        b"\n\nEND_OF_CMDS\ncat <<END_OF_DATA > %s.dat\n\n"
        b"# --8<---file: %s.dat ----------------\n" % (b, b))
    record.stdout.write(text)


def _labels(record):
    if record.matrix_columns > 0:
        return (
            b"set xlabel \"x\"\nset ylabel \"y\"\nset surface\nset hidden3d\nset contour\n"
            b"set cntrparam cubicspline\nset cntrparam levels 16\n\n")
    return (
        b"set xlabel \"Time\"\nset ylabel \"" + (b"ORD " if record.print_order else b"")
        + b"".join(b" " + equation.name for equation in shown_in_table(record)) + b"\"\n\n")


def _plot_command(record):
    data = b"'" + record.gnuplot_file + b".dat'"
    if record.matrix_columns > 0:
        return b"" if record.all_matrices else b"splot " + data + b"  matrix with lines\n"
    items = []
    time = 1
    if record.print_order:
        items.append(data + b" using 2:1 title 'ORD' with histeps")
        time = 2
    column = time + 1
    for equation in record.sorted_equations():
        hidden = not record.print_temporary and equation.name.startswith(b"%")
        if hidden or not equation.printed:
            continue
        title = equation.name.replace(b"'", b"''")
        items.append(b"     %s using %d:%d title '%s' with lines" % (data, time, column, title))
        column += 1
    return b"plot " + b", \\\n".join(items)


def write_tail(record):
    record.stdout.write(b"\nEND_OF_DATA\n\ngnuplot %s.p \n\n" % record.gnuplot_file)
