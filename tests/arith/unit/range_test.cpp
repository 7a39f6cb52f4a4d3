#include "arith/range.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "arith/decimal_text.h"
#include "arith/wide_integer.h"
#include "tests/support/scoped_precision.h"

namespace arith {

using namespace support;
namespace {

/// 1 moved to an exponent in limbs.
Mpf OneAt(mp_exp_t limbs)
{
  Mpf x(1.0);
  static_cast<mpf_t&>(x)->_mp_exp = limbs;
  return x;
}

/// What GMP writes: the digits, then the exponent of 0.DIGITS.
std::string TextByGmp(const Mpf& x)
{
  mp_exp_t exponent = 0;
  char digits[200];
  mpf_get_str(digits, &exponent, 10, 18, x);
  return digits + (" " + std::to_string(exponent));
}

TEST(RangeTest, NumbersUpToTheLimitsAreInRange)
{
  for (const mp_exp_t limbs : {mp_exp_t{0}, mp_exp_t{1}, kLargestLimbExponent}) {
    EXPECT_TRUE(IsInRange(OneAt(limbs))) << limbs;
    EXPECT_TRUE(IsInRange(OneAt(-limbs))) << limbs;
  }
  EXPECT_TRUE(IsInRange(Mpf(0.0)));
}

TEST(RangeTest, NumbersBeyondTheLimitsAreOutOfRange)
{
  for (const mp_exp_t limbs : {kLargestLimbExponent + 1, 32 * kLargestLimbExponent}) {
    EXPECT_FALSE(IsInRange(OneAt(limbs)));
    EXPECT_FALSE(IsInRange(OneAt(-limbs)));
  }
}

/// The exponents are those of the texts by hand.
TEST(RangeTest, TextOfNumbersAtTheLimitsIsThatOfGmp)
{
  for (const int precisionBits : {64, 80, 256, 4096}) {
    const ScopedPrecision precision(static_cast<mp_bitcnt_t>(precisionBits));
    for (const std::string digits : {"12345678901234567", "-98765432109876543"}) {
      Mpf x;
      ASSERT_EQ(SetFromDecimal(x, (digits + "e5552999999999999983").c_str()), DecimalText::kNumber);
      EXPECT_EQ(TextByGmp(x), digits + " 5553000000000000000");
      ASSERT_EQ(SetFromDecimal(x, (digits + "e-5553000000000000000").c_str()),
                DecimalText::kNumber);
      EXPECT_EQ(TextByGmp(x), digits + " -5552999999999999983");
    }
  }
}

TEST(RangeTest, TheLargestLimbExponentIsThatOfTheLargestDecimalExponent)
{
  Mpf x;
  ASSERT_EQ(SetFromDecimal(x, ("1e" + std::to_string(kLargestExponent)).c_str()),
            DecimalText::kNumber);
  EXPECT_EQ(static_cast<mpf_t&>(x)->_mp_exp, kLargestLimbExponent);
}

TEST(RangeTest, BitsOfNumbersInRangeFitInto64Bits)
{
  const WideInteger bits = WideInteger{kLargestLimbExponent} * GMP_NUMB_BITS;
  EXPECT_LT(bits, WideInteger{std::numeric_limits<mp_bitcnt_t>::max()});
}

TEST(RangeTest, ANumberWithRoomLeavesRoomForTheSquareOfAQuotient)
{
  constexpr mp_exp_t kMaximum = std::numeric_limits<mp_exp_t>::max();
  for (const mp_exp_t limbs : {mp_exp_t{0}, 4 * kLargestLimbExponent, kMaximum / 2}) {
    EXPECT_TRUE(HasRoom(OneAt(limbs)));
    EXPECT_TRUE(HasRoom(OneAt(-limbs)));
  }
  const mp_exp_t last = kMaximum - 4 * kLargestLimbExponent;
  EXPECT_TRUE(HasRoom(OneAt(last)));
  EXPECT_TRUE(HasRoom(OneAt(-last)));
  EXPECT_FALSE(HasRoom(OneAt(last + 1)));
  EXPECT_FALSE(HasRoom(OneAt(-last - 1)));
}

}  // namespace
}  // namespace arith
