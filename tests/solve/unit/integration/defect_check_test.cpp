// The derivative of a series against the right-hand side: what passes, and what does not.

#include "solve/integration/defect_check.h"

#include <cmath>
#include <utility>

#include <gtest/gtest.h>

#include "solve/integration/run.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/integration.h"

namespace varno::solve {
namespace {

using support::Arrival;
using support::Equations;
using support::Expression;
using support::Function;
using support::Integrate;
using support::Power;

/// A series of which one term of one line was computed wrongly, by one part in 10^12.
class FaultySeries final : public Series {
 public:
  FaultySeries(const Series& right, LineId line, int term)
      : right(right), faultyLine(line), faultyTerm(term)
  {}
  void LeaveOut(const std::vector<bool>&, const HeldLines&) override {}
  void Begin(mpfr_srcptr, std::span<const Real>, bool, long) override {}
  void ExtendTo(int) override {}
  int Order() const override { return right.Order(); }
  double Log2(LineId line, int k) const override { return right.Log2(line, k); }
  std::span<const double> Logs(LineId line) const override { return right.Logs(line); }
  double Log2Constant(ConstantId constant) const override { return right.Log2Constant(constant); }
  std::span<const double> FactorLogs() const override { return right.FactorLogs(); }
  void Sum(LineId line, mpfr_srcptr offset, mpfr_ptr result) const override
  {
    right.Sum(line, offset, result);
  }
  void Term(LineId line, int k, mpfr_ptr result) const override
  {
    right.Term(line, k, result);
    if (line == faultyLine && k == faultyTerm) mpfr_mul_d(result, result, 1 + 1e-12, MPFR_RNDN);
  }

 private:
  const Series& right;
  LineId faultyLine;
  int faultyTerm;
};

/// A model's series about t = 0 from its start values, with scale 1.
struct Subject {
  Tape tape;
  RunSettings settings = SettingsFor(22, 22);
  std::unique_ptr<Series> series;
  DefectCheck check;
  Moment begin{Rational(0)};

  Subject(const Equations& equations, const std::vector<double>& start, int order)
      : tape(Compile(equations.Finished())),
        series(MakeSeries(tape, settings.bits, settings.order)),
        check(tape, settings, settings.bits)
  {
    std::vector<Real> states;
    for (const double value : start)
      mpfr_set_d(states.emplace_back(settings.bits), value, MPFR_RNDN);
    series->Begin(Real(2), states, false, 0);
    series->ExtendTo(order);
    series->Refine();
  }

  bool Passes(const Series& of, double length)
  {
    const double parts[] = {0.3, 0.7, 1};
    return check.Passes({.series = of,
                         .begin = begin,
                         .backwards = false,
                         .scaleExponent = 0,
                         .lengthLog2 = std::log2(length),
                         .leftOut = {}},
                        parts);
  }
  bool Passes(double length) { return Passes(*series, length); }
};

Equations Oscillator()
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  return m;
}

// At order 27, |terms| 1/27! = 10^-28: a step of 1 passes, one of 4 does not.
TEST(DefectCheck, ShortStepsPass)
{
  Subject subject(Oscillator(), {1, 0}, 27);
  EXPECT_TRUE(subject.Passes(1));
  EXPECT_FALSE(subject.Passes(4));
}

TEST(DefectCheck, TooFewTermsFail)
{
  Subject subject(Oscillator(), {1, 0}, 10);
  EXPECT_FALSE(subject.Passes(1));
}

// What is made of the time is looked at where the points are.
TEST(DefectCheck, TimeGoesOn)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x * Function(Operation::kCos, m.Time()));
  Subject subject(m, {1}, 30);
  EXPECT_TRUE(subject.Passes(0.5));
  subject.begin = Moment(Rational(1, 1000));
  EXPECT_FALSE(subject.Passes(0.5));
}

// A wrong term of a state, wherever it is, is one of its derivative.
TEST(DefectCheck, WrongTermsFail)
{
  Subject subject(Oscillator(), {1, 0}, 27);
  for (const auto& [line, term] : {std::pair(0U, 2), std::pair(0U, 6), std::pair(1U, 1)})
    EXPECT_FALSE(subject.Passes(FaultySeries(*subject.series, line, term), 1))
        << "term " << term << " of line " << line;
}

// What cancels is rounding, and no defect: z' = x^2 + v^2 - 1 is 0 on the circle.
TEST(DefectCheck, RoundingPasses)
{
  Equations m;
  const Expression x = m.Variable("x", 0), v = m.Variable("v", 0), z = m.Variable("z", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  m.SetDerivative(z, x * x + v * v - 1);
  Subject subject(m, {0.28, 0.96, 0}, 27);
  EXPECT_TRUE(subject.Passes(1));
}

// A pendulum that stands upright: the sine of the rounded pi counts in units of its argument.
TEST(DefectCheck, UprightPendulumPasses)
{
  Equations m;
  const Expression a = m.Variable("a", 0), p = m.Variable("p", 0);
  m.SetDerivative(a, p);
  m.SetDerivative(p, -Function(Operation::kSin, a));
  Subject subject(m, {std::acos(-1), 0}, 27);
  EXPECT_TRUE(subject.Passes(1));
}

// exp(sin(t)^200) shows no term but 1 at six times the usual order: those of the power are
// followed.
TEST(DefectCheck, StepsBesideAFlatFunctionPass)
{
  Equations m;
  const Expression power = Power(Function(Operation::kSin, m.Time()), 200);
  m.SetDerivative(m.Variable("y", 0), Function(Operation::kExp, power) - 1);
  const Arrival arrival = Integrate(m.Finished(), 0, 3, 15);
  EXPECT_NEAR(0.26116621148890254, arrival.states[0].ToDouble(), 1e-14);  // by mpmath
}

}  // namespace
}  // namespace varno::solve
