#include "solve/quick/number.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/number/real.h"

namespace varno::solve::quick {
namespace {

TEST(QuickNumber, LogarithmIsRightToATenth)
{
  for (Number x = 1e-90L; x < 1e90L; x *= 1.37L) {
    EXPECT_NEAR(Log2Roughly(x), static_cast<double>(std::log2(x)), 0.0861);
    EXPECT_EQ(Log2Roughly(x), Log2Roughly(-x));
  }
  EXPECT_EQ(Log2Roughly(8), 3);
  EXPECT_EQ(Log2Roughly(0), -std::numeric_limits<double>::infinity());
}

TEST(QuickNumber, PowersOfTenAreThoseOfMpfr)
{
  for (int exponent = -120; exponent <= 120; ++exponent) {
    Real power(128);
    mpfr_ui_pow_ui(power, 10, static_cast<unsigned long>(std::abs(exponent)), MPFR_RNDN);
    if (exponent < 0) mpfr_ui_div(power, 1, power, MPFR_RNDN);
    const Number expected = ToNumber(power);
    EXPECT_LE(std::fabs(PowerOfTen(exponent) - expected), 16 * kUnit * expected) << exponent;
    if (exponent >= 0 && exponent <= 27) {
      EXPECT_EQ(PowerOfTen(exponent), expected);
    }
  }
}

}  // namespace
}  // namespace varno::solve::quick
