#include "solve/number/moment.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/solve/support/comparison.h"

namespace varno::solve {
namespace {

std::shared_ptr<const Constant> Pi()
{
  return std::make_shared<const Constant>(
      [](mpfr_ptr result) { mpfr_const_pi(result, MPFR_RNDN); });
}

TEST(Moment, TenTenthsAreOne)
{
  Moment sum;
  for (int i = 0; i < 10; ++i) sum += Moment(Rational(1, 10));
  EXPECT_TRUE(sum == Moment(Rational(1)));
  EXPECT_EQ(1, sum.RationalPart());
  EXPECT_EQ(0, (sum - Moment(Rational(1))).Sign());
}

// Fractions with powers of 2 below them are added apart from others.
TEST(Moment, SumsOfAllFractionsAreExact)
{
  const std::vector<Rational> fractions = {Rational(0),       Rational(1),      Rational(-7),
                                           Rational(3, 8),    Rational(-3, 8),  Rational(5, 8),
                                           Rational(-1, 512), Rational(9, 512), Rational(1, 3),
                                           Rational(-2, 3),   Rational(5, 24)};
  for (const Rational& a : fractions) {
    for (const Rational& b : fractions) {
      EXPECT_EQ(Rational(a + b), (Moment(a) + Moment(b)).RationalPart()) << a << " + " << b;
      EXPECT_EQ(Rational(a - b), (Moment(a) - Moment(b)).RationalPart()) << a << " - " << b;
    }
    Moment twice(a), none(a);
    twice += twice;
    const Moment& itself = none;
    none -= itself;
    EXPECT_EQ(Rational(2 * a), twice.RationalPart());
    EXPECT_EQ(Rational(0), none.RationalPart());
  }
}

// Fractions of words are added, multiplied and compared apart from others.
TEST(Moment, AreExactAtTheEndOfWords)
{
  std::vector<Rational> fractions;
  for (const char* n : {"0", "1", "4611686018427387904", "4611686018427387905",
                        "9223372036854775807", "9223372036854775808", "9223372036854775809"}) {
    for (const char* d : {"1", "2", "3", "10", "4611686018427387904", "9223372036854775807",
                          "9223372036854775808"}) {
      Rational fraction{Integer(n), Integer(d)};
      fraction.canonicalize();
      fractions.push_back(fraction);
      fractions.push_back(-fraction);
    }
  }
  for (const Rational& a : fractions) {
    for (const Rational& b : fractions) {
      EXPECT_EQ(Rational(a + b), (Moment(a) + Moment(b)).RationalPart()) << a << " + " << b;
      EXPECT_EQ(Rational(a - b), (Moment(a) - Moment(b)).RationalPart()) << a << " - " << b;
      EXPECT_EQ(Rational(a * b), (Moment(a) * b).RationalPart()) << a << " * " << b;
      EXPECT_EQ(a < b, Moment(a) < Moment(b)) << a << " < " << b;
      EXPECT_EQ(a == b, Moment(a) == Moment(b)) << a << " == " << b;
    }
  }
}

TEST(Moment, OrdersExactly)
{
  const Moment third(Rational(1, 3)),
      almost(Rational("333333333333333333333333333333/1000000000000000000000000000000"));
  EXPECT_TRUE(almost < third);
  EXPECT_TRUE(third > almost);
  EXPECT_TRUE(third >= third);
}

TEST(Moment, MultiplesOfConstantsCancelExactly)
{
  const auto pi = Pi();
  const Moment ten = Moment(pi) * Rational(10);
  const Moment difference = ten - Moment(pi) * Rational(3) - Moment(pi) * Rational(7);
  EXPECT_TRUE(difference.IsRational());
  EXPECT_EQ(0, difference.Sign());
  EXPECT_FALSE(ten.IsRational());
  EXPECT_TRUE((ten * Rational(0)).IsRational());
}

// 355/113 is larger than pi by 2.7e-7.
TEST(Moment, SignSeesThroughCancellation)
{
  const Moment pi(Pi());
  EXPECT_EQ(1, (Moment(Rational(355, 113)) - pi).Sign());
  EXPECT_EQ(-1, (pi - Moment(Rational(355, 113))).Sign());
  EXPECT_TRUE(Moment(Rational(3)) < pi);
}

TEST(Moment, EvaluatesToItsLastBitHoweverMuchCancels)
{
  // pi - (pi rounded to 300 bits), in 64 bits, against 1000 bits
  Real rounded(300), exact(1000), expected(64), actual(64);
  mpfr_const_pi(rounded, MPFR_RNDN);
  mpfr_const_pi(exact, MPFR_RNDN);
  mpfr_sub(expected, exact, rounded, MPFR_RNDN);
  Rational fraction;
  mpfr_get_q(fraction.get_mpq_t(), rounded);
  (Moment(Pi()) - Moment(fraction)).Evaluate(actual);
  EXPECT_TRUE(support::IsWithin(support::Log2(expected) - 63, actual, expected));
}

// Two constants that are equal without being the same: nothing tells their difference from 0.
TEST(Moment, WhatNoPrecisionTellsFromZeroIsZero)
{
  const Moment difference = Moment(Pi()) - Moment(Pi());
  EXPECT_EQ(0, difference.Sign());
  Real value(64);
  difference.Evaluate(value);
  EXPECT_TRUE(value.IsZero());
}

// Two ways: by the quotient of integers, and by that of MPFR.
TEST(Moment, RoundsQuotientsAsMpfr)
{
  const std::vector<const char*> integers = {
      "1", "2", "3", "7", "10", "255", "1000003", "340282366920938463463374607431768211457"};
  for (const char* n : integers) {
    for (const char* d : integers) {
      for (const int sign : {1, -1}) {
        Rational fraction(Integer(n) * sign, Integer(d));
        fraction.canonicalize();
        for (const mpfr_prec_t bits : {1, 2, 3, 53, 64, 65, 118, 300}) {
          Real result(bits), expected(bits);
          Moment(fraction).Evaluate(result);
          mpfr_set_q(expected, fraction.get_mpq_t(), MPFR_RNDN);
          EXPECT_TRUE(mpfr_equal_p(result, expected)) << fraction << " to " << bits;
        }
      }
    }
  }
}

TEST(Moment, RoundsFractionsToNearest)
{
  Real value(2);
  Moment(Rational(5, 4)).Evaluate(value);  // halfway between 1 and 3/2: to the even one
  EXPECT_EQ(0, mpfr_cmp_ui(value, 1));
  EXPECT_EQ(0.1, Moment(Rational(1, 10)).ToDouble());
}

}  // namespace
}  // namespace varno::solve
