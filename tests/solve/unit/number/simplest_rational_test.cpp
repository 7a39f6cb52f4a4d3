#include "solve/number/simplest_rational.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(SimplestBetween, FindsTheSmallestDenominator)
{
  EXPECT_EQ(SimplestBetween(Rational(33, 100), Rational(34, 100)), Rational(1, 3));
  EXPECT_EQ(SimplestBetween(Rational(-34, 100), Rational(-33, 100)), Rational(-1, 3));
  // The convergents of pi: 355/113 is nearer than any simpler fraction.
  EXPECT_EQ(SimplestBetween(Rational("31415926/10000000"), Rational("31415930/10000000")),
            Rational(355, 113));
}

TEST(SimplestBetween, TakesWholeNumbersAndEnds)
{
  EXPECT_EQ(SimplestBetween(Rational(-1, 2), Rational(1, 3)), 0);
  EXPECT_EQ(SimplestBetween(Rational(5, 2), Rational(9, 2)), 3);
  EXPECT_EQ(SimplestBetween(Rational(2), Rational(9, 2)), 2);
  EXPECT_EQ(SimplestBetween(Rational(5, 7), Rational(5, 7)), Rational(5, 7));
}

// All fractions with a smaller denominator lie outside.
TEST(SimplestBetween, AgreesWithASearch)
{
  for (int a = 1; a < 60; ++a) {
    const Rational low(a, 61), high = low + Rational(1, 100);
    int denominator = 1;
    for (;; ++denominator) {
      Integer numerator;
      const Rational scaled = low * denominator;
      mpz_cdiv_q(numerator.get_mpz_t(), scaled.get_num_mpz_t(), scaled.get_den_mpz_t());
      if (numerator <= high * denominator) break;
    }
    EXPECT_EQ(SimplestBetween(low, high).get_den(), denominator) << low;
  }
}

}  // namespace
}  // namespace varno::solve
