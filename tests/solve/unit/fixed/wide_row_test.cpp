// Rows of digits against exact integers and rationals.

#include "solve/fixed/wide_row.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

/// 2^bits
mpq_class PowerOf2(long bits)
{
  mpq_class power = 1;
  if (bits < 0) {
    power >>= static_cast<mp_bitcnt_t>(-bits);
  } else {
    power <<= static_cast<mp_bitcnt_t>(bits);
  }
  return power;
}

mpq_class Exact(const WideRow& row)
{
  mpq_class sum;
  for (int i = 0; i < row.Count(); ++i)
    sum += mpq_class(row.digits[i]) * PowerOf2(kWideDigitBits * (row.exponent - 1 - i));
  return sum;
}

TEST(WideReciprocals, AreWrongByLessThanTheLastDigit)
{
  constexpr int kDigits = 5;
  WideReciprocals reciprocals;
  for (const long shift : {0L, 3L, 50L, 51L, -1L, -50L, -51L, -130L}) {
    for (const bool negative : {false, true}) {
      reciprocals.Use(kDigits, shift, negative);
      for (const int k : {1, 2, 3, 7, 64, 1000, 1999, 2000}) {
        const WideRow& row = reciprocals.Of(k);
        EXPECT_NE(0, row.digits[0]);
        for (const double digit : row.digits) EXPECT_LE(std::abs(digit), 0x1p50);
        const mpq_class exact = (negative ? -1 : 1) * PowerOf2(shift) / k;
        const mpq_class unit = PowerOf2(kWideDigitBits * (row.exponent - 1 - kDigits));
        EXPECT_LT(abs(Exact(row) - exact), unit) << "2^" << shift << " / " << k;
      }
    }
  }
}

// A table is kept for shifts by whole digits, and others do not disturb it.
TEST(WideReciprocals, MoveByWholeDigits)
{
  WideReciprocals reciprocals;
  reciprocals.Use(4, 3, false);
  const WideRow before = reciprocals.Of(7);
  reciprocals.Use(4, 5, false);
  reciprocals.Of(7);
  reciprocals.Use(4, 3 - 2 * kWideDigitBits, false);
  EXPECT_EQ(before.digits, reciprocals.Of(7).digits);
  EXPECT_EQ(before.exponent - 2, reciprocals.Of(7).exponent);
  const mpq_class eleventh = PowerOf2(3 - 2 * kWideDigitBits) / 11;
  EXPECT_LT(abs(Exact(reciprocals.Of(11)) - eleventh), eleventh / PowerOf2(3 * kWideDigitBits));
}

TEST(WideQuotients, AreWrongByLessThanTheLastDigit)
{
  constexpr int kDigits = 4;
  for (const WideRow& numerator :
       {WideRow{{-1, 0x1p49, -0x1p50, 5}, 3}, WideRow{{7}, 1}, WideRow{{0x1p50, -1}, -2}}) {
    WideQuotients quotients(numerator, kDigits);
    for (const int k : {1, 2, 3, 7, 1000, 2000}) {
      const WideRow& row = quotients.Of(k);
      EXPECT_NE(0, row.digits[0]);
      for (const double digit : row.digits) EXPECT_LE(std::abs(digit), 0x1p50);
      const mpq_class unit = PowerOf2(kWideDigitBits * (row.exponent - 1 - kDigits));
      EXPECT_LT(abs(Exact(row) - Exact(numerator) / k), unit) << k;
    }
  }
  EXPECT_EQ(0, WideQuotients(WideRow{}, kDigits).Of(3).Count()) << "of 0";
}

// Rows begin where their first digit that is not 0 stands: zeros before it need no place.
TEST(WideRow, OfASmallNumberFitsWhereItsPlacesWouldNot)
{
  WideTerms terms;
  terms.Reserve(4, 1);
  terms.started = terms.inexact = true;
  terms.exponent = 1;
  std::array<double, 12> room{};
  room[WideTerms::kZeros + 4] = 9;
  const double* const digits = room.data() + WideTerms::kZeros;
  EXPECT_TRUE(StoreScaled(BestColumnKernel(), terms, 0, RowOf(5), {digits, 5, 4, 5}));
  EXPECT_EQ(0, terms.leading[0]);
  EXPECT_EQ(45, terms.Row(0)[0]);
}

// The digits of the term behind do not show: as many digits as the row has are taken.
TEST(WideRow, TakesNoDigitsOfItsNeighbours)
{
  WideTerms from;
  from.Reserve(8, 2);
  from.exponent = 10;
  const std::vector<std::int64_t> small{0, 0, 0, 0, 0, 0, 0, 9}, large(8, 7);
  from.Set(0, small.data());
  const WideRow factor{{1, 0x1p49, -0x1p48, 0x1p47, 3, 5, 7, 9, 11}, 1};
  WideTerms alone, beside;
  for (WideTerms* terms : {&alone, &beside}) {
    terms->Reserve(8, 1);
    terms->started = terms->inexact = true;
    terms->exponent = 3;
    if (terms == &beside) from.Set(1, large.data());
    EXPECT_TRUE(StoreScaled(BestColumnKernel(), *terms, 0, factor, DigitsOf(from, 0)));
  }
  EXPECT_EQ(alone.rows, beside.rows);
  EXPECT_EQ(alone.leading[0], beside.leading[0]);
}

TEST(WideRow, HasNoZerosBehind)
{
  WideValue<8> value;
  value.digits.fill(0);
  EXPECT_EQ(0, RowOf(value, 5).Count());
  value.isZero = false;
  value.digits[0] = -3;
  value.digits[2] = 7;
  value.exponent = 4;
  const WideRow row = RowOf(value, 5);
  EXPECT_EQ(3, row.Count());
  EXPECT_EQ(-3 * PowerOf2(kWideDigitBits * 3L) + 7 * PowerOf2(kWideDigitBits), Exact(row));
  EXPECT_EQ(-70000, Exact(RowOf(-70000)));
}

}  // namespace
}  // namespace varno::solve
