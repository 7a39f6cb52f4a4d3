#include "solve/integration/step_length.h"

#include <gtest/gtest.h>

#include "solve/number/real.h"
#include "tests/solve/support/comparison.h"

namespace varno::solve {
namespace {

TEST(StepLength, IsTheLargestBelow)
{
  for (const double log2 : {-1000.3, -1.0, 0.0, 0.7, 12.0, 5000.9}) {
    const StepLength length = StepLength::AtMost(log2);
    EXPECT_LE(length.Log2(), log2);
    EXPECT_GT(length.Log2(), log2 - 0.001);
    Real units(64);
    length.InUnits(3, units);
    EXPECT_NEAR(length.Log2() - 3, support::Log2(units), 1e-9);
  }
}

TEST(StepLength, IsExactAsAMoment)
{
  EXPECT_EQ((StepLength{.mantissa = 3, .exponent = -2}.ToMoment()), Moment(Rational(3, 4)));
  EXPECT_EQ((StepLength{.mantissa = 3, .exponent = 4}.ToMoment()), Moment(Rational(48)));
}

}  // namespace
}  // namespace varno::solve
