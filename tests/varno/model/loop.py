"""The integration: one pass after the other with variable order and step."""

import mpf
from dumps import dump_derivatives, dump_terms
from ends import Ended, NotModelled
from mpf import Mpf, absolute, add, assign, cmp, mul, sub
from nodes import Algebraic
from number_format import number
from period import PeriodWatch
from table import write_row
from texts import int32, quotient


class Loop:
    def __init__(self, record):
        self.record = record
        self.equations = record.sorted_equations()
        self.start_time = mpf.from_double(0.0)
        self.two = mpf.from_text(b"2.0")
        self.growth = mpf.from_text(b"1.2")
        self.next_print = mpf.from_text(b"0")
        self.rows_not_printed = 0
        self.first_pass = True
        self.step_changed = True
        self.stiff = False
        self.steady_passes = 0
        record.smallest = mpf.from_text(b"1e1000")
        record.largest = mpf.from_text(b"-1e1000")
        self.period = None

    def run(self):
        record = self.record
        if cmp(record.step.p, record.tmax.p) > 0:
            assign(record.step.p, record.tmax.p)
            record.step_changed()
        self.period = PeriodWatch(record)
        self.require_tmax_ahead()
        while True:
            self.evaluate()
            if self.order_exceeded():
                self.reject()
                continue
            if self.is_to_print():
                self.print_pass()
            else:
                self.rows_not_printed += 1
            if self.is_at_end():
                return
            if not self.stiff or self.step_changed or record.stiff_every_step:
                self.test_stiffness()
            self.enlarge()
            self.advance()

    # -- the parts of a pass

    def evaluate(self):
        record = self.record
        record.order = 0
        steady = 0
        for equation in self.equations:
            if isinstance(equation, Algebraic):
                record.recompute = True
            equation.get_value()
            steady += equation.steady
        self.steady_passes = self.steady_passes + 1 if steady == len(self.equations) else 0
        record.passes += 1
        if record.effort is not None and max(record.terms_computed, record.passes) > record.effort:
            raise NotModelled("too long for the model")

    def order_exceeded(self):
        record = self.record
        return not record.fixed_step and int32(record.zero_terms + record.order) > record.term_count

    def reject(self):
        record = self.record
        record.stamp += 1
        record.previous_stamp = record.stamp
        mpf.div(record.step, record.step, self.two)
        record.step_changed()
        self.say_step(b"Max ORDER reached! Changing step to ")
        add(record.time.p, self.start_time.p, record.step.p)
        self.step_changed = True

    def say_step(self, words):
        record = self.record
        record.stderr.write(b"#(COMP) %s%s\tTime= %s\n" % (
            words, number(record, record.step), number(record, self.start_time)))

    def is_to_print(self):
        record = self.record
        if record.print_every.is_zero() or self.first_pass:
            return True
        return cmp(self.next_print.p, record.time.p) < 0

    def print_pass(self):
        record = self.record
        if self.rows_not_printed > 0:
            record.stderr.write(b"#(INFO) %d results not printed\n" % self.rows_not_printed)
            self.rows_not_printed = 0
        add(self.next_print.p, self.next_print.p, record.print_every.p)
        if record.dump_terms & 1:
            dump_terms(record, self.equations, self.start_time)
        if record.dump_terms & 2:
            dump_derivatives(record, self.equations, self.start_time)
        write_row(record, record.print_only_tmax)

    def is_at_end(self):
        record = self.record
        if record.steady_stop:
            return self.steady_passes == record.steady_stop
        if self.period.found():
            return True
        return cmp(record.time.p, record.tmax.p) == 0

    def test_stiffness(self):
        record = self.record
        mpf.set_text(record.smallest, b"1e1000")
        mpf.set_text(record.largest, b"-1e1000")
        smallest_name = largest_name = b""
        magnitude = Mpf()
        for equation in self.equations:
            index, term = equation.last_term()
            if index <= 0:
                continue
            absolute(magnitude.p, term.p)
            if cmp(magnitude.p, record.smallest.p) < 0:
                assign(record.smallest.p, magnitude.p)
                smallest_name = equation.name
            if cmp(magnitude.p, record.largest.p) > 0:
                assign(record.largest.p, magnitude.p)
                largest_name = equation.name
        largest = mpf.binary_exponent(record.largest)
        smallest = mpf.binary_exponent(record.smallest)
        difference = abs(largest - smallest)
        self.stiff = difference > record.stiff_difference
        if self.stiff:
            record.stderr.write(b"#(COMP) System is STIFF!\n")
            self.step_changed = False
        record.stderr.write(b"#(TST) Max(%s)=%d  Min(%s)=%d  Diff=%d\n" % (
            largest_name, largest, smallest_name, smallest, difference))

    def enlarge(self):
        record = self.record
        if self.first_pass or record.order > quotient(record.term_count, 12):
            return
        if not record.fixed_step:
            mul(record.step.p, record.step.p, self.growth.p)
            record.step_changed()
            self.say_step(b"Step increased to ")
        self.step_changed = True

    def advance(self):
        record = self.record
        self.first_pass = False
        assign(self.start_time.p, record.time.p)
        add(record.time.p, record.time.p, record.step.p)
        if cmp(record.time.p, record.tmax.p) >= 0:
            sub(record.step.p, record.step.p, record.time.p)
            add(record.step.p, record.step.p, record.tmax.p)
            record.step_changed()
            assign(record.time.p, record.tmax.p)
            mpf.set_text(record.print_every, b"0")
        record.previous_stamp = record.stamp
        record.stamp += 1
        if (self.must_reach_tmax() and record.step.is_negative()
                and cmp(record.time.p, record.tmax.p) != 0
                and cmp(self.start_time.p, record.tmax.p) < 0):
            self.end_without_tmax()

    # -- steps that lead nowhere

    def must_reach_tmax(self):
        """Neither a steady state nor a period may end the run instead."""
        return not self.record.steady_stop and self.record.period_count <= 0

    def require_tmax_ahead(self):
        record = self.record
        stays = record.step.is_zero() and not record.tmax.is_zero()
        leads_away = record.step.is_negative() and record.tmax.raw.size > 0
        if self.must_reach_tmax() and (stays or leads_away):
            self.end_without_tmax()

    def end_without_tmax(self):
        record = self.record
        record.stderr.write(b"#(ERR) A step of %s never reaches Tmax= %s\n" % (
            number(record, record.step), number(record, record.tmax)))
        raise Ended(1)
