#include "solve/evaluation/size.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/evaluation/elementary.h"
#include "solve/number/real.h"

namespace varno::solve {
namespace {

constexpr double kNothing = -std::numeric_limits<double>::infinity();

Real Number(double value)
{
  Real number(200);
  mpfr_set_d(number, value, MPFR_RNDN);
  return number;
}

/// log2 of the size of an operation on operands of these sizes.
double Size(Operation operation, double a, double sizeOfA, double b = 1, double sizeOfB = 0)
{
  const Real x = Number(a), y = Number(b);
  Real result(200);
  Apply(operation, result, x, y);
  return SizeOfResult(operation, result, {x, sizeOfA}, {y, sizeOfB});
}

TEST(Log2Size, OfNumbersZeroAndNone)
{
  EXPECT_DOUBLE_EQ(Log2Size(Number(-8)), 3);
  EXPECT_NEAR(Log2Size(Number(10)), std::log2(10), 1e-12);
  EXPECT_EQ(Log2Size(Number(0)), kNothing);
  EXPECT_EQ(Log2Size(Number(NAN)), INFINITY);
  Real huge(20);
  mpfr_set_ui_2exp(huge, 3, 1'000'000'000, MPFR_RNDN);
  EXPECT_DOUBLE_EQ(Log2Size(huge), 1'000'000'000 + std::log2(3));
}

TEST(SizeOfResult, ASumHasTheLargerOne)
{
  EXPECT_EQ(Size(Operation::kSubtract, 1, 0, 1, 0), 0);  // 1 - 1
  EXPECT_EQ(Size(Operation::kAdd, 1, 0, -1, 50), 50);
}

TEST(SizeOfResult, AProductHasTheLargerEffect)
{
  EXPECT_EQ(Size(Operation::kMultiply, 2, 10, 4, 2), 12);
  EXPECT_EQ(Size(Operation::kMultiply, 2, 1, 4, 20), 21);
  // 0 that is exact times anything is exact.
  EXPECT_EQ(Size(Operation::kMultiply, 0, kNothing, 4, 20), kNothing);
}

TEST(SizeOfResult, AQuotientFeelsTheSmallDivisor)
{
  EXPECT_EQ(Size(Operation::kDivide, 1, 0, 0.25, -2), 2);
  EXPECT_EQ(Size(Operation::kDivide, 1, 0, 0.25, 0), 4);  // 1/b^2 db
}

TEST(SizeOfResult, NeverBelowTheResult)
{
  EXPECT_NEAR(Size(Operation::kExp, 10, -100), 10 * std::log2(std::exp(1)), 1e-9);
  EXPECT_NEAR(Size(Operation::kCos, 0, kNothing), 0, 1e-12);
}

/// Each function beside the derivative that moves its result: f'(x) d by f(x + d) - f(x).
TEST(SizeOfResult, OfFunctionsByTheirDerivatives)
{
  struct Sample {
    Operation function;
    double x;
  };
  const Sample samples[] = {
      {Operation::kSqrt, 0.3},  {Operation::kCbrt, -0.3}, {Operation::kExp, 0.7},
      {Operation::kLn, 0.7},    {Operation::kSin, 0.7},   {Operation::kCos, 0.7},
      {Operation::kTan, 0.7},   {Operation::kCot, 0.7},   {Operation::kAsin, 0.7},
      {Operation::kAcos, 0.7},  {Operation::kAtan, 0.7},  {Operation::kAcot, 0.7},
      {Operation::kTanh, 0.7},  {Operation::kCoth, 0.7},  {Operation::kAsinh, 0.7},
      {Operation::kAcosh, 1.7}, {Operation::kAtanh, 0.7}, {Operation::kAcoth, 1.7},
      {Operation::kErf, 0.7}};
  for (const auto& [function, x] : samples) {
    const Real a = Number(x), b = Number(x + std::exp2(-40));
    Real atA(200), atB(200);
    Apply(function, atA, a, a);
    Apply(function, atB, b, b);
    mpfr_sub(atB, atB, atA, MPFR_RNDN);
    // An operand 2^60 times larger than it should be makes the derivative decide.
    EXPECT_NEAR(SizeOfResult(function, atA, {a, 60}, {a, 60}), Log2Size(atB) + 40 + 60, 0.02)
        << static_cast<int>(function);
  }
}

TEST(SizeOfResult, SinhAndCoshByABound)
{
  // |cosh| and |sinh| by the larger of the result and 1: within a factor of 2 for x > 1.
  EXPECT_NEAR(Size(Operation::kSinh, 3, 60), 60 + std::log2(std::cosh(3)), 1);
  EXPECT_NEAR(Size(Operation::kCosh, 3, 60), 60 + std::log2(std::sinh(3)), 1);
}

TEST(SizeOfResult, OfPowersAndAngles)
{
  // x^y: y x^(y-1) dx, ln(x) x^y dy
  EXPECT_NEAR(Size(Operation::kPower, 4, 60, 3, kNothing), 60 + std::log2(48.0), 1e-9);
  EXPECT_NEAR(Size(Operation::kPower, 4, kNothing, 3, 60), 60 + std::log2(64 * std::log(4)), 1e-9);
  EXPECT_NEAR(Size(Operation::kAtan2, 3, 60, 4, 0), 60 - 2, 1e-9);
}

}  // namespace
}  // namespace varno::solve
