#include "solve/integration/domains.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/line_sizes.h"
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
using support::Quadrature;

Expression Sin(Expression u)
{
  return Function(Operation::kSin, u);
}

Expression Sqrt(Expression u)
{
  return Function(Operation::kSqrt, u);
}

/// What Domains finds for y' = f(t) from 0 over a step of this length.
class FirstRoot {
 public:
  template <class RightHandSide>
  FirstRoot(RightHandSide f, double length)
      : tape(Compile(Quadrature(f))), settings(SettingsFor(20, 20))
  {
    const auto series = MakeSeries(tape, settings.bits, settings.order);
    const std::vector<Real> states(tape.rightHandSides.size(), Real(settings.bits));
    series->Begin(Real(2), states, false, 0);
    series->ExtendTo(settings.order);
    Real step(53);
    mpfr_set_d(step, length, MPFR_RNDN);
    const std::vector<double> sizes = LineSizes(tape, *series);
    root = Domains(tape).FirstRoot({{*series, sizes, step, settings}});
  }

  std::optional<RootAhead> root;

 private:
  Tape tape;
  RunSettings settings;
};

void ExpectRoot(const std::optional<RootAhead>& root, double place, bool mayGoOn)
{
  ASSERT_TRUE(root.has_value());
  EXPECT_NEAR(root->place.ToDouble(), place, 1e-15);
  EXPECT_LT(root->error.ToDouble(), 1e-15);
  EXPECT_EQ(root->mayGoOn, mayGoOn);
}

// 1 + 20 t + 100 t^2 + 1/10 t^3 ... varies much and has no root ahead.
TEST(Domains, WhatVariesMuchHasNoRootForThat)
{
  EXPECT_FALSE(FirstRoot([](Equations& m) { return 1 / Power(1 + 10 * m.Time(), 2); }, 8).root);
  EXPECT_FALSE(FirstRoot([](Equations& m) { return Sqrt(2 - Sin(7 * m.Time())); }, 0.5).root);
}

TEST(Domains, FindsTheFirstRoot)
{
  const auto quotient = [](Equations& m) {
    return 1 / (Rational(1, 2) - m.Time()) + 1 / (Rational(1, 3) - m.Time());
  };
  ExpectRoot(FirstRoot(quotient, 1).root, 1.0 / 3, false);
  EXPECT_FALSE(FirstRoot(quotient, 0.25).root);
}

// A divisor of degree 2 whose roots lie 1e-12 beside the path
TEST(Domains, TellsAPairBesideThePath)
{
  const Rational square("1/1000000000000000000000000");
  EXPECT_FALSE(
      FirstRoot([&](Equations& m) { return 1 / (Power(m.Time() - 1, 2) + square); }, 8).root);
}

TEST(Domains, SeesDividendsThatVanishAsWell)
{
  const auto quotient = [](Expression u) { return Sin(u) / u; };
  ExpectRoot(FirstRoot([&](Equations& m) { return quotient(m.Time() - Rational(1, 3)); }, 1).root,
             1.0 / 3, true);
  ExpectRoot(FirstRoot(
                 [&](Equations& m) {
                   return Sin(m.Time() - Rational(1, 4)) / (m.Time() - Rational(1, 3));
                 },
                 1)
                 .root,
             1.0 / 3, false);
}

TEST(Domains, SeesThatARadicandTouches0)
{
  ExpectRoot(
      FirstRoot([](Equations& m) { return Sqrt(Power(m.Time() - Rational(1, 3), 2)); }, 1).root,
      1.0 / 3, true);
  ExpectRoot(FirstRoot([](Equations& m) { return Sqrt(Rational(1, 3) - m.Time()); }, 1).root,
             1.0 / 3, false);
}

// ---------------------------------------------------------------------------------------------
// Runs

double Value(const Model& model, const Rational& from, const Rational& to)
{
  return Integrate(model, from, to, 15).states.back().ToDouble();
}

