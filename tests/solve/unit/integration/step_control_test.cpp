#include "solve/integration/step_control.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
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
using support::HasDigits;
using support::Integrate;
using support::Power;

Real Number(const char* text)
{
  return support::FromText(text, 200);
}

double Value(const Arrival& arrival)
{
  return arrival.states[0].ToDouble();
}

// ---------------------------------------------------------------------------------------------
// All lines count

// The state rests at 1 while a bell comes near: x(52) - 1 = exp(-2 + 1/4) sqrt(pi)/2 (erf 3/2 + erf
// 101/2).
TEST(StepControl, FunctionThatIsAboutToMoveCounts)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, 1 - x + Function(Operation::kExp, -Power(m.Time() - 50, 2)));
  const double expected = 1 + std::exp(-1.75) * std::sqrt(std::acos(-1)) / 2 * (std::erf(1.5) + 1);
  EXPECT_NEAR(expected, Value(Integrate(m.Finished(), 0, 52, 15)), 1e-15);
}

// The integral is sqrt(pi)/10.
TEST(StepControl, NarrowBellCounts)
{
  Equations m;
  m.SetDerivative(m.Variable("y", 0), Function(Operation::kExp, -Power(10 * (m.Time() - 5), 2)));
  Real expected(200);
  mpfr_const_pi(expected, MPFR_RNDN);
  mpfr_sqrt(expected, expected, MPFR_RNDN);
  mpfr_div_ui(expected, expected, 10, MPFR_RNDN);
  EXPECT_TRUE(HasDigits(15, Integrate(m.Finished(), 0, 10, 15).states[0], expected));
}

// A switch far away, of which the derivative is nothing yet: the integral of tanh 100 (t - 1/2)
// from 0 to 1 is 0, to 3/2 it is 1/2 and what the bend takes: ln(cosh 100 / cosh 50)/100.
TEST(StepControl, DistantSwitchCounts)
{
  for (const Operation function : {Operation::kTanh, Operation::kErf}) {
    Equations m;
    m.SetDerivative(m.Variable("y", 0), Function(function, 100 * (m.Time() - Rational(1, 2))));
    EXPECT_NEAR(0.5, Value(Integrate(m.Finished(), 0, Rational(3, 2), 15)), 1e-15);
  }
}

TEST(StepControl, DistantSwitchOfCothCounts)
{
  // The integral of coth 100 (t - 1/2) from 1/4 down to 0 is (ln sinh 50 - ln sinh 25)/-100.
  Equations m;
  m.SetDerivative(m.Variable("y", 0),
                  Function(Operation::kCoth, 100 * (m.Time() + Rational(1, 2))));
  Real expected(200), part(200);
  mpfr_set_ui(expected, 150, MPFR_RNDN);
  mpfr_sinh(expected, expected, MPFR_RNDN);
  mpfr_log(expected, expected, MPFR_RNDN);
  mpfr_set_ui(part, 50, MPFR_RNDN);
  mpfr_sinh(part, part, MPFR_RNDN);
  mpfr_log(part, part, MPFR_RNDN);
  mpfr_sub(expected, expected, part, MPFR_RNDN);
  mpfr_div_ui(expected, expected, 100, MPFR_RNDN);
  EXPECT_TRUE(HasDigits(15, Integrate(m.Finished(), 0, 1, 15).states[0], expected));
}

// ---------------------------------------------------------------------------------------------
// More than the last terms count

/// log2 of the longest first step of y' = f(t) at t = 0 with series of these orders.
double LongestStep(const Model& model, int order)
{
  const Tape tape = Compile(model);
  RunSettings settings = SettingsFor(22, 22);
  settings.order = order;
  const auto series = MakeSeries(tape, settings.bits, order);
  std::vector<Real> states;
  for (const State& state : model.states)
    states.push_back(EvaluateConstant(model.graph, state.start, settings.bits));
  series->Begin(Real(settings.bits), states, false, 0);
  return StepControl(tape, settings).Choose(*series, std::vector<bool>(tape.lines.size()), 0).log2;
}

// ---------------------------------------------------------------------------------------------
// The raised order

