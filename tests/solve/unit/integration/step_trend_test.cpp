#include "solve/integration/step_trend.h"

#include <limits>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(StepTrend, TellsStepsThatShrinkToASingularity)
{
  StepTrend trend;
  for (int step = 0; step < 8; ++step) {
    EXPECT_FALSE(trend.IsShrinking(-step * 0.15)) << "too few to tell";
    trend.Add(-step * 0.15);
  }
  EXPECT_TRUE(trend.IsShrinking(-8 * 0.15));
}

TEST(StepTrend, LeavesShortStepsInPeace)
{
  StepTrend trend;
  for (int step = 0; step < 100; ++step) trend.Add(step % 2 == 0 ? -500 : -500.5);
  EXPECT_FALSE(trend.IsShrinking(-500.5));
}

TEST(StepTrend, TakesNoStepAtAllForTheEnd)
{
  EXPECT_TRUE(StepTrend().IsShrinking(-std::numeric_limits<double>::infinity()));
}

}  // namespace
}  // namespace varno::solve
