// Rows of digits against exact integers and rationals.

#include "solve/fixed/wide_row.h"

#include <cmath>

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
