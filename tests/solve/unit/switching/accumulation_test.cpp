#include "solve/switching/accumulation.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

Rational Power(const Rational& base, int exponent)
{
  Rational power = 1;
  for (int i = 0; i < exponent; ++i) power *= base;
  return power;
}

/// The limit that is found in times(0), times(1), ..., and after how many of them.
template <class Times>
std::pair<std::optional<Moment>, int> FindLimit(Times times, int most)
{
  RunSettings settings = SettingsFor(20, 12);
  settings.approachBits = 10;
  Accumulation accumulation(Moment(Rational(0)), Moment(Rational(5)), settings);
  for (int i = 0; i < most; ++i) {
    if (auto limit = accumulation.Add(Moment(times(i)))) return {limit->time, i};
  }
  return {std::nullopt, most};
}

// The times 3 (1 - q^n) end at 3, exactly.
TEST(Accumulation, FindsTheLimitOfAGeometricSequence)
{
  for (const Rational& q : {Rational(1, 2), Rational(9, 10), Rational(19, 20)}) {
    const auto [limit, count] =
        FindLimit([&](int n) -> Rational { return 3 * (1 - Power(q, n)); }, 10000);
    ASSERT_TRUE(limit) << q;
    EXPECT_LT(std::abs((*limit - Moment(Rational(3))).ToDouble()), 1e-28) << q;
  }
}

// Distances that alternate between 1 and 1/5, times 2^-n.
TEST(Accumulation, FindsTheLimitOfGroupsOfTwo)
{
  const auto times = [](int n) {
    Rational time = 0;
    for (int i = 0; i < n; ++i)
      time += Power(Rational(1, 2), i / 2) * (i % 2 == 0 ? 1 : Rational(1, 5));
    return time;
  };
  const auto [limit, count] = FindLimit(times, 500);
  ASSERT_TRUE(limit);
  EXPECT_LT(std::abs((*limit - Moment(Rational(12, 5))).ToDouble()), 1e-24);
}

// The zeros 1 - 1/n of sin(pi/(1 - t))
TEST(Accumulation, FindsTheLimitOfDistancesThatFallLikeSquares)
{
  const auto [limit, count] =
      FindLimit([](int n) -> Rational { return 1 - Rational(1, n + 1); }, 10000);
  ASSERT_TRUE(limit);
  EXPECT_EQ(limit->ToDouble(), 1);
  EXPECT_LT(count, 5000);
}

TEST(Accumulation, LeavesSwitchesThatGoOnAlone)
{
  EXPECT_FALSE(FindLimit([](int n) { return Rational(n + 1); }, 1000).first);
  // Close together, but not closer and closer.
  EXPECT_FALSE(
      FindLimit([](int n) -> Rational { return 1 + n * Power(Rational(1, 2), 60); }, 1000).first);
}

}  // namespace
}  // namespace varno::solve