/// The order of a step that comes after one of this length (log2).
int OrderAfterAStep(const Model& model, double lengthLog2)
{
  const Tape tape = Compile(model);
  const RunSettings settings = SettingsFor(22, 22);
  StepControl control(tape, settings);
  const std::vector<bool> none(tape.lines.size());
  std::vector<Real> states;
  for (const State& state : model.states)
    states.push_back(EvaluateConstant(model.graph, state.start, settings.bits));
  const auto series = MakeSeries(tape, settings.bits, settings.order);
  series->Begin(Real(settings.bits), states, false, 0);
  control.Choose(*series, none, 0);
  EXPECT_EQ(series->Order(), settings.order) << "no step was made";
  control.StepMade(*series, 0, lengthLog2);
  series->Begin(Real(settings.bits), states, false, 0);
  control.Choose(*series, none, 0);
  return series->Order();
}

// The terms of 1/(1 - t) are 1: over 1/8 they fall from the start.
TEST(StepControl, RaisesTheOrderWhereTermsFall)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x * x);
  EXPECT_EQ(OrderAfterAStep(m.Finished(), -3), SettingsFor(22, 22).raisedOrder);
  EXPECT_GT(SettingsFor(22, 22).raisedOrder, SettingsFor(22, 22).order);
}

// Before a first step a series may tell about how long it becomes: too short where terms fall ever
// faster, as those of an entire function do.
TEST(StepControl, LeavesTheRaisedOrderWhereTheStepIsLongerThanExpected)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 1);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  const Tape tape = Compile(m.Finished());
  const RunSettings settings = SettingsFor(22, 22);
  const std::vector<bool> none(tape.lines.size());
  const auto series = MakeSeries(tape, settings.bits, settings.order);
  std::vector<Real> states(2, Real(settings.bits));
  for (Real& state : states) mpfr_set_ui(state, 1, MPFR_RNDN);
  series->Begin(Real(settings.bits), states, false, 0);
  const double usual = StepControl(tape, settings).Choose(*series, none, 0).log2;
  StepControl control(tape, settings);
  control.Expect(*series, 0, -3);
  const double chosen = control.Choose(*series, none, 0).log2;
  EXPECT_EQ(series->Order(), settings.raisedOrder) << "the terms fall over 1/8";
  RunSettings raised = settings;
  raised.order = settings.raisedOrder;
  const double longer = StepControl(tape, raised).Choose(*series, none, 0).log2;
  EXPECT_LE(chosen, usual + 0.25);
  EXPECT_GT(longer, chosen + 0.5);
  EXPECT_EQ(control.StepMade(*series, 0, chosen), chosen) << "nor is it raised in the next one";
}

// Those of cos(t) and -sin(t) grow over 4 before they fall.
TEST(StepControl, DoesNotRaiseItWhereTermsGrow)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 1);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  EXPECT_EQ(OrderAfterAStep(m.Finished(), 2), SettingsFor(22, 22).order);
}

// The terms of 1/(1 + t^m) are 0 but for each m-th; its series reaches to 1, whatever the order.
TEST(StepControl, OrdersMayBeMissingInBlocks)
{
  for (const int m : {2, 3, 4, 8, 16, 32}) {
    for (int order = 24; order < 24 + m; ++order) {
      const Model model = support::Quadrature(
          [&](Equations& equations) { return 1 / (1 + Power(equations.Time(), m)); });
      EXPECT_LT(LongestStep(model, order), 0) << "t^" << m << ", order " << order;
    }
  }
}

// The same beside a function whose terms are all there, and so much smaller that the last ones say
// nothing: y = x + 10^-6 sin(t) with x = 1/(1 + t^8), and no line is x alone.
TEST(StepControl, OrdersMayBeNearlyMissingInBlocks)
{
  for (int order = 24; order < 32; ++order) {
    Equations m;
    const Expression y = m.Variable("y", 1);
    const Expression sine = Rational(1, 1'000'000) * Function(Operation::kSin, m.Time());
    const Expression cosine = Rational(1, 1'000'000) * Function(Operation::kCos, m.Time());
    m.SetDerivative(y, cosine - 8 * Power(m.Time(), 7) * Power(y - sine, 2));
    EXPECT_LT(LongestStep(m.Finished(), order), 0) << "order " << order;
  }
}

// ---------------------------------------------------------------------------------------------
// Flat starts

// The first 50 terms of t^50 (2 - t)^50 are 0. The integral to 1 is half of 2^101 (50!)^2 / 101!.
TEST(StepControl, VanishingTermsRaiseTheOrder)
{
  Equations m;
  m.SetDerivative(m.Variable("y", 0), Power(m.Time() * (2 - m.Time()), 50));
  Integer factorial, whole;
  mpz_fac_ui(factorial.get_mpz_t(), 50);
  mpz_fac_ui(whole.get_mpz_t(), 101);
  Integer power = 1;
  power <<= 100;
  Rational integral(Integer(power * factorial * factorial), whole);
  integral.canonicalize();
  Real expected(200);
  mpfr_set_q(expected, integral.get_mpq_t(), MPFR_RNDN);
  EXPECT_TRUE(HasDigits(15, Integrate(m.Finished(), 0, 1, 15).states[0], expected));
}

