#include "arith/magnitude.h"

#include <vector>

#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "arith/range.h"
#include "tests/support/scoped_precision.h"

namespace arith {

using namespace support;

namespace {

TEST(Magnitude, IsTheAbsoluteValue)
{
  const Mpf x(-2.5), y(2.5);
  EXPECT_EQ(mpf_cmp(Magnitude(x), y), 0);
  EXPECT_EQ(mpf_cmp(Magnitude(y), y), 0);
  EXPECT_EQ(mpf_cmp_d(x, -2.5), 0);
}

TEST(BinaryExponent, IsThatOfGmp)
{
  for (const char* text : {"0", "1", "-1", "0.5", "0.75", "3", "-1e1000", "1e-1000", "4.9e-324"}) {
    const Mpf x(text);
    long expected = 0;
    mpf_get_d_2exp(&expected, x);
    EXPECT_EQ(BinaryExponent(x), expected) << text;
  }
}

TEST(BinaryExponent, OfTheLargestNumbersExceeds64Bits)
{
  // 1, moved by whole limbs: 2^(64 (exponent - 1)), whose binary exponent is one more.
  Mpf number(1.0);
  mpf_t& x = number;
  x->_mp_exp = kLargestLimbExponent;
  EXPECT_EQ(ToText(BinaryExponent(x)), "18446666710909523073");
  x->_mp_exp = -kLargestLimbExponent;
  EXPECT_EQ(ToText(BinaryExponent(x)), "-18446666710909523199");
}

/// Powers of 2 and their neighbours, where the sizes in bits do not decide, and 0.
std::vector<Mpf> NumbersAroundPowersOfTwo()
{
  std::vector<Mpf> numbers{Mpf(0.0)};
  for (int exponent = -70; exponent <= 70; exponent += 10) {
    for (const int difference : {-1, 0, 1}) {
      Mpf x(1.0), little(1.0);
      mpf_div_2exp(little, little, 79);
      if (difference > 0) mpf_add(x, x, little);
      if (difference < 0) mpf_sub(x, x, little);
      if (exponent < 0) mpf_div_2exp(x, x, static_cast<mp_bitcnt_t>(-exponent));
      if (exponent > 0) mpf_mul_2exp(x, x, static_cast<mp_bitcnt_t>(exponent));
      numbers.push_back(x);
    }
  }
  return numbers;
}

TEST(IsBelowProduct, ComparesTheLargestNumbers)
{
  const auto isBelow = [](const char* x, const char* a, const char* b) {
    return IsBelowProduct(Mpf(x), Mpf(a), Mpf(b));
  };
  const char* const huge = "1e5553000000000000000";
  const char* const tiny = "1e-5553000000000000000";
  EXPECT_FALSE(isBelow(huge, tiny, "1"));
  EXPECT_FALSE(isBelow(huge, tiny, tiny));
  EXPECT_FALSE(isBelow(huge, huge, "0.1"));
  EXPECT_TRUE(isBelow(huge, huge, "10"));
  EXPECT_TRUE(isBelow(tiny, huge, huge));
  EXPECT_TRUE(isBelow(tiny, huge, tiny));
  EXPECT_FALSE(isBelow("10", huge, tiny));
  EXPECT_FALSE(isBelow("-10", tiny, tiny));
}

TEST(IsBelowProduct, ComparesWithTheProductOfGmp)
{
  const ScopedPrecision precision(80);
  mpf_set_default_prec(80);
  const std::vector<Mpf> numbers = NumbersAroundPowersOfTwo();
  Mpf product, minusA;
  int below = 0;
  for (const Mpf& a : numbers) {
    mpf_neg(minusA, a);
    for (const Mpf& b : numbers) {
      mpf_mul(product, a, b);
      for (const Mpf& x : numbers) {
        const bool expected = mpf_cmp(x, product) < 0;
        ASSERT_EQ(IsBelowProduct(x, a, b), expected);
        ASSERT_EQ(IsBelowProduct(x, minusA, b), expected);
        below += expected ? 1 : 0;
      }
    }
  }
  EXPECT_GT(below, 1000);
}

}  // namespace
}  // namespace arith
