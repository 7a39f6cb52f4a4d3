// Sizes that the rules of sizes give by hand.

#include "solve/integration/line_sizes.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

constexpr mpfr_prec_t kBits = 100;

/// log2 of the size of f(x) at x = start.
template <class RightHandSide>
double SizeOf(RightHandSide f, const Rational& start)
{
  Equations m;
  const Expression x = m.Variable("x", start);
  m.SetDerivative(x, f(x));
  const Tape tape = Compile(m.Finished());
  const auto series = MakeSeries(tape, kBits, 4);
  std::vector<Real> states(1, Real(kBits));
  mpfr_set_q(states[0], start.get_mpq_t(), MPFR_RNDN);
  series->Begin(Real(kBits), states, false, 0);
  return LineSizes(tape, *series)[tape.rightHandSides[0]];
}

// 1 - 1 is 0, made of two things as large as 1.
TEST(LineSizes, StayWhereASumCancels)
{
  EXPECT_NEAR(SizeOf([](Expression x) { return x - 1; }, 1), 0, 1e-9);
  EXPECT_NEAR(SizeOf([](Expression x) { return x * 1024 - 1; }, Rational(1, 1024)), 0, 1e-9);
}

// (x - 1) x at 1: an error of the first factor, as large as 1, times 1.
TEST(LineSizes, OfAProductAreThoseOfItsErrors)
{
  EXPECT_NEAR(SizeOf([](Expression x) { return (x - 1) * x; }, 1), 0, 1e-9);
  EXPECT_NEAR(SizeOf([](Expression x) { return (x - 8) * x; }, 8), 6, 1e-9);
}

// sqrt(x - 1) at 1 + 2^-10: half of 1 / sqrt(2^-10) = 2^4
TEST(LineSizes, GrowBesideABranchPoint)
{
  const auto root = [](Expression x) { return support::Function(Operation::kSqrt, x - 1); };
  EXPECT_NEAR(SizeOf(root, Rational(1025, 1024)), 4, 0.01);
}

TEST(LineSizes, OfAQuotientGrowWithASmallDivisor)
{
  // 1/(x - 1) at 1 + 2^-10: the square of 2^10
  EXPECT_NEAR(SizeOf([](Expression x) { return Rational(1) / (x - 1); }, Rational(1025, 1024)), 20,
              0.01);
}

TEST(LineSizes, AreNothingForAnExactZero)
{
  EXPECT_TRUE(std::isinf(SizeOf([](Expression x) { return x * 3; }, 0)));
}

// x atan(x) with atan held: x/(1 + x^2) would be infinite without its divisor.
TEST(LineSizes, OfLinesLeftOutAreThoseOfTheirConstants)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x * support::Function(Operation::kAtan, x));
  const Tape tape = Compile(m.Finished());
  const auto series = MakeSeries(tape, kBits, 4);
  std::vector<Real> states(1, Real(kBits));
  mpfr_set_ui(states[0], 1, MPFR_RNDN);
  std::vector<bool> leftOut(tape.lines.size(), true);
  leftOut[0] = leftOut[tape.rightHandSides[0]] = false;
  HeldLines held;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (tape.lines[id].kind == LineKind::kIntegralOfQuotient)
      held.emplace(id, Real(kBits)).first->second = states[0];
  }
  series->LeaveOut(leftOut, held);
  series->Begin(Real(kBits), states, false, 0);
  EXPECT_NEAR(LineSizes(tape, *series, leftOut)[tape.rightHandSides[0]], 0, 1e-9);
}

}  // namespace
}  // namespace varno::solve
