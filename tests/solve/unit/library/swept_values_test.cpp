// Counts and texts of sweeps, by hand.

#include <string>

#include <gtest/gtest.h>

#include "solve/library/solve.h"

namespace varno::solve {

namespace {

std::int64_t CountOf(const std::string& first, const std::string& last, const std::string& step)
{
  return SweptValues::Range(first, last, step, 15).count;
}

}  // namespace

TEST(SweptValues, BothEndsAreInTheRange)
{
  EXPECT_EQ(11, CountOf("0", "1", "0.1"));
  EXPECT_EQ(11, CountOf("1", "0", "-0.1"));
  EXPECT_EQ(1, CountOf("3", "3", "1"));
  EXPECT_EQ(1, CountOf("3", "3.9", "1"));
  EXPECT_EQ(4, CountOf("0", "pi", "pi/3"));
  // The quotient of the doubles is 1e15 - 1 and not a whole number: only exact numbers count right.
  EXPECT_EQ(999'999'999'999'999, CountOf("1/3", "999999999999998+1/3", "1"));
  EXPECT_EQ(999'999'999'999'998, CountOf("1/3", "999999999999998", "1"));
}

TEST(SweptValues, StepsThatLeadNowhereAreRefused)
{
  EXPECT_THROW(CountOf("0", "1", "0"), InputError);
  EXPECT_THROW(CountOf("0", "1", "-1"), InputError);
  EXPECT_THROW(CountOf("3", "3", "0"), InputError);
  EXPECT_THROW(CountOf("0", "1", "1e-16"), InputError);
  EXPECT_THROW(CountOf("0", "1/0", "1"), InputError);
  EXPECT_THROW(CountOf("0", "t", "1"), InputError);
}

TEST(SweptValues, TextsAreShortWhereTheyAreExact)
{
  const SweptValues values = SweptValues::List({"1/8", "1/3", "pi", "-2e3"}, 6);
  ASSERT_EQ(4, values.count);
  EXPECT_EQ("0.125", values.at(0).text);
  EXPECT_EQ("0.333333", values.at(1).text);
  EXPECT_EQ("3.14159", values.at(2).text);
  EXPECT_EQ("-2000", values.at(3).text);
  EXPECT_EQ("-2e3", values.at(3).expression);
}

}  // namespace varno::solve
