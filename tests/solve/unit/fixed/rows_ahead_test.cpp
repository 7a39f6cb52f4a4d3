// Sums for eight terms at once against those of one term by integers of 128 bits.

#include "solve/fixed/rows_ahead.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/solve/support/wide_terms.h"

namespace varno::solve {
namespace {

using support::FilledTerms, support::RowWithZeros;

constexpr std::int64_t kLargest = support::kLargestDigit;
constexpr int kRows = RowsAhead::kRows;

/// Terms that keep planes
template <class Digit>
WideTerms Filled(int n, int count, const Digit& digit)
{
  WideTerms terms = FilledTerms(n, count, digit);
  terms.KeepPlanes();
  return terms;
}

/// The eight sums from term k on, of as many columns each, from a place of the term on.
void ExpectSameTerms(const WideTerms& a, const WideTerms& b, int first,
                     const RowsAhead::Columns& columns, int place)
{
  RowsAhead ahead;
  ASSERT_FALSE(ahead.Has(first));
  ahead.Begin(a, b, first, columns);
  // Where the terms go: with digits of which none is one of theirs
  const auto digit = [](int, int i) { return 77 + i; };
  WideTerms expected = FilledTerms(a.n, first + kRows, digit);
  WideTerms found = FilledTerms(a.n, first + kRows, digit);
  for (int row = 0; row < kRows; ++row) {
    const int k = first + row, count = columns[row];
    ASSERT_TRUE(ahead.Has(k));
    SCOPED_TRACE(testing::Message()
                 << "term " << k << " in " << count << " columns of " << a.n
                 << (&a == &b ? " digits, square" : " digits") << ", place " << place);
    const bool isStored = kIntegerColumns.storeProducts(a, b, k, count, expected, place);
    EXPECT_EQ(isStored, ahead.Store(kIntegerColumns, a, b, k, found, place));
    EXPECT_EQ(RowWithZeros(expected, k), RowWithZeros(found, k));
    EXPECT_EQ(expected.leading[k], found.leading[k]);
  }
  EXPECT_FALSE(ahead.Has(first + kRows));
  ahead.Forget();
  EXPECT_FALSE(ahead.Has(first));
}

/// From places where sums fit, and where they do not
void ExpectSameDigits(const WideTerms& a, const WideTerms& b, int first,
                      const RowsAhead::Columns& columns)
{
  for (const int place : {-1, 0, 1, 2}) ExpectSameTerms(a, b, first, columns, place);
}

RowsAhead::Columns AllColumns(int n)
{
  RowsAhead::Columns columns;
  columns.fill(n + 1);
  return columns;
}

class RowsAheadTest : public testing::Test {
 protected:
  void SetUp() override
  {
    if (TileColumnKernel() == nullptr) GTEST_SKIP() << "the processor has no AVX-512 IFMA";
  }
};

// As far as digits can go, of either sign, and so many that 64 bits overflow without care
TEST_F(RowsAheadTest, AreExactForExtremeDigits)
{
  constexpr int kCount = 304;
  for (const int n : {1, 3, 8, 9, 10, 17, 24, 31, 32, 40}) {
    for (const int sign : {1, -1}) {
      const WideTerms a = Filled(n, kCount, [](int, int) { return kLargest; });
      const WideTerms b = Filled(n, kCount, [&](int, int) { return sign * kLargest; });
      for (const int k : {2 * kRows, 3 * kRows, kCount - kRows}) {
        ExpectSameDigits(a, b, k, AllColumns(n));
        ExpectSameDigits(b, b, k, AllColumns(n));
      }
    }
  }
}

// Terms that fall, with zeros first, and columns that differ from term to term
TEST_F(RowsAheadTest, AreExactForDigitsAtRandom)
{
  std::mt19937_64 random(20261123);
  for (int n = 1; n <= 41; n += 5) {
    for (const int fall : {3, 20, 1000}) {
      const auto digit = [&](int k, int i) -> std::int64_t {
        if (i < k / fall + static_cast<int>(random() % 2)) return 0;
        return static_cast<std::int64_t>(random() % (2 * kLargest)) - kLargest;
      };
      const WideTerms a = Filled(n, 6 * kRows, digit), b = Filled(n, 6 * kRows, digit);
      for (int k = 2 * kRows; k < 6 * kRows; k += kRows) {
        RowsAhead::Columns columns;
        for (int& count : columns) count = 1 + static_cast<int>(random() % (n + 1));
        ExpectSameDigits(a, b, k, columns);
        ExpectSameDigits(b, b, k, columns);
      }
    }
  }
}

// Terms in the middle that are larger than the first and the last ones: the sums begin with digits
// that none of the latter reach.
TEST_F(RowsAheadTest, AreExactForTermsThatRiseAndFall)
{
  const auto digit = [](int k, int i) -> std::int64_t {
    const bool isLarge = k >= kRows && k < 3 * kRows;
    return i == 0 && !isLarge ? 0 : kLargest / (8 + i);
  };
  for (const int n : {6, 7, 8, 9, 16, 17, 24, 31, 33}) {
    const WideTerms a = Filled(n, 4 * kRows, digit), b = Filled(n, 4 * kRows, digit);
    ExpectSameDigits(a, b, 3 * kRows, AllColumns(n));
    ExpectSameDigits(b, b, 3 * kRows, AllColumns(n));
  }
}

TEST_F(RowsAheadTest, NeedPlanesAndTermsBefore)
{
  constexpr int kDigits = 4, kTerms = 4 * kRows;
  const WideTerms a = Filled(kDigits, kTerms, [](int, int) { return 1; });
  WideTerms without;
  without.Reserve(kDigits, kTerms);
  EXPECT_TRUE(RowsAhead::CanSum(a, a, 2 * kRows, kDigits + 1));
  EXPECT_FALSE(RowsAhead::CanSum(a, a, 2 * kRows - 1, kDigits + 1)) << "too small a term";
  EXPECT_FALSE(RowsAhead::CanSum(a, a, 2 * kRows, kDigits + 2)) << "columns behind the digits";
  EXPECT_FALSE(RowsAhead::CanSum(a, without, 2 * kRows, kDigits + 1));
  EXPECT_FALSE(RowsAhead::CanSum(without, a, 2 * kRows, kDigits + 1));
}

// High parts of more would not fit 64 bits.
TEST_F(RowsAheadTest, AreNotForTooManyProducts)
{
  constexpr int kDigits = 31;
  const WideTerms a = Filled(kDigits, 600, [](int, int) { return kLargest; });
  EXPECT_TRUE(RowsAhead::CanSum(a, a, 488, kDigits + 1));
  ExpectSameDigits(a, a, 488, AllColumns(kDigits));
  EXPECT_FALSE(RowsAhead::CanSum(a, a, 493, kDigits + 1));
}

}  // namespace
}  // namespace varno::solve
