// Terms of settled series of long numbers that are multiples and powers, against exact rationals.

#include "solve/fixed/wide_settled.h"

#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr int kDigits = 6;

/// A term in units of its last digit.
mpz_class Units(const WideTerms& terms, int k)
{
  mpz_class sum;
  for (int i = 0; i < terms.n; ++i) {
    sum <<= kWideDigitBits;
    sum += mpz_class(terms.Row(k)[i]);
  }
  return sum;
}

WideTerms Settled(int count, long exponent)
{
  WideTerms terms;
  terms.Reserve(kDigits, count);
  terms.exponent = exponent;
  terms.started = terms.inexact = true;
  return terms;
}

TEST(StoreSettledMultiple, IsRoundedToTheLastDigit)
{
  WideTerms from = Settled(1, 3), terms = Settled(1, 4);
  const std::vector<std::int64_t> digits{5, -6, 7, 1L << 49, 9, 10};
  from.Set(0, digits.data());
  EXPECT_TRUE(StoreSettledMultiple(terms, 0, 1999, from, 0));
  mpz_class difference = Units(from, 0) * 1999 - (Units(terms, 0) << kWideDigitBits);
  EXPECT_LE(abs(difference), mpz_class(1) << (kWideDigitBits - 1));
  // In units of the same size it is exact, unless it is too large.
  terms.exponent = 3;
  EXPECT_TRUE(StoreSettledMultiple(terms, 0, 1999, from, 0));
  EXPECT_EQ(Units(from, 0) * 1999, Units(terms, 0));
  const std::vector<std::int64_t> large{1L << 49, 0, 0, 0, 0, 0};
  from.Set(0, large.data());
  EXPECT_FALSE(StoreSettledMultiple(terms, 0, 3, from, 0));
  terms.inexact = false;
  EXPECT_FALSE(StoreSettledMultiple(terms, 0, 1, from, 0)) << "not settled";
}

TEST(StoreSettledPowers, AreWrongByAUnitForEachFactor)
{
  constexpr int kFirst = 30;
  // 2^51 - 2^46 + 1, as a fraction of 2^51
  const WideRow factor{{1, -static_cast<double>(1L << 46) + 1}, 1};
  WideTerms terms = Settled(kFirst + 1, 1);
  const std::vector<std::int64_t> one{1, 0, 0, 0, 0, 0};
  terms.Set(kFirst, one.data());
  EXPECT_EQ(kFirst, StoreSettledPowers(terms, kFirst, factor));
  const mpz_class numerator = (mpz_class(1) << kWideDigitBits) - (mpz_class(1) << 46) + 1;
  mpz_class exact = Units(terms, kFirst);
  for (int j = 1; j <= kFirst; ++j) {
    exact *= numerator;  // in units of 2^-51 j
    const mp_bitcnt_t bits = mp_bitcnt_t{kWideDigitBits} * j;
    const mpz_class error = (Units(terms, kFirst - j) << bits) - exact;
    EXPECT_LE(abs(error), mpz_class(j) << bits) << "power " << j;
  }
}

// The powers of a factor that is too large end where they do not fit.
TEST(StoreSettledPowers, EndWhereTheyDoNotFit)
{
  WideTerms terms = Settled(9, 1);
  const std::vector<std::int64_t> one{1, 0, 0, 0, 0, 0};
  terms.Set(8, one.data());
  EXPECT_EQ(4, StoreSettledPowers(terms, 8, RowOf(1 << 11)));
}

}  // namespace
}  // namespace varno::solve
