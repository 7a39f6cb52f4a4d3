// When block arithmetic is tried, and with which scale.

#include "solve/integration/arithmetic_choice.h"

#include <cmath>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

/// How many steps are skipped until the next trial.
int SkippedSteps(ArithmeticChoice& choice)
{
  int skipped = 0;
  for (; !choice.IsWorthTrying(); ++skipped) choice.StepSkipped();
  return skipped;
}

TEST(ArithmeticChoice, OneFailureIsForgiven)
{
  ArithmeticChoice choice;
  EXPECT_TRUE(choice.IsWorthTrying());
  choice.StepTried(false);
  EXPECT_TRUE(choice.IsWorthTrying());
  choice.StepTried(true);
  choice.StepTried(false);
  EXPECT_TRUE(choice.IsWorthTrying());
}

TEST(ArithmeticChoice, SkipsMoreAndMoreSteps)
{
  ArithmeticChoice choice;
  choice.StepTried(false);
  for (const int expected : {3, 7, 15, 31, 63, 63}) {
    choice.StepTried(false);
    EXPECT_EQ(expected, SkippedSteps(choice));
  }
  choice.StepTried(true);
  choice.StepTried(false);
  EXPECT_TRUE(choice.IsWorthTrying());
}

TEST(ScaleFor, IsNotBelowTheStep)
{
  for (double step = -40; step < 40; step += 0.0625) {
    const auto scale = static_cast<double>(ScaleFor(step));
    EXPECT_GE(scale, step);
    EXPECT_LE(scale, step + 1.125);
  }
}

}  // namespace
}  // namespace varno::solve
