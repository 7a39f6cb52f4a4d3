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

}  // namespace
}  // namespace varno::solve