// u/u is 1: the integral over its root is the length.
TEST(Domains, QuotientGoesOnBehindACommonRoot)
{
  const auto f = [](Equations& m) {
    const Expression u = m.Time() - Rational(1, 3);
    return u / u;
  };
  EXPECT_NEAR(Value(Quadrature(f), 0, 1), 1, 1e-15);
}

// Si(1) by its series, sum of (-1)^n / ((2 n + 1) (2 n + 1)!); Si is odd.
TEST(Domains, SineIntegralFromBothSidesAndFromTheRoot)
{
  double sine = 0, term = 1;
  for (int n = 0; n < 12; ++n) {
    sine += term / (2 * n + 1);
    term *= -1.0 / ((2 * n + 2) * (2 * n + 3));
  }
  const Model model = Quadrature([](Equations& m) { return Sin(m.Time()) / m.Time(); });
  EXPECT_NEAR(Value(model, -1, 1), 2 * sine, 1e-15);
  EXPECT_NEAR(Value(model, 1, -1), -2 * sine, 1e-15);
  EXPECT_NEAR(Value(model, 0, 1), sine, 1e-15);
  EXPECT_NEAR(Value(model, 0, -1), -sine, 1e-15);
}

// |sin t| over three of its kinks, and |1 - t| |3 - t|
TEST(Domains, RootGoesOnBehindAKink)
{
  const Model sines = Quadrature([](Equations& m) { return Sqrt(Power(Sin(m.Time()), 2)); });
  EXPECT_NEAR(Value(sines, 1, 10), 6 - (1 - std::cos(1)) + 1 + std::cos(10), 1e-14);
  const Model product =
      Quadrature([](Equations& m) { return Sqrt(Power((1 - m.Time()) * (3 - m.Time()), 2)); });
  EXPECT_NEAR(Value(product, 0, 4), 4, 1e-14);
  EXPECT_NEAR(Value(product, 4, 0), -4, 1e-14);
}

// y' = y/t has the solutions c t: any of them goes on behind 0.
TEST(Domains, QuotientThatDependsOnItselfDoesNotGoOn)
{
  Equations m;
  const Expression y = m.Variable("y", 1);
  m.SetDerivative(y, y / m.Time());
  EXPECT_THROW(Integrate(m.Finished(), -1, 1, 15), Singularity);
}

// h' = -sqrt(h) from 1 is (1 - t/2)^2 up to t = 2; the root's own series knows no end.
TEST(Domains, RootOfAStateEnds)
{
  Equations m;
  const Expression h = m.Variable("h", 1);
  m.SetDerivative(h, -Sqrt(h));
  try {
    Integrate(m.Finished(), 0, 3, 15);
    FAIL() << "passed the end";
  } catch (const Singularity& end) {
    EXPECT_NEAR(end.time.ToDouble(), 2, 1e-15);
  }
}

// 1 + 1e-19/(t - 1/3) has a pole, of which no term tells far from it.
TEST(Domains, NoStepPassesAPoleThatIsTooSmallToBeSeen)
{
  const auto f = [](Equations& m) {
    const Expression u = m.Time() - Rational(1, 3);
    return (u + Rational("1/10000000000000000000")) / u;
  };
  EXPECT_THROW(Value(Quadrature(f), 0, 1), Singularity);
}

TEST(Domains, ZeroThatMayNotBeDeclaredIsInDoubt)
{
  const Tape tape = Compile(Quadrature([](Equations& m) {
    const Expression u = Function(Operation::kExp, m.Time()) - 2;
    return Sin(u) / u;
  }));
  RunSettings settings = SettingsFor(20, 20);
  settings.mayDeclareZero = false;
  solve::Run run(tape, settings, Moment(Rational(0)), {Real(settings.bits)}, Moment(Rational(1)));
  EXPECT_THROW(
      {
        for (int i = 0; i < 5; ++i) run.Step();
      },
      ZeroInDoubt);
}

}  // namespace
}  // namespace varno::solve
