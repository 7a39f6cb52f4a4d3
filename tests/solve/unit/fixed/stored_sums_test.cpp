// Sums stored as terms: the same by all kernels as digit by digit by integers of 128 bits, whose
// sums are compared with exact integers elsewhere.

#include "solve/fixed/stored_sums.h"

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/solve/support/wide_terms.h"

namespace varno::solve {
namespace {

using support::FilledTerms, support::RowWithZeros;

constexpr std::int64_t kLargest = support::kLargestDigit;

/// Terms that keep tiles
template <class Digit>
WideTerms Filled(int n, int count, const Digit& digit)
{
  WideTerms terms = FilledTerms(n, count, digit);
  terms.KeepTiles();
  return terms;
}

/// Where a sum goes: with digits of which none is one of its
WideTerms Target(int n, int count)
{
  return Filled(n, count, [](int, int i) { return 77 + i; });
}

double DigitInTiles(const WideTerms& terms, int k, int i)
{
  return terms.tiles->Tile(k / DigitTiles::kTerms, i)[k % DigitTiles::kTerms];
}

class StoredSums : public testing::TestWithParam<const ColumnKernel*> {
 protected:
  /// Whether both say the same and store the same.
  static void ExpectSame(const std::function<bool(const ColumnKernel&, WideTerms&)>& store, int n,
                         int k)
  {
    WideTerms expected = Target(n, k + 1), found = Target(n, k + 1);
    EXPECT_EQ(store(kIntegerColumns, expected), store(*GetParam(), found));
    EXPECT_EQ(RowWithZeros(expected, k), RowWithZeros(found, k));
    EXPECT_EQ(expected.leading[k], found.leading[k]);
    for (int i = 0; i < n; ++i) EXPECT_EQ(DigitInTiles(expected, k, i), DigitInTiles(found, k, i));
  }

  static void ExpectSameProducts(const WideTerms& a, const WideTerms& b, int k)
  {
    for (int place = -2; place <= 2; ++place) {
      for (int columns = std::max(1, a.n - 2); columns <= a.n + 1; ++columns) {
        SCOPED_TRACE(testing::Message() << "term " << k << " of " << a.n << " digits, " << columns
                                        << " columns from place " << place);
        const auto store = [&](const ColumnKernel& kernel, WideTerms& terms) {
          return kernel.storeProducts(a, b, k, columns, terms, place);
        };
        ExpectSame(store, a.n, k);
      }
    }
  }

  static void ExpectSameRows(const std::vector<RowProduct>& products, int n, int k)
  {
    for (int place = -2; place <= 2; ++place) {
      for (int columns = std::max(1, n - 2); columns <= n + 2; ++columns) {
        SCOPED_TRACE(testing::Message() << products.size() << " products of " << n << " digits, "
                                        << columns << " columns from place " << place);
        const auto store = [&](const ColumnKernel& kernel, WideTerms& terms) {
          return kernel.storeRows(products.data(), static_cast<int>(products.size()), columns,
                                  terms, k, place);
        };
        ExpectSame(store, n, k);
      }
    }
  }
};

TEST_P(StoredSums, OfProductsHaveTheSameDigits)
{
  std::mt19937_64 random(20261124);
  for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 15, 16, 17, 23, 24, 25, 31, 32, 33, 41}) {
    const auto digit = [&](int k, int i) -> std::int64_t {
      if (i < k / 4) return 0;
      return static_cast<std::int64_t>(random() % (2 * kLargest)) - kLargest;
    };
    const WideTerms a = Filled(n, 30, digit), b = Filled(n, 30, digit);
    for (int k = 1; k < 30; k += 4) {
      ExpectSameProducts(a, b, k);
      ExpectSameProducts(b, b, k);
    }
  }
}

// As far as digits can go, of either sign
TEST_P(StoredSums, OfProductsAreExactForExtremeDigits)
{
  for (const int n : {1, 2, 6, 7, 8, 9, 15, 16, 25, 32, 33}) {
    for (const int sign : {1, -1}) {
      const WideTerms a = Filled(n, 300, [](int, int) { return kLargest; });
      const WideTerms b = Filled(n, 300, [&](int, int) { return sign * kLargest; });
      // So small a first digit that the sum fits
      const WideTerms c = Filled(n, 300, [&](int, int i) { return i < 2 ? 0 : sign * kLargest; });
      for (const int k : {7, 8, 299}) {
        ExpectSameProducts(a, b, k);
        ExpectSameProducts(a, c, k);
        ExpectSameProducts(c, c, k);
      }
    }
  }
}

// Short and long rows, from every column on
TEST_P(StoredSums, OfRowsHaveTheSameDigits)
{
  std::mt19937_64 random(20261125);
  const auto digit = [&](int k, int i) -> std::int64_t {
    if (i < k) return 0;
    return k % 2 == 0 ? kLargest : static_cast<std::int64_t>(random() % kLargest) - kLargest / 2;
  };
  for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 15, 16, 17, 23, 24, 25, 31, 32, 33, 41}) {
    const WideTerms terms = Filled(n, 6, digit);
    const std::vector<double> x(n + 1, -static_cast<double>(kLargest));
    std::vector<RowProduct> products;
    for (int first = 0; first <= n; ++first) {
      for (int k = 0; k < std::min(n, 6); ++k) {
        const int leading = terms.leading[k];
        products.push_back(
            {x.data(), 1 + (first + k) % (n + 1), terms.Row(k) + leading, leading + first});
        ExpectSameRows({products.back()}, n, 3);
        if (products.size() == kMostRowProducts) products.clear();
      }
      ExpectSameRows(products, n, 3);
    }
  }
}

// A carry that goes on through digits that are as large as balanced ones can be
TEST_P(StoredSums, OfRowsCarryAsFarAsNeeded)
{
  for (const int n : {3, 4, 7, 8, 9, 15, 16, 17, 24, 31, 32, 33}) {
    for (int end = 1; end < n; ++end) {
      for (const std::int64_t behind : {kLargest, -kLargest - 1}) {
        const auto digit = [&](int, int i) -> std::int64_t {
          if (i == 0) return 0;
          return i < end ? (behind > 0 ? kLargest - 1 : -kLargest) : behind;
        };
        const WideTerms terms = Filled(n, 1, digit);
        const double one = 1;
        ExpectSameRows({{&one, 1, terms.Row(0) + 1, 1}}, n, 3);
      }
    }
  }
}

TEST_P(StoredSums, OfNothingAreLeftToOthers)
{
  for (const int n : {2, 7, 8, 9}) {
    const WideTerms zeros = Filled(n, 9, [](int, int) { return 0; });
    const WideTerms ones = Filled(n, 9, [](int, int) { return 1; });
    WideTerms target = Target(n, 9);
    EXPECT_FALSE(GetParam()->storeProducts(zeros, ones, 8, n + 1, target, 0));
    EXPECT_FALSE(GetParam()->storeRows(nullptr, 0, n + 1, target, 8, 0));
    EXPECT_EQ(RowWithZeros(Target(n, 9), 8), RowWithZeros(target, 8));
  }
}

INSTANTIATE_TEST_SUITE_P(Kernels, StoredSums, testing::ValuesIn(support::ColumnKernels()));

}  // namespace
}  // namespace varno::solve
