// The fast logarithm against that of the standard library.

#include "solve/fixed/log2.h"

#include <cfloat>
#include <cmath>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(FastLog2, IsRightToEightDigits)
{
  // Over several octaves in small steps, the ends of the range of m among them
  for (double x = 0.3; x < 9; x *= 1.0007) EXPECT_NEAR(std::log2(x), FastLog2(x), 1e-8) << x;
  for (const double x : {std::sqrt(0.5), std::sqrt(2.0), std::nextafter(std::sqrt(2.0), 0.0)})
    EXPECT_NEAR(std::log2(x), FastLog2(x), 1e-8) << x;
}

TEST(FastLog2, IsExactForPowersOfTwo)
{
  for (int e = -1022; e < 1024; ++e) EXPECT_EQ(e, FastLog2(std::ldexp(1.0, e)));
}

TEST(FastLog2, TakesTheLargestAndTheLeastNormalNumber)
{
  EXPECT_NEAR(1024, FastLog2(DBL_MAX), 1e-8);
  EXPECT_NEAR(-1022, FastLog2(DBL_MIN), 1e-8);
}

}  // namespace
}  // namespace varno::solve
