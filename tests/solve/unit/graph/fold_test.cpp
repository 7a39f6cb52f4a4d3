#include "solve/graph/fold.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

Rational PowerOfTwo(unsigned long exponent)
{
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 2, exponent);
  return power;
}

TEST(FoldExactly, Arithmetic)
{
  const Rational a(3, 4), b(-5, 6);
  EXPECT_EQ(FoldExactly(Operation::kAdd, a, b), Rational(-1, 12));
  EXPECT_EQ(FoldExactly(Operation::kSubtract, a, b), Rational(19, 12));
  EXPECT_EQ(FoldExactly(Operation::kMultiply, a, b), Rational(-5, 8));
  EXPECT_EQ(FoldExactly(Operation::kDivide, a, b), Rational(-9, 10));
  EXPECT_EQ(FoldExactly(Operation::kNegate, a), Rational(-3, 4));
}

TEST(FoldExactly, IntegerPowers)
{
  EXPECT_EQ(FoldExactly(Operation::kPower, Rational(-2, 3), 3), Rational(-8, 27));
  EXPECT_EQ(FoldExactly(Operation::kPower, Rational(-2, 3), -3), Rational(-27, 8));
  EXPECT_EQ(FoldExactly(Operation::kPower, 0, 0), Rational(1));
  EXPECT_EQ(FoldExactly(Operation::kPower, 0, 5), Rational(0));
  EXPECT_EQ(FoldExactly(Operation::kPower, 0, -5), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kPower, 4, Rational(1, 2)), std::nullopt);
}

TEST(FoldExactly, HugeExponentsCostNothing)
{
  const Rational huge = PowerOfTwo(1000);
  EXPECT_EQ(FoldExactly(Operation::kPower, 2, huge), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kPower, Rational(1, 2), -huge), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kPower, 1, huge), Rational(1));
  EXPECT_EQ(FoldExactly(Operation::kPower, -1, huge), Rational(1));
  EXPECT_EQ(FoldExactly(Operation::kPower, -1, huge + 1), Rational(-1));
  EXPECT_EQ(FoldExactly(Operation::kPower, -1, -huge - 1), Rational(-1));
  EXPECT_EQ(FoldExactly(Operation::kPower, 0, huge), Rational(0));
}

TEST(FoldExactly, ResultsStaySmall)
{
  EXPECT_EQ(FoldExactly(Operation::kPower, 2, 4095), PowerOfTwo(4095));
  EXPECT_EQ(FoldExactly(Operation::kPower, 2, 4096), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kMultiply, PowerOfTwo(4000), PowerOfTwo(95)), PowerOfTwo(4095));
  EXPECT_EQ(FoldExactly(Operation::kMultiply, PowerOfTwo(4000), PowerOfTwo(96)), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kDivide, 1, PowerOfTwo(4096)), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kAdd, PowerOfTwo(5000), 1), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kNegate, PowerOfTwo(5000)), Rational(-PowerOfTwo(5000)));
}

TEST(FoldExactly, KinksAndJumps)
{
  const Rational a(-7, 2), b(7, 2);
  EXPECT_EQ(FoldExactly(Operation::kAbs, a), b);
  EXPECT_EQ(FoldExactly(Operation::kSign, a), Rational(-1));
  EXPECT_EQ(FoldExactly(Operation::kSign, 0), Rational(0));
  EXPECT_EQ(FoldExactly(Operation::kFloor, a), Rational(-4));
  EXPECT_EQ(FoldExactly(Operation::kCeil, a), Rational(-3));
  EXPECT_EQ(FoldExactly(Operation::kTrunc, a), Rational(-3));
  EXPECT_EQ(FoldExactly(Operation::kFloor, b), Rational(3));
  EXPECT_EQ(FoldExactly(Operation::kCeil, b), Rational(4));
  EXPECT_EQ(FoldExactly(Operation::kTrunc, b), Rational(3));
  EXPECT_EQ(FoldExactly(Operation::kMin, a, b), a);
  EXPECT_EQ(FoldExactly(Operation::kMax, a, b), b);
  for (const Operation function : {Operation::kFloor, Operation::kCeil, Operation::kTrunc})
    EXPECT_EQ(FoldExactly(function, Rational(-13)), Rational(-13));
}

TEST(FoldExactly, Conditions)
{
  const Rational third(1, 3), half(1, 2);
  EXPECT_EQ(FoldExactly(Operation::kLess, third, half), Rational(1));
  EXPECT_EQ(FoldExactly(Operation::kLess, half, half), Rational(0));
  EXPECT_EQ(FoldExactly(Operation::kLessOrEqual, half, half), Rational(1));
  EXPECT_EQ(FoldExactly(Operation::kLessOrEqual, half, third), Rational(0));
  EXPECT_EQ(FoldExactly(Operation::kNot, 0), Rational(1));
  EXPECT_EQ(FoldExactly(Operation::kNot, 1), Rational(0));
  for (const int a : {0, 1}) {
    for (const int b : {0, 1}) {
      EXPECT_EQ(FoldExactly(Operation::kAnd, a, b), Rational(a * b));
      EXPECT_EQ(FoldExactly(Operation::kOr, a, b), Rational(a + b - a * b));
    }
  }
}

TEST(FoldExactly, NoValueNoResult)
{
  EXPECT_EQ(FoldExactly(Operation::kDivide, 1, 0), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kSqrt, 4), std::nullopt);
  EXPECT_EQ(FoldExactly(Operation::kAtan2, 1, 1), std::nullopt);
}

}  // namespace
}  // namespace varno::solve
