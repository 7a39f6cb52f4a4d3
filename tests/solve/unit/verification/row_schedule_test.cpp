#include "solve/verification/row_schedule.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

Moment At(long time)
{
  return Moment(Rational(time));
}

std::vector<double> Early(const RowSchedule& schedule)
{
  std::vector<double> times;
  for (const Moment& time : schedule.Early()) times.push_back(time.ToDouble());
  return times;
}

using Times = std::vector<double>;

TEST(RowSchedule, KnowsTheRowsBeforeTheStart)
{
  const Interval interval{.start = At(0), .from = At(-2), .to = At(2)};
  const RowSchedule schedule(interval, RowTimes::Every(interval.from, interval.to, At(1)));
  EXPECT_EQ(Early(schedule), (Times{-2, -1}));
}

TEST(RowSchedule, KnowsThemBackwards)
{
  const Interval interval{.start = At(0), .from = At(2), .to = At(-2)};
  const RowSchedule schedule(interval, RowTimes::Every(interval.from, interval.to, At(1)));
  EXPECT_EQ(Early(schedule), (Times{2, 1}));
}

TEST(RowSchedule, HasNoneWhereTheRowsBeginAtTheStart)
{
  const Interval interval{.start = At(0), .from = At(0), .to = At(2)};
  EXPECT_TRUE(Early(RowSchedule(interval, RowTimes::Last(interval.to))).empty());
  EXPECT_TRUE(Early(RowSchedule::AtSteps(interval)).empty());
}

TEST(RowSchedule, OfStepsBeginsWithTheBegin)
{
  const Interval across{.start = At(0), .from = At(-2), .to = At(2)};
  EXPECT_EQ(Early(RowSchedule::AtSteps(across)), (Times{-2}));
  const Interval before{.start = At(0), .from = At(-2), .to = At(-1)};
  EXPECT_EQ(Early(RowSchedule::AtSteps(before)), (Times{-2, -1}));
}

}  // namespace
}  // namespace varno::solve
