// Sums of products of digits against exact integers.

#include "solve/fixed/columns.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

#include "tests/solve/support/wide_terms.h"

namespace varno::solve {
namespace {

constexpr std::int64_t kLargest = support::kLargestDigit;

/// Terms that keep tiles
template <class Digit>
WideTerms Filled(int n, int count, const Digit& digit)
{
  WideTerms terms = support::FilledTerms(n, count, digit);
  terms.KeepTiles();
  return terms;
}

/// The sum over i of digit i times 2^(51 (count - 1 - i))
mpz_class Whole(const std::vector<std::int64_t>& digits)
{
  mpz_class whole;
  for (const std::int64_t digit : digits) {
    whole <<= kWideDigitBits;
    whole += static_cast<long>(digit);
  }
  return whole;
}

mpz_class Digit(const WideTerms& terms, int k, int i)
{
  return mpz_class(terms.Row(k)[i]);
}

/// Products of a[j] b[i] in columns 0..columns-1, in units of the last one.
mpz_class ExactProduct(const WideTerms& a, int j, const WideTerms& b, int i, int columns)
{
  mpz_class sum;
  for (int c = 0; c < columns; ++c) {
    sum <<= kWideDigitBits;
    for (int x = std::max(0, c - b.n + 1); x <= std::min(c, a.n - 1); ++x)
      sum += Digit(a, j, x) * Digit(b, i, c - x);
  }
  return sum;
}

void ExpectBalanced(const std::vector<std::int64_t>& digits)
{
  for (std::size_t c = 1; c < digits.size(); ++c)
    EXPECT_TRUE(digits[c] >= -kLargest && digits[c] < kLargest) << "digit " << c;
}

void ExpectExact(const ColumnKernel& kernel, const WideTerms& a, const WideTerms& b, int first,
                 int last, int k, int columns)
{
  mpz_class expected;
  for (int j = first; j <= last; ++j) expected += ExactProduct(a, j, b, k - j, columns);
  std::vector<std::int64_t> digits(columns + 1);
  kernel.sumProducts(a, b, first, last, k, columns, digits.data());
  ExpectBalanced(digits);
  EXPECT_EQ(expected, Whole(digits)) << columns << " columns of " << a.n << " digits, terms "
                                     << first << " to " << last << " of " << k;
}

void ExpectExactSquare(const ColumnKernel& kernel, const WideTerms& a, int first, int k,
                       int columns)
{
  mpz_class expected;
  for (int j = first; j <= k - first; ++j) expected += ExactProduct(a, j, a, k - j, columns);
  std::vector<std::int64_t> digits(columns + 1);
  kernel.sumSquare(a, first, k, columns, digits.data());
  ExpectBalanced(digits);
  EXPECT_EQ(expected, Whole(digits))
      << columns << " columns of " << a.n << " digits, square from " << first << " of " << k;
}

class Columns : public testing::TestWithParam<const ColumnKernel*> {};

// As far as digits can go, of either sign, so many that 64 bits overflow without care
TEST_P(Columns, AreExactForExtremeDigits)
{
  for (const int n : {1, 3, 7, 21, 64}) {
    const int count = n < 64 ? 301 : 131;
    for (const int sign : {1, -1}) {
      const WideTerms a = Filled(n, count, [](int, int) { return kLargest; });
      const WideTerms b = Filled(n, count, [&](int, int) { return sign * kLargest; });
      ExpectExact(*GetParam(), a, b, 0, count - 1, count - 1, n + 1);
      ExpectExact(*GetParam(), a, b, 1, count / 2, count - 1, n + 1);
      ExpectExactSquare(*GetParam(), b, 0, count - 1, n + 1);
    }
  }
}

// Products whose high and low parts are both as large as can be: many more than 64 bits hold
TEST_P(Columns, AreExactForManyTerms)
{
  constexpr int kDigits = 42, kCount = 800;
  const WideTerms a = Filled(kDigits, kCount, [](int, int) { return kLargest; });
  for (const std::int64_t digit : {kLargest - 1, 1 - kLargest}) {
    const WideTerms b = Filled(kDigits, kCount, [&](int, int) { return digit; });
    const mpz_class expected = kCount * ExactProduct(a, 0, b, 0, kDigits + 1);
    std::vector<std::int64_t> digits(kDigits + 2);
    GetParam()->sumProducts(a, b, 0, kCount - 1, kCount - 1, kDigits + 1, digits.data());
    ExpectBalanced(digits);
    EXPECT_EQ(expected, Whole(digits));
  }
}

// Ranges of every length, and terms with every number of zeros before
TEST_P(Columns, AreExactForDigitsAtRandom)
{
  std::mt19937_64 random(20240229);
  const auto digit = [&](int k, int i) -> std::int64_t {
    if (i < k / 3) return 0;  // terms that fall
    return static_cast<std::int64_t>(random() % (2 * kLargest)) - kLargest;
  };
  for (const int n : {2, 5, 6}) {
    const WideTerms a = Filled(n, 18, digit), b = Filled(n, 18, digit);
    for (int k = 0; k < 18; ++k) {
      for (int first = 0; first <= k; ++first) {
        for (int last = first; last <= k; ++last)
          ExpectExact(*GetParam(), a, b, first, last, k, n + 1);
        if (2 * first <= k) ExpectExactSquare(*GetParam(), a, first, k, n + 1);
      }
    }
  }
}

// More and fewer columns than a term has digits: zeros stand before and behind these.
TEST_P(Columns, AreExactForEveryNumberOfColumns)
{
  std::mt19937_64 random(20240301);
  const auto digit = [&](int, int) {
    return static_cast<std::int64_t>(random() % (2 * kLargest)) - kLargest;
  };
  for (const int n : {1, 2, 3, 4, 7, 8, 19, 20, 23, 24, 41}) {
    const WideTerms a = Filled(n, 4, digit), b = Filled(n, 4, digit);
    for (int columns = 1; columns <= n + 3; ++columns) {
      ExpectExact(*GetParam(), a, b, 0, 3, 3, columns);
      ExpectExactSquare(*GetParam(), a, 0, 2, columns);
    }
  }
}

/// The sum of products of rows in columns before `columns`, digit by digit.
mpz_class ExactRows(const std::vector<RowProduct>& products, int columns)
{
  mpz_class sum;
  for (int c = 0; c < columns; ++c) {
    sum <<= kWideDigitBits;
    for (const auto& [x, xCount, y, column] : products) {
      for (int i = 0; i < xCount && column + i <= c; ++i)
        sum += mpz_class(x[i]) * mpz_class(y[c - column - i]);
    }
  }
  return sum;
}

// Short and long rows, the second ones with zeros first, some behind all columns
TEST_P(Columns, AreExactForRows)
{
  std::mt19937_64 random(20240302);
  for (const int n : {1, 3, 7, 20, 41}) {
    const WideTerms terms = Filled(n, 6, [&](int k, int i) -> std::int64_t {
      if (i < k) return 0;
      return k % 2 == 0 ? kLargest : static_cast<std::int64_t>(random() % kLargest) - kLargest / 2;
    });
    const std::vector<double> x(n + 1, -static_cast<double>(kLargest));
    for (int columns = n + 1; columns <= n + 3; ++columns) {
      std::vector<RowProduct> products;
      for (int i = 0; i < kMostRowProducts; ++i) {
        const int k = i % 6, leading = terms.leading[k], column = leading + i / 6;
        products.push_back({x.data(), 1 + i % (n + 1), terms.Row(k) + leading, column});
      }
      std::vector<std::int64_t> digits(columns + 1);
      GetParam()->sumRows(products.data(), kMostRowProducts, columns, digits.data());
      ExpectBalanced(digits);
      EXPECT_EQ(ExactRows(products, columns), Whole(digits)) << columns << " columns of " << n;
    }
  }
}

// Terms that fall and rise again, and zeros among them: what a kernel leaves out of eight terms is
// zeros of all of them.
TEST_P(Columns, AreExactForTermsOfAnySize)
{
  std::mt19937_64 random(20240303);
  for (const int n : {3, 7, 8, 11, 20}) {
    const auto digit = [&](int k, int i) -> std::int64_t {
      const int zeros = k % 5 == 4 ? n : static_cast<int>(random() % 2) + std::abs(k - 15) / 3;
      if (i < zeros) return 0;
      return static_cast<std::int64_t>(random() % (2 * kLargest)) - kLargest;
    };
    const WideTerms a = Filled(n, 40, digit), b = Filled(n, 40, digit);
    for (int k = 2; k < 40; ++k) {
      for (const int columns : {1, n / 2 + 1, n, n + 1}) {
        ExpectExact(*GetParam(), a, b, 0, k, k, columns);
        ExpectExact(*GetParam(), a, b, 1, k, k, columns);
        ExpectExactSquare(*GetParam(), a, 0, k, columns);
        ExpectExactSquare(*GetParam(), a, 1, k, columns);
      }
    }
  }
}

// Where one of them keeps no tiles, as the powers of an offset.
TEST_P(Columns, NeedNoTiles)
{
  const auto digit = [](int k, int i) { return std::int64_t{1000} * k - i; };
  const WideTerms a = Filled(6, 9, digit);
  WideTerms b = Filled(6, 9, digit);
  b.tiles.reset();
  ExpectExact(*GetParam(), a, b, 0, 8, 8, 7);
  ExpectExact(*GetParam(), b, a, 0, 8, 8, 7);
  ExpectExactSquare(*GetParam(), b, 0, 8, 7);
}

INSTANTIATE_TEST_SUITE_P(Kernels, Columns, testing::ValuesIn(support::ColumnKernels()));

TEST(BestColumnKernel, IsTheLastOneThatIsThere)
{
  EXPECT_EQ(support::ColumnKernels().back(), &BestColumnKernel());
}

}  // namespace
}  // namespace varno::solve
