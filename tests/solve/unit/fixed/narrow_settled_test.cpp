// Terms of settled series by digits, against exact fractions.

#include "solve/fixed/narrow_settled.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

#include "solve/fixed/narrow.h"
#include "solve/fixed/narrow_scaled_sum.h"
#include "solve/number/real.h"

namespace varno::solve {
namespace {

mpq_class TimesPower(const mpq_class& x, long exponent)
{
  mpq_class result;
  if (exponent >= 0) {
    mpq_mul_2exp(result.get_mpq_t(), x.get_mpq_t(), static_cast<mp_bitcnt_t>(exponent));
  } else {
    mpq_div_2exp(result.get_mpq_t(), x.get_mpq_t(), static_cast<mp_bitcnt_t>(-exponent));
  }
  return result;
}

mpz_class Whole(Int128 x)
{
  mpz_class whole = static_cast<long>(x >> 64);
  whole <<= 64;
  whole += static_cast<unsigned long>(static_cast<std::uint64_t>(x));
  return whole;
}

/// A term in units.
mpz_class Digits(const NarrowTerms& terms, int k)
{
  return Whole(narrow::Joined(terms.high[k], terms.low[k]));
}

mpq_class Exact(const NarrowTerms& terms, int k)
{
  return TimesPower(Digits(terms, k), terms.exponent - NarrowArithmetic::kFractionBits);
}

/// The largest terms with extreme digits, powers of 2, and random ones of all lengths.
std::vector<Int128> Mantissas()
{
  std::mt19937_64 random(11);
  const std::int64_t half = std::int64_t{1} << 59;
  std::vector<Int128> mantissas;
  for (const std::int64_t high : {half - 1, -half, half / 2, std::int64_t{1}, std::int64_t{0}}) {
    for (const std::int64_t low : {half - 1, -half, std::int64_t{1}, std::int64_t{-1}})
      mantissas.push_back(narrow::Joined(high, low));
  }
  for (int length = 2; length <= narrow::kTermBits; length += 3) {
    const Int128 power = static_cast<Int128>(1) << (length - 1);
    const Int128 any = (static_cast<Int128>(random() >> 1) << 64) + static_cast<Int128>(random());
    mantissas.push_back(power + (any & (power - 1)));
    mantissas.push_back(-mantissas.back());
  }
  return mantissas;
}

/// A settled series with these terms.
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

NarrowFactor FactorOf(const char* number)
{
  Real value(300);
  mpfr_set_str(value, number, 10, MPFR_RNDN);
  return NarrowArithmetic::ToFactor(NarrowArithmetic::FromNumber(value));
}

mpq_class Exact(const NarrowFactor& factor)
{
  return TimesPower(Whole(narrow::Joined(factor.high, factor.low)),
                    factor.exponent - NarrowArithmetic::kFractionBits);
}

TEST(NarrowSettled, StoresWhatFitsToNearest)
{
  for (const Int128 mantissa : Mantissas()) {
    for (const int up : {-63, -62, -17, -1, 0, 1, 2, 17, 49, 50}) {
      SCOPED_TRACE(Whole(mantissa).get_str() + " 2^" + std::to_string(up));
      NarrowTerms terms = Row({0, 0}, 7);
      terms.exactZero[1] = 1;
      const mpq_class expected = TimesPower(Whole(mantissa), up);
      const bool isStored = narrow::StoreSettled(terms, 1, mantissa, narrow::TermShift(up));
      const mpz_class limit = mpz_class(1) << narrow::kTermBits;
      if (abs(expected) < limit - 1 && mantissa != 0) {
        EXPECT_TRUE(isStored);
      }
      if (abs(expected) > limit) {
        EXPECT_FALSE(isStored);
      }
      EXPECT_EQ(terms.exactZero[1], isStored ? 0 : 1);
      if (!isStored) continue;
      EXPECT_LE(abs(Digits(terms, 1) - expected), mpq_class(1, 2));
      EXPECT_LE(std::abs(terms.high[1]), std::int64_t{1} << 59);
      EXPECT_LE(std::abs(terms.low[1]), std::int64_t{1} << 59);
    }
  }
}

TEST(NarrowSettled, StoresNoZero)
{
  NarrowTerms terms = Row({0, 0}, 0);
  EXPECT_FALSE(narrow::StoreSettled(terms, 1, 0, narrow::TermShift()));
}

TEST(NarrowSettled, DividesByReciprocals)
{
  for (int k = 1; k <= narrow::kMostOrder; ++k) {
    const NarrowRatio& ratio = narrow::kReciprocals[static_cast<std::size_t>(k)];
    const mpz_class whole = Whole(narrow::Joined(ratio.high, ratio.low));
    EXPECT_LE(abs(whole - TimesPower(mpq_class(1, k), 120)), mpq_class(1, 2)) << k;
  }
}

TEST(NarrowSettled, AddsTheLargestProducts)
{
  // As many as there can be, all of one sign
  const Int128 largest = (static_cast<Int128>(1) << narrow::kTermBits) - 1;
  for (const Int128 term : {largest, -largest, narrow::Joined(1L << 59, -(1L << 59))}) {
    const NarrowTerms a = Row(std::vector<Int128>(narrow::kMostOrder + 1, term), 0);
    const NarrowSums sums = NarrowSums::OfProducts(a, a, 0, narrow::kMostOrder, narrow::kMostOrder);
    const NarrowSums ofSelf = NarrowSums::OfProducts(a, 0, narrow::kMostOrder);
    const mpq_class expected = TimesPower(Whole(term) * Whole(term) * (narrow::kMostOrder + 1),
                                          -NarrowArithmetic::kFractionBits);
    const mpq_class allowed((narrow::kMostOrder + 1) / 4 + 1);
    EXPECT_LE(abs(Whole(sums.Total()) - expected), allowed);
    EXPECT_LE(abs(Whole(ofSelf.Total()) - expected), allowed);
  }
}

/// Terms of both signs, each so many bits shorter than the one before it.
NarrowTerms FallingRow(int count, int bits)
{
  std::mt19937_64 random(17 + static_cast<unsigned>(bits));
  std::vector<Int128> mantissas;
  for (int k = 0; k < count; ++k) {
    const int length = std::max(1, narrow::kTermBits - bits * k);
    const Int128 any = (static_cast<Int128>(random() >> 1) << 64) + static_cast<Int128>(random());
    mantissas.push_back((any & ((static_cast<Int128>(1) << length) - 1)) * (k % 3 == 1 ? -1 : 1));
  }
  return Row(mantissas, 0);
}

TEST(NarrowSettled, AddsProductsOfTermsThatFall)
{
  constexpr int kLast = 39;
  for (const int aBits : {0, 3, 5, 40, 119}) {
    for (const int bBits : {0, 4, 11, 119}) {
      const NarrowTerms a = FallingRow(kLast + 1, aBits), b = FallingRow(kLast + 1, bBits);
      for (const int k : {0, 1, 2, 14, 15, 27, kLast}) {
        for (const int first : {0, 1}) {
          SCOPED_TRACE(std::to_string(aBits) + ", " + std::to_string(bBits) + " bits, term " +
                       std::to_string(k) + " from " + std::to_string(first));
          const NarrowSums sums = NarrowSums::OfProducts(a, b, first, k, k);
          const NarrowSums ofSelf = NarrowSums::OfProducts(a, first, k);
          mpq_class expected = 0, square = 0;
          for (int j = first; j <= k; ++j) expected += Exact(a, j) * Exact(b, k - j);
          for (int j = first; j <= k - first; ++j) square += Exact(a, j) * Exact(a, k - j);
          const mpq_class allowed = TimesPower(mpq_class(k + 1, 4) + 1, -120);
          EXPECT_LE(abs(TimesPower(Whole(sums.Total()), -120) - expected), allowed);
          EXPECT_LE(abs(TimesPower(Whole(ofSelf.Total()), -120) - square), allowed);
        }
      }
    }
  }
}

TEST(NarrowSettled, MultipliesByWholeNumbersAndPowers)
{
  const std::vector<Int128> mantissas = Mantissas();
  const NarrowTerms from = Row(mantissas, 3);
  for (std::size_t k = 0; k < mantissas.size(); ++k) {
    for (const int whole : {1, 27, 199}) {
      NarrowTerms to = Row({0}, 12);
      if (!StoreSettledMultiple(to, 0, whole, from, static_cast<int>(k))) continue;
      const mpq_class expected = Exact(from, static_cast<int>(k)) * whole;
      EXPECT_LE(abs(Exact(to, 0) - expected), TimesPower(mpq_class(1, 2), 12 - 120));
    }
  }
  // 0.7^j
  NarrowTerms powers = Row(std::vector<Int128>(30), 2);
  const NarrowFactor factor = FactorOf("0.7");
  ASSERT_TRUE(narrow::StoreSettled(powers, 29, static_cast<Int128>(1) << 118, narrow::TermShift()));
  EXPECT_EQ(StoreSettledPowers(powers, 29, factor), 29);
  mpq_class expected = 1;
  for (int j = 0; j < 30; ++j, expected *= mpq_class(7, 10)) {
    EXPECT_LE(abs(Exact(powers, 29 - j) - expected), TimesPower(4, 2 - 120)) << j;
  }
}

TEST(NarrowSettled, EndsPowersWhereTheyCannotBeSeen)
{
  NarrowTerms powers = Row(std::vector<Int128>(30), 2);
  ASSERT_TRUE(narrow::StoreSettled(powers, 29, static_cast<Int128>(1) << 118, narrow::TermShift()));
  // 2^-50, 2^-100: what follows is below the last bit.
  const int stored = StoreSettledPowers(powers, 29, FactorOf("8.8817841970012523e-16"));
  EXPECT_LT(stored, 29);
  EXPECT_GE(stored, 2);
}

// ---------------------------------------------------------------------------------------------
// Scaled sums

struct Operand {
  long exponent;
  const char* factor;
};

/// What is dropped: a quarter of a unit for each product of low digits and the rounding of a ratio,
/// in units of the sum, or of the operands times their factors where these are larger.
mpq_class Allowed(const std::vector<Operand>& operands, long exponent)
{
  mpq_class unit = TimesPower(1, exponent - 120), sum = unit;
  for (const Operand& operand : operands)
    sum += unit / 2 + abs(Exact(FactorOf(operand.factor))) * TimesPower(1, operand.exponent - 120);
  return sum;
}

bool StoreTerm(const NarrowScaledSum& scaled, NarrowTerms& sum, int k)
{
  return narrow::StoreSettled(sum, k, scaled.Term(k).Total(), narrow::TermShift(scaled.Up()));
}

TEST(NarrowScaledSum, AddsOperandsWithAnyExponents)
{
  const std::vector<Int128> mantissas = Mantissas();
  const auto count = static_cast<int>(mantissas.size());
  const std::vector<std::vector<Operand>> cases = {
      {{0, "1"}},
      {{0, "10"}, {0, "-10"}},
      {{0, "52.02"}, {0, "-104.04"}, {0, "52.02"}, {-3, "1"}},
      {{5, "-2.6666666666666666666666666666666666667"}, {-70, "1"}, {-119, "3"}, {-400, "1e60"}},
      std::vector<Operand>(NarrowScaledSum::kMostOperands, {-2, "0.3"}),
  };
  for (const std::vector<Operand>& operands : cases) {
    std::vector<NarrowTerms> rows;
    std::vector<Int128> shifted = mantissas;
    for (const Operand& operand : operands) {
      rows.push_back(Row(shifted, operand.exponent));
      std::rotate(shifted.begin(), shifted.begin() + 1, shifted.end());
    }
    for (const long exponent : {-4L, 3L, 60L}) {
      NarrowScaledSum scaled;
      for (std::size_t i = 0; i < operands.size(); ++i)
        scaled.Add(rows[i], FactorOf(operands[i].factor));
      NarrowTerms sum = Row(std::vector<Int128>(mantissas.size()), exponent);
      ASSERT_TRUE(scaled.Prepare(sum));
      for (int k = 0; k < count; k += 3) {
        mpq_class expected = 0;
        for (std::size_t i = 0; i < operands.size(); ++i)
          expected += Exact(FactorOf(operands[i].factor)) * Exact(rows[i], k);
        const bool isStored = StoreTerm(scaled, sum, k);
        const mpq_class largest = TimesPower(1, exponent - 1);
        // Sums that fit are stored, unless nothing of them is seen.
        if (abs(expected) < largest * mpq_class(99, 100) &&
            abs(expected) > Allowed(operands, exponent)) {
          EXPECT_TRUE(isStored);
        }
        if (!isStored) continue;
        EXPECT_LE(abs(Exact(sum, k) - expected), Allowed(operands, exponent))
            << operands[0].factor << " exponent " << exponent << " term " << k;
      }
    }
  }
}

TEST(NarrowScaledSum, TakesNoTermsThatHaveNotStarted)
{
  const NarrowTerms a = Row({static_cast<Int128>(1) << 100}, 0);
  NarrowTerms zero = Row({0}, 0), sum = Row({0}, 0);
  zero.started = false;
  zero.exponent = 1000;  // left by the step before
  NarrowScaledSum scaled;
  scaled.Add(a, FactorOf("1"));
  scaled.Add(zero, FactorOf("1"));
  ASSERT_TRUE(scaled.Prepare(sum));
  ASSERT_TRUE(StoreTerm(scaled, sum, 0));
  EXPECT_EQ(Exact(sum, 0), Exact(a, 0));
}

TEST(NarrowScaledSum, LeavesWhatItCannotDo)
{
  const NarrowTerms a = Row({static_cast<Int128>(1) << 100}, 0);
  const NarrowTerms sum = Row({0}, -80);
  NarrowScaledSum tooLarge, tooMany;
  tooLarge.Add(a, FactorOf("1"));
  EXPECT_FALSE(tooLarge.Prepare(sum));
  for (std::size_t i = 0; i <= NarrowScaledSum::kMostOperands; ++i) tooMany.Add(a, FactorOf("1"));
  EXPECT_FALSE(tooMany.Prepare(a));
}

}  // namespace
}  // namespace varno::solve
