// Logarithms of terms: four at a time against one by one, and these against MPFR's numbers.

#include "solve/fixed/wide_logs.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "solve/evaluation/size.h"
#include "solve/fixed/wide.h"
#include "solve/number/real.h"

namespace varno::solve {
namespace {

constexpr int kDigits = 6;

/// Terms with any number of zeros first, extreme digits, zeros that are exact, and others.
WideTerms Terms(int count, long exponent)
{
  std::mt19937_64 random(7);
  WideTerms terms;
  terms.Reserve(kDigits, count);
  terms.started = true;
  terms.exponent = exponent;
  std::vector<std::int64_t> row(kDigits);
  for (int k = 0; k < count; ++k) {
    const int zeros = static_cast<int>(random() % (kDigits + 1));
    for (int i = 0; i < kDigits; ++i) {
      const std::int64_t extreme = k % 2 == 0 ? wide::kHalfDigit : -wide::kHalfDigit;
      const auto any = static_cast<std::int64_t>(random() >> 14) - wide::kHalfDigit;
      row[static_cast<std::size_t>(i)] = i < zeros ? 0 : k % 3 == 0 ? extreme : any;
    }
    terms.Set(k, row.data());
    if (zeros == kDigits) terms.SetZero(k, k % 2 == 0);
  }
  return terms;
}

TEST(WideLogs, AreTheSameByVectors)
{
  for (const long exponent : {0L, -3L, 1L << 40, -(1L << 40)}) {
    for (const int count : {1, 3, 4, 5, 63, 64, 65, 130}) {
      const WideTerms terms = Terms(count, exponent);
      for (int first = 0; first < std::min(count, 6); ++first) {
        std::vector<double> singly(static_cast<std::size_t>(count - first)), fast = singly;
        const double largest = wide::FindLogsSingly(terms, first, singly);
        EXPECT_EQ(wide::FindLogs(terms, first, fast), largest);
        EXPECT_EQ(fast, singly) << count << " terms from " << first;
        EXPECT_EQ(largest, *std::max_element(singly.begin(), singly.end()));
      }
    }
  }
}

TEST(WideLogs, AreThoseOfTheTerms)
{
  constexpr int kCount = 300;
  const WideTerms terms = Terms(kCount, 7);
  std::vector<double> logs(kCount);
  wide::FindLogs(terms, 0, logs);
  const WideArithmetic<8> arithmetic(kDigits, kIntegerColumns);
  Real number(400);
  for (int k = 0; k < kCount; ++k) {
    const auto place = static_cast<std::size_t>(k);
    if (terms.IsExactZero(k)) {
      EXPECT_EQ(-std::numeric_limits<double>::infinity(), logs[place]);
    } else if (terms.leading[place] == kDigits) {
      EXPECT_EQ(arithmetic.UnitLog2(terms.exponent), logs[place]);
    } else {
      arithmetic.ToNumber(arithmetic.Load(terms, k), number);
      EXPECT_NEAR(Log2Size(number), logs[place], 1e-8) << k;
    }
  }
}

}  // namespace
}  // namespace varno::solve
