#include "solve/integration/resolution.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/integration/line_sizes.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

constexpr mpfr_prec_t kBits = 118;

/// x' = factor * (cos(t)^2 + sin(t)^2 - 1): nothing but rounding errors.
Model Cancelling(const Rational& factor)
{
  Equations m;
  const Expression x = m.Variable("x", 0);
  const Expression sine = support::Function(Operation::kSin, m.Time() + 1);
  const Expression cosine = support::Function(Operation::kCos, m.Time() + 1);
  m.SetDerivative(x, (sine * sine + cosine * cosine - 1) * factor);
  return m.Finished();
}

/// The bits for a step of this length from x = state, which is the rest of something as large as
/// stateSize (log2).
double Needed(const Model& model, double state, double stateSize, double lengthLog2 = 0)
{
  const Tape tape = Compile(model);
  const RunSettings settings = SettingsFor(22, 20);
  const auto series = MakeSeries(tape, kBits, 4);
  std::vector<Real> states(1, Real(kBits));
  mpfr_set_d(states[0], state, MPFR_RNDN);
  series->Begin(Real(kBits), states, false, 0);
  const std::vector<double> stateSizes{std::max(stateSize, std::log2(std::abs(state)))};
  return BitsForDerivatives(
      tape, *series, {states, stateSizes, LineSizes(tape, *series), lengthLog2}, settings, kBits);
}

Rational PowerOfTwo(unsigned exponent)
{
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 2, exponent);
  return power;
}

// 2^-118 of rounding errors are less than the tolerance, 10^-22, of a state as large as 1.
TEST(BitsForDerivatives, RoundingErrorsBelowTheToleranceMayStay)
{
  EXPECT_EQ(Needed(Cancelling(1), 1, 0), 0);
  EXPECT_EQ(Needed(Cancelling(1), 0, -INFINITY), 0);
}

// Beyond 2^200 times that, all that is hidden must come below 10^-22 = 2^-73.1.
TEST(BitsForDerivatives, LargerOnesAreResolved)
{
  EXPECT_NEAR(Needed(Cancelling(PowerOfTwo(200)), 0, -INFINITY), 200 + 73 + 10, 2);
  EXPECT_NEAR(Needed(Cancelling(PowerOfTwo(200)), 1024, 0), 200 + 73 + 10 - 10, 2);
  EXPECT_NEAR(Needed(Cancelling(PowerOfTwo(200)), 0, -INFINITY, -50), 200 + 73 + 10 - 50, 2);
}

TEST(BitsForDerivatives, ASmallStateIsMeasuredByItself)
{
  const double little = std::exp2(-300);
  EXPECT_NEAR(Needed(Cancelling(1), little, -INFINITY), 300 + 73 + 10, 2);
  // The same number is the rest of a cancellation where the state has been as large as 1.
  EXPECT_EQ(Needed(Cancelling(1), little, 0), 0);
}

TEST(BitsForDerivatives, WhatDoesNotCancelNeedsNone)
{
  Equations m;
  const Expression x = m.Variable("x", 0);
  m.SetDerivative(x, x * PowerOfTwo(400) + 1);
  EXPECT_EQ(Needed(m.Finished(), 1, 0), 0);
  EXPECT_EQ(Needed(m.Finished(), 0, -INFINITY), 0);
}

}  // namespace
}  // namespace varno::solve