// More vanishing terms than the order is raised for otherwise, but the degree is known. x is a
// power of t, too.
TEST(StepControl, HighPowersOfTimeAreNotTakenForZero)
{
  Equations m;
  const Expression x = m.Variable("x", 0), y = m.Variable("y", 0), z = m.Variable("z", 0);
  m.SetDerivative(y, Power(m.Time(), 1000));
  m.SetDerivative(x, m.Number(1));
  m.SetDerivative(z, Power(x, 2000) + 1);
  const auto states = Integrate(m.Finished(), 0, 1, 15).states;
  EXPECT_TRUE(HasDigits(15, states[1], Number("1/1001")));
  EXPECT_TRUE(HasDigits(15, states[2], Number("2002/2001")));
}

// ---------------------------------------------------------------------------------------------
// Domains

// The line u/u is 1 in every term; its divisor has a root at -1e-30, close by. There is none ahead.
TEST(StepControl, RootJustBehindTheStartIsNone)
{
  Equations m;
  const Expression u = m.Time() + Rational(Integer(1), Integer("1000000000000000000000000000000"));
  m.SetDerivative(m.Variable("y", 0), u / u + Function(Operation::kSin, m.Time()));
  // 1 + 1 - cos 1
  EXPECT_NEAR(2 - std::cos(1), Value(Integrate(m.Finished(), 0, 1, 15)), 1e-15);
}

// y' = y^2, y(0) = 1 has its pole at 1.
TEST(StepControl, StepsShrinkTowardsAPole)
{
  Equations m;
  const Expression y = m.Variable("y", 1);
  m.SetDerivative(y, y * y);
  try {
    Integrate(m.Finished(), 0, 2, 15);
    FAIL() << "passed the pole";
  } catch (const Singularity& singularity) {
    EXPECT_NEAR(1, singularity.time.ToDouble(), 1e-15);
    EXPECT_LT(singularity.time.ToDouble(), 1 + 1e-15);
  } catch (const DomainError& error) {
    FAIL() << "domain";
  }
}

// ---------------------------------------------------------------------------------------------
// Sizes

// A pendulum that stands upright: the velocity's derivative is rounding, which must not shorten
// steps.
TEST(StepControl, RoundingOfWhatCancelsDoesNotShortenSteps)
{
  Equations m;
  const Expression x = m.Variable("x", Rational(3, 5)), v = m.Variable("v", Rational(4, 5)),
                   z = m.Variable("z", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  m.SetDerivative(z, x * x + v * v - 1);
  const Arrival arrival = Integrate(m.Finished(), 0, 20, 15);
  EXPECT_NEAR(0, arrival.states[2].ToDouble(), 1e-20);
  EXPECT_LE(arrival.steps, 40);
}

// 10^25 times the rounding of a sum that is 0. Without its size as a floor the terms of rounding
// were compared with one another, and twice as many steps made.
TEST(StepControl, EnlargedRoundingDoesNotShortenSteps)
{
  Equations m;
  const Expression sin = Function(Operation::kSin, m.Time()),
                   cos = Function(Operation::kCos, m.Time());
  const Rational large("10000000000000000000000000");
  m.SetDerivative(m.Variable("y", 0), large * (1 + sin - sin * sin - cos * cos - sin));
  EXPECT_LE(Integrate(m.Finished(), 0, 20, 15).steps, 42);
}

// Many factors that only rescale leave the number of steps alone.
TEST(StepControl, UnitsOfTimeAndStatesDoNotMatter)
{
  std::int64_t steps[2];
  for (const int i : {0, 1}) {
    Rational unit = 1;
    if (i == 1) mpq_mul_2exp(unit.get_mpq_t(), unit.get_mpq_t(), 1000);
    Equations m;
    const Expression x = m.Variable("x", unit), v = m.Variable("v", 0);
    m.SetDerivative(x, v * (1 / unit));
    m.SetDerivative(v, -(x * (1 / unit)));
    steps[i] = Integrate(m.Finished(), 0, 20 * unit, 15).steps;
  }
  EXPECT_EQ(steps[0], steps[1]);
}

}  // namespace
}  // namespace varno::solve
