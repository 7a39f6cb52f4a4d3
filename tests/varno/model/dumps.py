"""Dumps on standard error: the trees, the Taylor terms, the derivatives."""

import mpf
from mpf import Mpf, mul, mul_ui
from number_format import number

RULE = b"###############################"


def dump_trees(record):
    record.stderr.write(b"#(TREEDUMP) Dumping tree\n")
    for equation in record.sorted_equations():
        record.stderr.write(equation.dump_tree())
    record.stderr.write(b"#(TREEDUMP) Tree dumped\n")


def dump_terms(record, equations, start_time):
    record.stderr.write(b"#(DY) Dumping DYs (START) " + RULE + b"\n")
    record.stderr.write(b"#(DY) Dumping DYs (TIME)  " + number(record, start_time) + b"\n")
    for equation in equations:
        for k in range(equation.cached_terms()):
            record.stderr.write(b"#(DY) DY_%s[%d](%d) = %s\n" % (
                equation.name, k, equation.term_stamp, number(record, equation.get_term(k))))
    record.stderr.write(b"#(DY) Dumping DYs (END)   " + RULE + b"\n")


def dump_derivatives(record, equations, start_time):
    record.stderr.write(b"#(DER) Dumping Derivatives (START) " + RULE + b"\n")
    record.stderr.write(b"#(DER) Dumping Derivatives (TIME)  " + number(record, start_time) + b"\n")
    for equation in equations:
        factor, derivative = mpf.from_int(1), Mpf()
        for k in range(1, equation.cached_terms()):
            # k! / h^k
            mul_ui(factor.p, factor.p, k)
            mpf.div(factor, factor, record.step)
            factor.check_range(mpf.LARGEST_FACTOR_EXPONENT)
            mul(derivative.p, equation.get_term(k).p, factor.p)
            record.stderr.write(b"#(DER) d%s^[%d](%d) = %s\n" % (
                equation.name, k, equation.term_stamp, number(record, derivative)))
    record.stderr.write(b"#(DER) Dumping Derivatives (END) " + RULE + b"\n")
