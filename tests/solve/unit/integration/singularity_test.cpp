// Singularities whose places and orders closed forms tell.

#include "solve/integration/singularity.h"

#include <string>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

constexpr mpfr_prec_t kBits = 150;

/// What the terms of x' = f(x) about 0 tell, with x = start there, and time in this unit.
template <class RightHandSide>
Singularity Classified(RightHandSide f, const Rational& start, const Rational& unit = 1)
{
  Equations m;
  const Expression x = m.Variable("x", start);
  m.SetDerivative(x, f(x));
  const Tape tape = Compile(m.Finished());
  const auto series = MakeSeries(tape, kBits, 40);
  std::vector<Real> states(1, Real(kBits));
  mpfr_set_q(states[0], start.get_mpq_t(), MPFR_RNDN);
  series->Begin(Real(kBits), states, unit < 0, 0);
  series->ExtendTo(40);
  return Classify(tape, *series, Moment(Rational(0)), unit, 0, kBits);
}

// x = 1/(1 - t)
TEST(Classify, TellsASimplePole)
{
  const Singularity end = Classified([](Expression x) { return x * x; }, 1);
  EXPECT_EQ(end.kind, SingularityKind::kPole);
  EXPECT_EQ(end.order, Rational(1));
  EXPECT_EQ(end.state, 0U);
  EXPECT_NEAR(end.time.ToDouble(), 1, 1e-15);
}

// x = 1/(1 + t)
TEST(Classify, TellsAPoleBehind)
{
  const Singularity end = Classified([](Expression x) { return -(x * x); }, 1, -1);
  EXPECT_EQ(end.kind, SingularityKind::kPole);
  EXPECT_NEAR(end.time.ToDouble(), -1, 1e-15);
}

// x = (1 - 2 t)^(-1/2)
TEST(Classify, TellsAPoleOfHalfAnOrder)
{
  const Singularity end = Classified([](Expression x) { return Power(x, 3); }, 1);
  EXPECT_EQ(end.kind, SingularityKind::kPole);
  EXPECT_EQ(end.order, Rational(1, 2));
  EXPECT_NEAR(end.time.ToDouble(), 0.5, 1e-15);
}

// x = -ln(1 - t)
TEST(Classify, TellsALogarithm)
{
  const Singularity end =
      Classified([](Expression x) { return support::Function(Operation::kExp, x); }, 0);
  EXPECT_EQ(end.kind, SingularityKind::kLogarithm);
  EXPECT_NEAR(end.time.ToDouble(), 1, 1e-12);
}

// x = sqrt(1 - 2 t)
TEST(Classify, TellsABranchPoint)
{
  const Singularity end = Classified([](Expression x) { return Rational(-1) / x; }, 1);
  EXPECT_EQ(end.kind, SingularityKind::kBranchPoint);
  EXPECT_EQ(end.order, Rational(1, 2));
  EXPECT_NEAR(end.time.ToDouble(), 0.5, 1e-12);
}

// x = exp(t)
TEST(Classify, LeavesOpenWhatHasNone)
{
  const Singularity end = Classified([](Expression x) { return x + 0; }, 1);
  EXPECT_EQ(end.kind, SingularityKind::kUnknown);
  EXPECT_EQ(end.time, Moment(Rational(0)));
}

}  // namespace
}  // namespace varno::solve
