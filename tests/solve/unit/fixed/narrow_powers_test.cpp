// Sums of series over a step, and their derivatives, against exact fractions.

#include "solve/fixed/narrow_powers.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

#include "solve/fixed/narrow.h"
#include "solve/number/real.h"

namespace varno::solve {
namespace {

Real Number(const char* text, mpfr_prec_t bits = 108)
{
  Real number(bits);
  mpfr_set_str(number, text, 16, MPFR_RNDN);
  return number;
}

mpq_class TimesPower(const mpq_class& x, long exponent)
{
  mpq_class result = x;
  if (exponent >= 0) {
    mpq_mul_2exp(result.get_mpq_t(), x.get_mpq_t(), static_cast<mp_bitcnt_t>(exponent));
  } else {
    mpq_div_2exp(result.get_mpq_t(), x.get_mpq_t(), static_cast<mp_bitcnt_t>(-exponent));
  }
  return result;
}

mpq_class Exact(Int128 mantissa, long exponent)
{
  mpz_class whole = static_cast<long>(mantissa >> 64);
  whole <<= 64;
  whole += static_cast<unsigned long>(static_cast<std::uint64_t>(mantissa));
  return TimesPower(whole, exponent - NarrowArithmetic::kFractionBits);
}

mpq_class Exact(const NarrowTerms& terms, int k)
{
  return Exact(narrow::Joined(terms.high[k], terms.low[k]), terms.exponent);
}

mpq_class Exact(const Real& x)
{
  mpq_class result;
  mpfr_get_q(result.get_mpq_t(), x);
  return result;
}

NarrowTerms Row(const std::vector<Int128>& mantissas, long exponent)
{
  NarrowTerms terms;
  NarrowArithmetic::Reserve(terms, static_cast<int>(mantissas.size()));
  NarrowArithmetic::Reset(terms, exponent);
  terms.started = terms.inexact = terms.hasLow = true;
  terms.exponent = exponent;
  for (std::size_t k = 0; k < mantissas.size(); ++k)
    narrow::SetDigits(terms, static_cast<int>(k), mantissas[k]);
  return terms;
}

/// Terms of both signs, as large as can be, or each so many bits shorter than the one before.
NarrowTerms FallingRow(int count, int bits)
{
  std::mt19937_64 random(17 + static_cast<unsigned>(bits));
  std::vector<Int128> mantissas;
  for (int k = 0; k < count; ++k) {
    const int length = std::max(1, narrow::kTermBits - bits * k);
    const Int128 any = (static_cast<Int128>(random() >> 1) << 64) + static_cast<Int128>(random());
    mantissas.push_back((any & ((static_cast<Int128>(1) << length) - 1)) * (k % 3 == 1 ? -1 : 1));
  }
  return Row(mantissas, 5);
}

void ExpectRight(const NarrowTerms& a, int last, const Real& r)
{
  NarrowPowers powers;
  ASSERT_TRUE(powers.Set(r, last));
  const mpq_class offset = Exact(r), unit = TimesPower(1, a.exponent - 120);
  mpq_class sum = 0, slope = 0, power = 1;
  for (int k = 1; k <= last; ++k) {
    slope += k * Exact(a, k) * power;
    power *= offset;
    sum += Exact(a, k) * power;
  }
  // Powers are wrong by 2^-118 for each factor, of terms below 2^119 units; products of low digits
  // are dropped, and the sum rounded, in units four times as large.
  const mpq_class allowed = (2 * mpq_class(last) * last * offset + last + 4) * unit;
  const NarrowValue found = powers.Sum(a, last);
  EXPECT_LE(abs(Exact(found.mantissa, found.exponent) - sum), allowed);
  EXPECT_TRUE(found.inexact);
  if (last > NarrowPowers::kMostTermsOfSlopes) return;
  const auto both = powers.SumAndSlope(a, last);
  EXPECT_EQ(Exact(both.sum.mantissa, both.sum.exponent), Exact(found.mantissa, found.exponent));
  EXPECT_LE(abs(Exact(both.slope.mantissa, both.slope.exponent) - slope), unit * 1024 * (last + 1));
}

TEST(NarrowPowers, MakeSumsAndDerivatives)
{
  for (const int bits : {0, 3, 40}) {
    const NarrowTerms a = FallingRow(200, bits);
    for (const char* r : {"0.7f1", "0.ffffffffffffffff", "0.8", "0.3c7", "0.000123", "1p-60"}) {
      for (const int last : {1, 2, 12, 27, 44, 45, 199}) {
        SCOPED_TRACE(std::to_string(bits) + " bits, " + std::to_string(last) + " terms, " + r);
        ExpectRight(a, last, Number(r));
      }
    }
  }
}

TEST(NarrowPowers, HoldTheLargestSums)
{
  const Int128 largest = (static_cast<Int128>(1) << narrow::kTermBits) - 1;
  for (const Int128 term : {largest, -largest, narrow::Joined(1L << 59, -(1L << 59))}) {
    const NarrowTerms a = Row(std::vector<Int128>(200, term), 0);
    for (const int last : {44, 199}) ExpectRight(a, last, Number("0.ffffffffffffffff"));
  }
}

TEST(NarrowPowers, ComeAnewForAnotherOffset)
{
  const NarrowTerms a = FallingRow(30, 2);
  NarrowPowers powers, others;
  ASSERT_TRUE(powers.Set(Number("0.4"), 10));
  ASSERT_TRUE(powers.Set(Number("0.6"), 29));
  ASSERT_TRUE(others.Set(Number("0.6"), 29));
  EXPECT_TRUE(powers.Sum(a, 29).mantissa == others.Sum(a, 29).mantissa);
}

TEST(NarrowPowers, TakeFractionsOf64Bits)
{
  NarrowPowers powers;
  EXPECT_TRUE(powers.Set(Number("0.0000000000000001"), 3));
  EXPECT_FALSE(powers.Set(Number("0.00000000000000008"), 3));
  EXPECT_FALSE(powers.Set(Number("0.80000000000000008"), 3));
  EXPECT_FALSE(powers.Set(Number("1"), 3));
  EXPECT_FALSE(powers.Set(Number("-0.5"), 3));
  EXPECT_FALSE(powers.Set(Number("0"), 3));
}

}  // namespace
}  // namespace varno::solve
