#include "solve/quick/step_bound.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve::quick {
namespace {

constexpr int kOrder = 20;
constexpr double kTolerance = 60;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<Number> Terms(double (*term)(int))
{
  std::vector<Number> terms;
  for (int k = 0; k <= kOrder; ++k) terms.push_back(term(k));
  return terms;
}

// Of 1/(1 - 2 t) the radius is 1/2; the tolerance takes 2^-3 of it at order 20.
TEST(QuickStepBound, IsThePartOfTheRadiusThatTheToleranceAsksFor)
{
  double bound = kInfinity;
  const auto terms = Terms([](int k) { return std::ldexp(1, k); });
  EXPECT_TRUE(StepBound(kOrder, kTolerance).Lower(bound, terms));
  EXPECT_NEAR(bound, -1 - kTolerance / kOrder, 0.1);
}

// 1/(1 - t^3): two of three orders are missing.
TEST(QuickStepBound, OrdersMayBeMissing)
{
  double bound = kInfinity;
  const auto terms = Terms([](int k) { return k % 3 == 0 ? 1.0 : 0.0; });
  EXPECT_TRUE(StepBound(kOrder, kTolerance).Lower(bound, terms));
  EXPECT_NEAR(bound, -kTolerance / kOrder, 0.2);
}

// The last two terms say that there is no end, those before that there is.
TEST(QuickStepBound, LooksAtMoreThanTheLastTerms)
{
  double bound = kInfinity;
  auto terms = Terms([](int) { return 1.0; });
  terms[kOrder] = terms[kOrder - 1] = 1e-30L;
  EXPECT_TRUE(StepBound(kOrder, kTolerance).Lower(bound, terms));
  EXPECT_NEAR(bound, -kTolerance / kOrder, 0.2);
}

TEST(QuickStepBound, OnlyLowers)
{
  double bound = -10;
  const auto terms = Terms([](int) { return 1.0; });
  EXPECT_TRUE(StepBound(kOrder, kTolerance).Lower(bound, terms));
  EXPECT_EQ(bound, -10);
}

TEST(QuickStepBound, TooFewTermsSayNothing)
{
  double bound = kInfinity;
  const StepBound rule(kOrder, kTolerance);
  EXPECT_FALSE(rule.Lower(bound, Terms([](int k) { return k < 5 ? 1.0 : 0.0; })));
  EXPECT_FALSE(rule.Lower(bound, Terms([](int k) { return k % 7 == 0 ? 1.0 : 0.0; })));
  EXPECT_FALSE(rule.Lower(bound, Terms([](int) { return 0.0; })));
}

}  // namespace
}  // namespace varno::solve::quick
