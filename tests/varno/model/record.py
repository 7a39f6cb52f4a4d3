"""The record of a run: settings with their defaults, constants, state of the solver, tables."""

import mpf
from mpf import Mpf, absolute, add, assign, cmp, div_ui, mul, mul_ui, sub
from texts import int32

INITIAL_BITS = 53  # GMP's default precision before anybody sets another one
WORKING_BITS = 80

# Machin's formula with integers, rounded down in the 559th decimal as the literal is.
PI_DECIMALS = 559


def _pi_text():
    guard = 20
    unit = 10**(PI_DECIMALS + guard)

    def arc_tangent_of_inverse(n):
        term, total, k, sign = unit//n, 0, 1, 1
        while term:
            total += sign*(term//k)
            term //= n*n
            k += 2
            sign = -sign
        return total

    digits = str(4*(4*arc_tangent_of_inverse(5) - arc_tangent_of_inverse(239))//10**guard)
    return f"{digits[0]}.{digits[1:]}".encode()


class Record:
    def __init__(self, program_name, stdout, stderr):
        mpf.set_default_precision(INITIAL_BITS)
        self.program_name = program_name
        self.stdout = stdout
        self.stderr = stderr
        self._set_default_settings()
        self._set_constants()
        self._set_solver_state()

        # At the start of the program, before anything is read.
        self.set_term_count(self.zero_terms + 30)
        mpf.set_text(self.accuracy, b"1e-10")
        mpf.set_default_precision(WORKING_BITS)

    def _set_default_settings(self):
        self.term_count = 15
        self.zero_terms = 4
        self.width = 15
        self.digits = 11
        self.simplify_small = True
        self.print_order = True
        self.print_temporary = False
        self.print_list = b""
        self.no_print_list = b""
        self.gnuplot = False
        self.gnuplot_terminal = b"x11"
        self.gnuplot_file = b"output"
        self.matrix_columns = 0
        self.all_matrices = False
        self.fixed_step = False
        self.print_only_tmax = False
        self.print_every = mpf.from_text(b"0")
        self.dump_tree = False
        self.dump_terms = 0
        self.steady_stop = 0
        self.period_equation = b""
        self.period_count = 0
        self.period_buffer = 50
        self.stiff_difference = 20
        self.stiff_every_step = False
        self.use_all_terms = False
        self.step = mpf.from_double(0.1)
        self.accuracy = mpf.from_text(b"1e-10")

    def _set_constants(self):
        self.zero = mpf.from_double(0.0)
        self.one = mpf.from_double(1.0)
        self.pi = mpf.from_text(_pi_text())
        self.two_pi = Mpf()
        mul_ui(self.two_pi.p, self.pi.p, 2)
        self.half_pi = Mpf()
        div_ui(self.half_pi.p, self.pi.p, 2)
        self.period_derivative = mpf.copy(self.zero)
        self.ln2 = self._sum_ln2()
        self.time = mpf.from_double(0.0)
        self.tmax = mpf.from_double(1.0)

    def _sum_ln2(self):
        """2 atanh(1/3), as accurate as the default accuracy only."""
        a, q, previous, change, total = Mpf(), Mpf(), Mpf(), Mpf(), Mpf()
        div_ui(a.p, self.one.p, 3)
        mul(q.p, a.p, a.p)
        mul_ui(a.p, a.p, 2)
        assign(total.p, a.p)
        n = 1
        while True:
            assign(previous.p, total.p)
            n += 2
            mul(a.p, a.p, q.p)
            div_ui(change.p, a.p, n)
            add(total.p, total.p, change.p)
            sub(change.p, previous.p, total.p)
            absolute(change.p, change.p)
            if cmp(change.p, self.accuracy.p) < 0:
                return total

    def _set_solver_state(self):
        self.order = 0
        self.stamp = 0
        self.previous_stamp = -1
        self.recompute = False
        self.equations = {}  # in the order of entry; see sorted_equations
        self.start_values = {}
        self.step_factors = {}
        self.step_factor_bits = INITIAL_BITS
        self.next_temporary = 0
        self.passes = 0
        self.terms_computed = 0
        self.effort = None  # no limit
        self.conversion_met_itself = False
        self.largest = None  # the two measures of the stiffness test
        self.smallest = None

    def set_term_count(self, count):
        self.term_count = int32(count)
        self.step_factors = {}
        self.step_factor_bits = mpf.default_precision()

    def set_zero_terms(self, count):
        self.zero_terms = count
        self.set_term_count(self.zero_terms + self.term_count)

    def set_step_from_double(self, value):
        mpf.set_double(self.step, value)
        self.step_factors = {}

    def step_changed(self):
        """Must follow every change of the step that has been made in place."""
        self.step_factors = {}

    def step_factor(self, k):
        """h / k for k >= 1, in the precision that held when the number of terms was set."""
        factor = self.step_factors.get(k)
        if factor is None:
            factor = self.step_factors[k] = Mpf(self.step_factor_bits)
            div_ui(factor.p, self.step.p, k)
        return factor

    def sorted_equations(self):
        """The variables, ordered by the bytes of their names."""
        return [self.equations[name] for name in sorted(self.equations)]

    def is_printed(self, name):
        key = name + b":"
        listed = not self.print_list or key in self.print_list
        return listed and not (self.no_print_list and key in self.no_print_list)
