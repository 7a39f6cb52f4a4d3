#include "solve/integration/slow_approach.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

struct Found {
  std::optional<SlowApproach::Limit> limit;
  int count;  // of times until it was found
};

/// Adds times(1), times(2), ... on the way from 0 to `reach`.
Found FindLimit(const Rational& reach, const std::function<Rational(int)>& times,
                int most = 100'000)
{
  SlowApproach approach(Moment(), Moment(reach), 10);
  for (int n = 1; n <= most; ++n) {
    if (auto limit = approach.Add(Moment(times(n)))) return {limit, n};
  }
  return {std::nullopt, most};
}

Rational Near(double time)
{
  return Rational(time);
}

// Steps as long as 0.1 d^2 lead to 2 - 1/(0.1 n + 1/2).
TEST(SlowApproach, FindsWhereStepsShrinkLikeTheSquareOfTheDistance)
{
  const auto [limit, count] = FindLimit(
      3, [](int n) -> Rational { return Rational(2) - 1 / (Rational(n, 10) + Rational(1, 2)); });
  ASSERT_TRUE(limit);
  EXPECT_EQ(limit->time.ToDouble(), 2);
  EXPECT_GT(limit->log2Error, -30);
  EXPECT_LT(count, 20'000);
}

// d^q with q = 3/2, 3, 5, towards sqrt(2), backwards
TEST(SlowApproach, FindsItForOtherPowers)
{
  for (const double q : {1.5, 2.0, 2.5}) {
    const double place = -std::sqrt(2);
    const auto [limit, count] = FindLimit(
        -2, [=](int n) { return Near(place + std::pow(1 + 10 * n, -1 / (q - 1))); }, 1 << 22);
    ASSERT_TRUE(limit) << q;
    EXPECT_LT(std::abs(limit->time.ToDouble() - place), std::exp2(limit->log2Error)) << q;
    EXPECT_LT(limit->log2Error, -9) << q;
  }
}

TEST(SlowApproach, LeavesALimitBeyondTheWay)
{
  const auto times = [](int n) -> Rational {
    return Rational(2) - 1 / (Rational(n, 10) + Rational(1, 2));
  };
  EXPECT_FALSE(FindLimit(Rational(1999, 1000), times).limit);
  EXPECT_TRUE(FindLimit(2, times).limit);
}

// Before a pole, by a tenth of the distance each; evenly; ever shorter to no limit; longer.
TEST(SlowApproach, LeavesStepsThatGetSomewhere)
{
  EXPECT_FALSE(FindLimit(
                   1, [](int n) -> Rational { return Near(1 - std::pow(0.9, n)); }, 300)
                   .limit);
  EXPECT_FALSE(FindLimit(10, [](int n) -> Rational { return Rational(n, 1000); }).limit);
  EXPECT_FALSE(FindLimit(100, [](int n) -> Rational { return Near(std::log(n)); }).limit);
  EXPECT_FALSE(FindLimit(100, [](int n) -> Rational { return Near(std::sqrt(n)); }).limit);
  EXPECT_FALSE(
      FindLimit(1e9, [](int n) -> Rational { return Rational(n * static_cast<long>(n)); }).limit);
}

// They shrink like the square of the distance from 1, but only as far as 1 - 1/50.
TEST(SlowApproach, LeavesStepsThatShrinkForAWhile)
{
  const auto [limit, count] = FindLimit(3, [](int n) -> Rational {
    if (n < 500) return 1 - Rational(10, n + 9);
    return Rational(49, 50) + Rational(n, 10'000);
  });
  EXPECT_FALSE(limit);
}

}  // namespace
}  // namespace varno::solve
