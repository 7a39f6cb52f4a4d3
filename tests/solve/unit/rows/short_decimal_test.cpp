#include "solve/rows/short_decimal.h"

#include <string>

#include <gmp.h>
#include <gtest/gtest.h>

#include "solve/number/real.h"

namespace varno::solve {

namespace {

Real FromDecimal(const char* text, mpfr_prec_t bits = 128)
{
  Real number(bits);
  mpfr_set_str(number, text, 10, MPFR_RNDN);
  return number;
}

/// By mpfr_get_str.
ShortDecimal Expected(mpfr_srcptr x, int digits)
{
  char text[kMostShortDigits + 10];
  mpfr_exp_t exponent = 0;
  mpfr_get_str(text, &exponent, 10, static_cast<std::size_t>(digits), x, MPFR_RNDN);
  return {std::stoull(text[0] == '-' ? text + 1 : text), exponent - 1};
}

void ExpectAsMpfr(mpfr_srcptr x, int digits)
{
  const auto decimal = ShortDecimalOf(x, digits);
  ASSERT_TRUE(decimal);
  const ShortDecimal expected = Expected(x, digits);
  EXPECT_EQ(decimal->digits, expected.digits);
  EXPECT_EQ(decimal->exponent, expected.exponent);
}

}  // namespace

TEST(ShortDecimal, RoundsAsMpfr)
{
  gmp_randstate_t random;
  gmp_randinit_default(random);
  for (int i = 0; i < 20'000; ++i) {
    const int digits = 1 + i % kMostShortDigits;
    Real number(1 + i % 128);
    mpfr_urandomb(number, random);
    if (number.IsZero()) continue;
    // From 10^(digits - 26) to 10^digits
    const double scale = static_cast<double>(gmp_urandomm_ui(random, 8400)) / 100 - 84;
    mpfr_set_exp(number, static_cast<mpfr_exp_t>(digits * 3.3219 + scale));
    if (i % 2 == 1) mpfr_neg(number, number, MPFR_RNDN);
    ExpectAsMpfr(number, digits);
  }
  gmp_randclear(random);
}

TEST(ShortDecimal, RoundsMiddlesToEven)
{
  for (const char* text : {"0.5", "1.5", "2.5", "12.5", "13.5", "99.5", "9.5", "0.125", "0.375",
                           "1000000000000000.5", "999999999999999.5"}) {
    const Real number = FromDecimal(text);
    for (int digits = 1; digits <= kMostShortDigits; ++digits) {
      SCOPED_TRACE(std::string(text) + " to " + std::to_string(digits));
      if (ShortDecimalOf(number, digits)) ExpectAsMpfr(number, digits);
    }
  }
  EXPECT_EQ(ShortDecimalOf(FromDecimal("12.5"), 2)->digits, 12U);
  EXPECT_EQ(ShortDecimalOf(FromDecimal("13.5"), 2)->digits, 14U);
}

TEST(ShortDecimal, CountsThePlaceThatRoundingAdds)
{
  const auto decimal = ShortDecimalOf(FromDecimal("9.9996"), 4);
  ASSERT_TRUE(decimal);
  EXPECT_EQ(decimal->digits, 1000U);
  EXPECT_EQ(decimal->exponent, 1);
}

TEST(ShortDecimal, PowersOfTenBeginNewDigits)
{
  // Of 2^k and its neighbours the estimate of the first digit's place may be the one below.
  for (long k = -30; k < 50; ++k) {
    for (const long neighbour : {-1, 0, 1}) {
      Real number(120);
      mpfr_set_ui_2exp(number, 1, k, MPFR_RNDN);
      if (neighbour < 0) mpfr_nextbelow(number);
      if (neighbour > 0) mpfr_nextabove(number);
      ExpectAsMpfr(number, 17);
    }
  }
  for (const char* text : {"1", "10", "1e5", "1e15", "1e-1", "1e-8"}) {
    Real number = FromDecimal(text, 100);
    ExpectAsMpfr(number, 16);
    mpfr_nextbelow(number);
    ExpectAsMpfr(number, 16);
  }
}

TEST(ShortDecimal, IsNoneWhereIntegersAreTooShort)
{
  EXPECT_FALSE(ShortDecimalOf(FromDecimal("1.5"), kMostShortDigits + 1));
  EXPECT_FALSE(ShortDecimalOf(FromDecimal("1.5", 129), 15));
  EXPECT_FALSE(ShortDecimalOf(FromDecimal("1e15"), 15));
  EXPECT_FALSE(ShortDecimalOf(FromDecimal("1e-14"), 15));
  EXPECT_FALSE(ShortDecimalOf(FromDecimal("1e-999999999"), 15));
  EXPECT_FALSE(ShortDecimalOf(FromDecimal("1e999999999"), 15));
}

}  // namespace varno::solve
