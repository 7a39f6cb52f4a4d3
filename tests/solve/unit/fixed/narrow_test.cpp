// Values and terms of 120 bits against exact fractions.

#include "solve/fixed/narrow.h"

#include <random>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

mpq_class Power(long exponent)
{
  mpq_class power = 1;
  if (exponent >= 0) {
    mpq_mul_2exp(power.get_mpq_t(), power.get_mpq_t(), exponent);
  } else {
    mpq_div_2exp(power.get_mpq_t(), power.get_mpq_t(), -exponent);
  }
  return power;
}

mpq_class Exact(const NarrowValue& value)
{
  mpz_class mantissa = static_cast<long>(value.mantissa >> 64);
  mantissa <<= 64;
  mantissa += static_cast<unsigned long>(static_cast<std::uint64_t>(value.mantissa));
  return mpq_class(mantissa) * Power(value.exponent - NarrowArithmetic::kFractionBits);
}

mpq_class UnitOf(long exponent)
{
  return Power(exponent - NarrowArithmetic::kFractionBits);
}

/// Mantissas of all lengths: powers of 2, their neighbours, and random ones, of both signs.
std::vector<Int128> Mantissas()
{
  std::mt19937_64 random(7);
  std::vector<Int128> mantissas = {0};
  for (int length = 2; length <= narrow::kValueBits; length += 2) {
    const Int128 power = static_cast<Int128>(1) << (length - 1);
    Int128 any = (static_cast<Int128>(random() >> 1) << 64) + static_cast<Int128>(random());
    any = power + (any & (power - 1));
    for (const Int128 x : {power, 2 * power - 1, power + 1, any}) {
      mantissas.push_back(x);
      mantissas.push_back(-x);
    }
  }
  return mantissas;
}

NarrowValue ValueOf(Int128 mantissa, long exponent)
{
  NarrowValue value;
  value.mantissa = mantissa;
  value.exponent = exponent;
  return value;
}

/// A row that begins with 1: terms below 4 fit.
NarrowTerms RowFromOne()
{
  NarrowTerms terms;
  NarrowArithmetic::Reserve(terms, 2);
  NarrowArithmetic::Reset(terms, 0);
  NarrowArithmetic::Store(terms, 0, ValueOf(Int128{1} << 119, 1));
  EXPECT_EQ(terms.exponent, 3);
  return terms;
}

TEST(Narrow, StoresToNearest)
{
  for (const Int128 mantissa : Mantissas()) {
    for (const long exponent : {-200L, -63L, -62L, -61L, -9L, 0L, 1L, 2L, 3L, 7L, 52L, 53L, 90L}) {
      SCOPED_TRACE(Exact(ValueOf(mantissa, exponent)).get_str());
      NarrowTerms terms = RowFromOne();
      const NarrowValue value = ValueOf(mantissa, exponent);
      NarrowArithmetic::Store(terms, 1, value);
      const NarrowValue loaded = NarrowArithmetic::Load(terms, 1);
      const mpq_class unit = UnitOf(terms.exponent), error = Exact(loaded) - Exact(value);
      EXPECT_LE(abs(error), unit / 2);
      // Whether anything was lost is known, and what is not 0 never becomes an exact 0.
      EXPECT_EQ(loaded.inexact, error != 0 || Exact(NarrowArithmetic::Load(terms, 0)) != 1);
      EXPECT_EQ(loaded.IsExactZero(), mantissa == 0);
      EXPECT_LE(std::abs(terms.high[1]), std::int64_t{1} << 59);
      EXPECT_LE(std::abs(terms.low[1]), std::int64_t{1} << 59);
      // The row before keeps its value when the exponent grows for a larger term.
      EXPECT_LE(abs(Exact(NarrowArithmetic::Load(terms, 0)) - 1), unit / 2);
      const mpq_class beyond = abs(Exact(value)) - 4;
      if (abs(beyond) > unit) {
        EXPECT_EQ(terms.exponent > 3, beyond > 0);
      }
    }
  }
}

// What fits leaves the exponent as it is; and what does not changes it, or is next to that.
TEST(Narrow, TellsWhatFits)
{
  for (const Int128 mantissa : Mantissas()) {
    for (const long exponent : {-200L, -61L, -9L, 0L, 1L, 2L, 3L, 7L, 52L, 90L}) {
      NarrowTerms terms = RowFromOne();
      const NarrowValue value = ValueOf(mantissa, exponent);
      const bool fits = NarrowArithmetic::Fits(terms, value);
      EXPECT_EQ(fits, abs(Exact(value)) < 4) << Exact(value).get_str();
      NarrowArithmetic::Store(terms, 1, value);
      EXPECT_TRUE(!fits || terms.exponent == 3);
    }
  }
  NarrowTerms none;
  NarrowArithmetic::Reserve(none, 1);
  NarrowArithmetic::Reset(none, 0);
  EXPECT_TRUE(NarrowArithmetic::Fits(none, NarrowValue()));
  EXPECT_FALSE(NarrowArithmetic::Fits(none, ValueOf(1, 0)));
}

TEST(Narrow, MultipliesByWholeNumbers)
{
  for (const Int128 mantissa : Mantissas()) {
    for (const std::int32_t factor :
         {0, 1, -1, 2, 15, -16, 199, 32767, -32767, 32768, -123456789}) {
      NarrowValue value = ValueOf(mantissa, 5);
      const mpq_class expected = Exact(value) * factor;
      SCOPED_TRACE(expected.get_str());
      NarrowArithmetic::MultiplyByWhole(value, factor);
      // An exact product where it fits, else at least 100 bits of it; large factors move the unit.
      const mpq_class error = abs(Exact(value) - expected);
      EXPECT_LE(error, 2 * UnitOf(value.exponent));
      if (factor > -32768 && factor < 32768) {
        EXPECT_LE(error, abs(expected) * Power(-100));
      }
      EXPECT_TRUE(narrow::FitsBits(value.mantissa, narrow::kValueBits));
    }
  }
}

TEST(Narrow, AddsWithinAUnit)
{
  const std::vector<Int128> mantissas = Mantissas();
  for (std::size_t i = 0; i < mantissas.size(); ++i) {
    for (const long up : {-130L, -70L, -64L, -63L, -5L, 0L, 1L, 40L, 63L, 64L, 126L, 127L}) {
      NarrowValue sum = ValueOf(mantissas[i], 0);
      const NarrowValue other = ValueOf(mantissas[(i * 37 + 11) % mantissas.size()], up);
      const mpq_class expected = Exact(sum) + Exact(other);
      SCOPED_TRACE(expected.get_str());
      NarrowArithmetic::Add(sum, other);
      EXPECT_LE(abs(Exact(sum) - expected), UnitOf(sum.exponent));
      EXPECT_TRUE(narrow::FitsBits(sum.mantissa, narrow::kValueBits));
      if (!sum.lost) {
        EXPECT_EQ(Exact(sum), expected);
      }
    }
  }
}

TEST(Narrow, DividesBySmallNumbers)
{
  NarrowArithmetic arithmetic(108);
  for (const Int128 mantissa : Mantissas()) {
    for (const int k : {1, 2, 3, 7, 64, 97, 199}) {
      NarrowValue value = ValueOf(mantissa, 0);
      const mpq_class expected = Exact(value) / k;
      arithmetic.DivideBy(value, k);
      // A product with a reciprocal of 120 bits, of which low times low digits are dropped.
      EXPECT_LE(abs(Exact(value) - expected),
                2 * UnitOf(value.exponent) + abs(expected) * Power(-119))
          << expected.get_str();
    }
  }
}

}  // namespace
}  // namespace varno::solve
