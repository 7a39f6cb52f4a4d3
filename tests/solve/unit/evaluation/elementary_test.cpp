#include "solve/evaluation/elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include <gtest/gtest.h>

#include "solve/number/real.h"
#include "tests/solve/support/comparison.h"

namespace varno::solve {
namespace {

using enum Operation;
using support::FromText;
using support::HasDigits;
using support::Log2;

constexpr mpfr_prec_t kBits = 200;
constexpr double kPiValue = std::numbers::pi;

Outcome Result(Operation operation, const char* a, const char* b, Real& result)
{
  return Apply(operation, result, FromText(a, kBits), FromText(b, kBits));
}

Real Value(Operation operation, const char* a, const char* b = "0")
{
  Real result(kBits);
  EXPECT_EQ(Outcome::kValue, Result(operation, a, b, result)) << a << " " << b;
  return result;
}

// Abramowitz & Stegun, Handbook of Mathematical Functions: values of tables in chapters 4 and 7,
// and exact ones
TEST(Elementary, KnownValues)
{
  const struct {
    Operation operation;
    const char *a, *b;
    double value;
  } known[] = {
      {kNegate, "3", "0", -3},
      {kAdd, "3", "4", 7},
      {kSubtract, "3", "4", -1},
      {kMultiply, "3", "4", 12},
      {kDivide, "3", "4", 0.75},
      {kPower, "2", "-3", 0.125},
      {kPower, "-2", "3", -8},
      {kPower, "0", "0", 1},
      {kSqrt, "9/4", "0", 1.5},
      {kCbrt, "-27", "0", -3},
      {kExp, "0", "0", 1},
      {kExp, "1", "0", 2.718281828459045},
      {kLn, "10", "0", 2.302585092994046},
      {kSin, "1", "0", 0.8414709848078965},
      {kCos, "1", "0", 0.5403023058681398},
      {kTan, "1", "0", 1.5574077246549022},
      {kCot, "1", "0", 0.6420926159343308},
      {kAsin, "1/2", "0", kPiValue / 6},
      {kAcos, "1/2", "0", kPiValue / 3},
      {kAtan, "1", "0", kPiValue / 4},
      {kAcot, "1", "0", kPiValue / 4},
      {kAcot, "-1", "0", -kPiValue / 4},
      {kAcot, "0", "0", kPiValue / 2},
      {kSinh, "1", "0", 1.1752011936438014},
      {kCosh, "1", "0", 1.5430806348152437},
      {kTanh, "1", "0", 0.7615941559557649},
      {kCoth, "1", "0", 1.3130352854993312},
      {kAsinh, "1", "0", 0.881373587019543},
      {kAcosh, "2", "0", 1.3169578969248166},
      {kAtanh, "1/2", "0", 0.5493061443340549},
      {kAcoth, "2", "0", 0.5493061443340549},
      {kErf, "1", "0", 0.8427007929497149},
      {kAtan2, "1", "-1", 3 * kPiValue / 4},
      {kAtan2, "-1", "-1", -3 * kPiValue / 4},
      {kAtan2, "0", "-1", kPiValue},
  };
  for (const auto& entry : known) {
    EXPECT_NEAR(entry.value, Value(entry.operation, entry.a, entry.b).ToDouble(),
                4e-16 * std::max(1.0, std::abs(entry.value)))
        << static_cast<int>(entry.operation) << " of " << entry.a << ", " << entry.b;
  }
}

// acot and acoth are composed of several operations: they must not lose digits at either end.
TEST(Elementary, InverseCotangentsKeepTheirDigits)
{
  const Real tiny = FromText("1e-50", kBits), large = FromText("1e50", kBits);
  EXPECT_TRUE(HasDigits(58, Value(kAcot, "1e50"), tiny));  // acot x = 1/x - 1/(3 x^3) + ...
  EXPECT_TRUE(HasDigits(58, Value(kAcoth, "1e50"), tiny));
  EXPECT_TRUE(HasDigits(58, Value(kAcoth, "-1e50"), Value(kNegate, "1e-50")));
  // acoth(1 + d) = ln(2/d + 1)/2
  const Real near =
      FromText("1.00000000000000000000000000000095367431640625", kBits);  // 1 + 2^-20 1e-24
  Real expected(400), difference(400);
  mpfr_sub_ui(difference, near, 1, MPFR_RNDN);
  mpfr_ui_div(expected, 2, difference, MPFR_RNDN);
  mpfr_log1p(expected, expected, MPFR_RNDN);
  mpfr_div_2ui(expected, expected, 1, MPFR_RNDN);
  Real actual(kBits);
  ASSERT_EQ(Outcome::kValue, Apply(kAcoth, actual, near, near));
  EXPECT_TRUE(HasDigits(56, actual, expected));
}

TEST(Elementary, TellsWhatIsUndefined)
{
  const struct {
    Operation operation;
    const char *a, *b;
  } undefined[] = {
      {kDivide, "1", "0"}, {kDivide, "0", "0"},   {kSqrt, "-1", "0"},  {kLn, "0", "0"},
      {kLn, "-1", "0"},    {kPower, "-8", "1/3"}, {kPower, "0", "-1"}, {kAsin, "2", "0"},
      {kAcos, "-2", "0"},  {kAcosh, "1/2", "0"},  {kAtanh, "1", "0"},  {kAtanh, "-1", "0"},
      {kAtanh, "2", "0"},  {kAcoth, "1", "0"},    {kAcoth, "0", "0"},  {kAcoth, "1/2", "0"},
      {kCot, "0", "0"},    {kCoth, "0", "0"},     {kAtan2, "0", "0"},
  };
  for (const auto& entry : undefined) {
    Real result(kBits);
    EXPECT_EQ(Outcome::kUndefined, Result(entry.operation, entry.a, entry.b, result))
        << static_cast<int>(entry.operation) << " of " << entry.a << ", " << entry.b;
  }
}

TEST(Elementary, TellsOverflow)
{
  Real result(kBits);
  EXPECT_EQ(Outcome::kOutOfRange, Result(kExp, "1e30", "0", result));
  EXPECT_EQ(Outcome::kOutOfRange, Result(kSinh, "-1e30", "0", result));
  EXPECT_EQ(Outcome::kOutOfRange, Result(kPower, "1e30", "1e30", result));
  // An overflow long ago is no excuse.
  EXPECT_EQ(Outcome::kUndefined, Result(kLn, "0", "0", result));
}

// atan2(0, -1) and atan2(-0, -1) differ for MPFR.
TEST(Elementary, ZerosHaveNoSign)
{
  Real result(kBits);
  ASSERT_EQ(Outcome::kValue, Result(kMultiply, "0", "-1", result));
  EXPECT_EQ(0, mpfr_signbit(static_cast<mpfr_srcptr>(result)));
  ASSERT_EQ(Outcome::kValue, Apply(kAtan2, result, result, FromText("-1", kBits)));
  EXPECT_GT(result.ToDouble(), 3);
}

// Against one of them at a time: each is rounded to nearest, however it is computed.
TEST(Elementary, PairsAreTheSameAsEachByItself)
{
  for (const mpfr_prec_t bits : {64, 108, 123, 200, 900}) {
    for (const char* argument : {"0", "1", "-2", "1e-40", "22/7", "-355/113", "700"}) {
      for (const auto& [sine, cosine] : {std::pair{kSin, kCos}, std::pair{kSinh, kCosh}}) {
        const Real a = FromText(argument, bits);
        Real first(bits), second(bits), sineAlone(bits), cosineAlone(bits);
        ASSERT_EQ(Outcome::kValue, ApplyPair(sine, first, second, a));
        ASSERT_EQ(Outcome::kValue, Apply(sine, sineAlone, a, a));
        ASSERT_EQ(Outcome::kValue, Apply(cosine, cosineAlone, a, a));
        EXPECT_NE(0, mpfr_equal_p(first, sineAlone)) << bits << " bits: sine of " << argument;
        EXPECT_NE(0, mpfr_equal_p(second, cosineAlone)) << bits << " bits: cosine of " << argument;
      }
    }
  }
}

TEST(Elementary, PairsTellWhatTheyCannotHold)
{
  Real sine(kBits), cosine(kBits);
  EXPECT_EQ(Outcome::kOutOfRange, ApplyPair(kSinh, sine, cosine, FromText("-1e30", kBits)));
  EXPECT_EQ(Outcome::kOutOfRange, ApplyPair(kSin, sine, cosine, FromText("1e400000", kBits)));
  EXPECT_EQ(Outcome::kValue, ApplyPair(kSin, sine, cosine, FromText("1e300", kBits)));
}

TEST(Elementary, ResultMayBeAnOperand)
{
  for (const Operation operation : {kAcot, kAcoth, kPower, kDivide, kAtan2}) {
    Real a = FromText("7/3", kBits), b = FromText("5/3", kBits), separate(kBits);
    ASSERT_EQ(Outcome::kValue, Apply(operation, separate, a, b));
    ASSERT_EQ(Outcome::kValue, Apply(operation, a, a, b));
    EXPECT_NE(0, mpfr_equal_p(separate, a)) << static_cast<int>(operation);
  }
}

}  // namespace
}  // namespace varno::solve
