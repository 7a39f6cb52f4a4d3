// Sums of products of digits against exact integers.

#include "solve/fixed/columns.h"

#include <random>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr std::int64_t kLargest = std::int64_t{1} << (kWideDigitBits - 1);

WideTerms Reserved(int n, int count)
{
  WideTerms terms;
  terms.Reserve(n, count);
  terms.started = true;
  return terms;
}

/// All digits of all terms set by a function of k and i.
template <class Digit>
WideTerms Filled(int n, int count, Digit digit)
{
  WideTerms terms = Reserved(n, count);
  std::vector<std::int64_t> row(n);
  for (int k = 0; k < count; ++k) {
    for (int i = 0; i < n; ++i) row[i] = digit(k, i);
    terms.Set(k, row.data());
  }
  return terms;
}

mpz_class Whole(Int128 x)
{
  mpz_class high = static_cast<long>(x >> 64);
  const mpz_class low = static_cast<unsigned long>(static_cast<std::uint64_t>(x));
  high <<= 64;
  return high + low;
}

void ExpectExact(ColumnKernel kernel, const WideTerms& a, const WideTerms& b, int first, int last,
                 int k)
{
  const int n = a.n;
  std::vector<mpz_class> expected(n + 1);
  for (int j = first; j <= last; ++j) {
    for (int i = 0; i < n; ++i) {
      for (int m = 0; m < n && i + m <= n; ++m) {
        const mpz_class x = static_cast<long>(a.digits[static_cast<std::size_t>(j) * n + i]);
        const mpz_class y = static_cast<long>(b.digits[static_cast<std::size_t>(k - j) * n + m]);
        expected[i + m] += x * y;
      }
    }
  }
  std::vector<Int128> columns(n + 1);
  kernel(a, b, first, last, k, columns.data());
  for (int c = 0; c <= n; ++c)
    EXPECT_EQ(expected[c], Whole(columns[c])) << "column " << c << " of " << n << ", order " << k;
}

class Columns : public testing::TestWithParam<ColumnKernel> {};

// As far as digits can go, of either sign, so many that 64 bits overflow without care
TEST_P(Columns, AreExactForExtremeDigits)
{
  for (const int n : {1, 3, 7, 21, 64}) {
    const int count = n < 64 ? 301 : 131;
    for (const int sign : {1, -1}) {
      const WideTerms a = Filled(n, count, [](int, int) { return kLargest; });
      const WideTerms b = Filled(n, count, [&](int, int) { return sign * kLargest; });
      ExpectExact(GetParam(), a, b, 0, count - 1, count - 1);
      ExpectExact(GetParam(), a, b, 1, count / 2, count - 1);
    }
  }
}

// Ranges of every length, so that every rest behind the last whole vector is met
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
      for (int first = 0; first <= k; ++first)
        for (int last = first; last <= k; ++last) ExpectExact(GetParam(), a, b, first, last, k);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Plain, Columns, testing::Values(SumColumns));
INSTANTIATE_TEST_SUITE_P(Best, Columns, testing::Values(BestColumnKernel()));

}  // namespace
}  // namespace varno::solve
