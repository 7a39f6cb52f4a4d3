#include "solve/quick/run_ahead.h"

#include <vector>

#include <gtest/gtest.h>

#include "programs.h"

namespace varno::solve::quick {
namespace {

using support::Equations;
using support::Expression;
using HardwareRun = Run;  // in tests Run is something else

constexpr RunSettings kSettings{.toleranceBits = 60, .order = 20, .disturbed = true};
constexpr std::uint32_t kMany = 1000;

/// A number of the step that all of its terms make.
Number Middle(const StepView& step)
{
  std::vector<Number> states(step.sizes.size());
  step.StatesAt((step.begin + step.end) / 2, states);
  return states[0];
}

void ExpectLatest(const StepView& found, const StepView& expected)
{
  EXPECT_EQ(found.begin, expected.begin);
  EXPECT_EQ(found.end, expected.end);
  EXPECT_EQ(Middle(found), Middle(expected));
  EXPECT_EQ(found.sizes[0], expected.sizes[0]);
}

TEST(QuickRunAhead, HasTheStepsOfTheRun)
{
  const Program program = Oscillator();
  const Way way{0, false, 100};
  for (const int alone : {0, 1, 7, 1000}) {
    SCOPED_TRACE(alone);
    HardwareRun expected(program, kSettings, way, {1, 0});
    RunAhead found(program, kSettings, way, {1, 0});
    while (expected.Latest().end < way.length) {
      if (found.Steps() == alone) found.GoAhead(kMany);
      ExpectLatest(found.Latest(), expected.Latest());
      ASSERT_TRUE(expected.Step());
      ASSERT_TRUE(found.Step());
      EXPECT_EQ(found.Steps(), expected.Steps());
    }
    ExpectLatest(found.Latest(), expected.Latest());
  }
}

TEST(QuickRunAhead, EndsWhereTheRunRefuses)
{
  // The pole is at 1.
  const Program program = Equation(1, [](Equations&, Expression y) { return y * y; });
  const Way way{0, false, 2};
  HardwareRun expected(program, kSettings, way, {1});
  RunAhead found(program, kSettings, way, {1});
  found.GoAhead(kMany);
  while (expected.Step()) ASSERT_TRUE(found.Step());
  EXPECT_FALSE(found.Step());
  EXPECT_FALSE(found.Step());
}

TEST(QuickRunAhead, HasNoMoreStepsThanItMay)
{
  const Program program = Oscillator();
  RunAhead run(program, kSettings, {0, false, 100}, {1, 0});
  run.GoAhead(3);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(run.Step());
  EXPECT_FALSE(run.Step());
  EXPECT_EQ(run.Steps(), 3);
}

TEST(QuickRunAhead, MayBeLeftAtAnyTime)
{
  const Program program = Oscillator();
  RunAhead run(program, kSettings, {0, false, 1e6L}, {1, 0});
  run.GoAhead(100 * kMany);
  EXPECT_TRUE(run.Step());
}

}  // namespace
}  // namespace varno::solve::quick
