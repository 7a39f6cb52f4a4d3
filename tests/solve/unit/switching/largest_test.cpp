#include "solve/switching/largest.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr double kError = 1e-9;

TEST(LargestMagnitude, LiesAtAnEndOrBetween)
{
  EXPECT_NEAR(LargestMagnitude({1, -2}, 0, 2), 3, kError);
  EXPECT_NEAR(LargestMagnitude({0, 1, -1}, 0, 1), 0.25, kError);
  EXPECT_NEAR(LargestMagnitude({0, 1, -1}, 0.75, 1), 0.1875, kError);
  EXPECT_NEAR(LargestMagnitude({0, 1, -1}, 0, 3), 6, kError);
}

// The Chebyshev polynomial T5(2x - 1) has the magnitude 1 in six places of [0, 1].
TEST(LargestMagnitude, IsOneOfAChebyshevPolynomial)
{
  EXPECT_NEAR(LargestMagnitude({-1, 50, -400, 1120, -1280, 512}, 0, 1), 1, kError);
}

// The terms of sin(x) up to x = 3, which is largest at pi/2.
TEST(LargestMagnitude, IsOneOfASine)
{
  std::vector<double> terms;
  double factorial = 1;
  for (int k = 0; k < 40; ++k) {
    if (k > 0) factorial *= k;
    terms.push_back(k % 2 == 0 ? 0 : (k % 4 == 1 ? 1 : -1) / factorial);
  }
  EXPECT_NEAR(LargestMagnitude(terms, 0, 3), 1, kError);
  EXPECT_NEAR(LargestMagnitude(terms, 0, 1), std::sin(1), kError);
}

TEST(LargestMagnitude, IsZeroOfNothing)
{
  EXPECT_EQ(LargestMagnitude({}, 0, 1), 0);
  EXPECT_EQ(LargestMagnitude({0, 0}, 0, 1), 0);
}

}  // namespace
}  // namespace varno::solve
