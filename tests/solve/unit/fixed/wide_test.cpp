// Numbers of many digits on their way to MPFR against exact integers.

#include "solve/fixed/wide.h"

#include <random>

#include <gmpxx.h>
#include <gtest/gtest.h>

#include "solve/number/real.h"

namespace varno::solve {
namespace {

constexpr std::int64_t kLargest = std::int64_t{1} << (kWideDigitBits - 1);

/// The digits as a number with bits enough for all of them
void ExpectNumber(const WideArithmetic<8>& arithmetic, const WideValue<8>& value, int n)
{
  mpz_class whole;
  for (int i = 0; i <= n; ++i) {
    whole <<= kWideDigitBits;
    whole += static_cast<long>(value.digits[i]);
  }
  Real found(600), expected(600);
  mpfr_set_z_2exp(expected, whole.get_mpz_t(), kWideDigitBits * (value.exponent - 1 - n),
                  MPFR_RNDN);
  arithmetic.ToNumber(value, found);
  EXPECT_TRUE(mpfr_equal_p(expected, found) != 0) << whole;
}

TEST(WideArithmetic, GivesNumbersOfAllDigits)
{
  std::mt19937_64 random(20261127);
  for (int n = 1; n <= 8; ++n) {
    const WideArithmetic<8> arithmetic(n, kIntegerColumns);
    for (int leading = 0; leading <= n; ++leading) {
      for (int times = 0; times < 20; ++times) {
        WideValue<8> value;
        value.digits.fill(0);
        value.isZero = false;
        value.exponent = 3 - times;
        for (int i = leading; i <= n; ++i)
          value.digits[i] = static_cast<std::int64_t>(random() % (2 * kLargest + 1)) - kLargest;
        ExpectNumber(arithmetic, value, n);
        value.digits[leading] = times % 2 == 0 ? 1 : -1;
        for (int i = leading + 1; i <= n; ++i)
          value.digits[i] = times % 4 < 2 ? kLargest : -kLargest;
        ExpectNumber(arithmetic, value, n);
      }
    }
  }
}

// What fits leaves the exponent as it is, and what does not changes it.
TEST(WideArithmetic, TellsWhatFits)
{
  constexpr int kDigits = 4;
  const WideArithmetic<8> arithmetic(kDigits, kIntegerColumns);
  WideValue<8> value;
  value.digits.fill(0);
  value.isZero = false;
  for (int leading = 0; leading <= kDigits; ++leading) {
    value.digits.fill(0);
    value.digits[static_cast<std::size_t>(leading)] = 5;
    for (long exponent = -3; exponent <= 6; ++exponent) {
      WideTerms terms;
      terms.Reserve(kDigits, 2);
      terms.started = true;
      terms.exponent = 2;
      value.exponent = exponent;
      const bool fits = WideArithmetic<8>::Fits(terms, value);
      EXPECT_EQ(fits, exponent - leading <= 2);
      arithmetic.Store(terms, 1, value);
      EXPECT_EQ(terms.exponent == 2, fits);
    }
  }
  WideTerms none;
  none.Reserve(kDigits, 1);
  EXPECT_FALSE(WideArithmetic<8>::Fits(none, value));
  EXPECT_TRUE(WideArithmetic<8>::Fits(none, WideValue<8>()));
}

}  // namespace
}  // namespace varno::solve
