// Logarithms of terms: four at a time against one by one, and these against the standard library.

#include "solve/fixed/narrow_logs.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "solve/fixed/narrow.h"

namespace varno::solve {
namespace {

/// Terms of all lengths, with extreme digits, zeros that are exact, and others.
NarrowTerms Terms(int count, long exponent)
{
  std::mt19937_64 random(5);
  NarrowTerms terms;
  NarrowArithmetic::Reserve(terms, count);
  NarrowArithmetic::Reset(terms, exponent);
  terms.started = true;
  terms.exponent = exponent;
  for (int k = 0; k < count; ++k) {
    const int length = static_cast<int>(random() % 120);
    const Int128 any = (static_cast<Int128>(random() >> 1) << 64) + static_cast<Int128>(random());
    const Int128 size = any & ((static_cast<Int128>(1) << length) - 1);
    const Int128 power = static_cast<Int128>(1) << std::max(0, length - 1);
    const Int128 mantissa = k % 5 == 0 ? power : k % 5 == 1 ? power - 1 : size;
    narrow::SetDigits(terms, k, k % 2 == 0 ? mantissa : -mantissa);
    terms.exactZero[static_cast<std::size_t>(k)] = k % 7 == 3 ? 1 : 0;
    if (k % 7 == 3) narrow::SetDigits(terms, k, 0);
  }
  return terms;
}

TEST(NarrowLogs, AreTheSameByVectors)
{
  for (const long exponent : {0L, -3L, 1L << 40, -(1L << 40)}) {
    for (int count = 1; count < 60; ++count) {
      const NarrowTerms terms = Terms(count, exponent);
      for (int first = 0; first < std::min(count, 6); ++first) {
        std::vector<double> singly(static_cast<std::size_t>(count - first)), fast = singly;
        const double largest = narrow::FindLogsSingly(terms, first, singly);
        EXPECT_EQ(narrow::FindLogs(terms, first, fast), largest);
        EXPECT_EQ(fast, singly) << count << " terms from " << first;
        EXPECT_EQ(largest, *std::max_element(singly.begin(), singly.end()));
      }
    }
  }
}

TEST(NarrowLogs, AreThoseOfTheTerms)
{
  constexpr int kCount = 400;
  const NarrowTerms terms = Terms(kCount, 7);
  std::vector<double> logs(kCount);
  narrow::FindLogs(terms, 0, logs);
  for (std::size_t k = 0; k < kCount; ++k) {
    if (terms.exactZero[k] != 0) {
      EXPECT_EQ(logs[k], -std::numeric_limits<double>::infinity());
      continue;
    }
    const double size = std::abs(static_cast<double>(narrow::Joined(terms.high[k], terms.low[k])));
    EXPECT_NEAR(logs[k], std::log2(std::max(size, 1.0)) + 7 - 120, 2e-8) << k;
  }
}

}  // namespace
}  // namespace varno::solve
