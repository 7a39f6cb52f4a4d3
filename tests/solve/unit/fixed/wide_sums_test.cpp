// Sums over a step against exact rationals.

#include "solve/fixed/wide_sums.h"

#include <random>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

#include "solve/number/real.h"
#include "tests/solve/support/wide_terms.h"

namespace varno::solve {
namespace {

using support::FilledTerms;

constexpr std::int64_t kLargest = support::kLargestDigit;
constexpr std::int64_t kOne = std::int64_t{1} << kWideDigitBits;  // r = 1

/// So many digits as one number, in units of the last of them
template <class Number>
mpz_class Whole(const Number* digits, int count)
{
  mpz_class whole;
  for (int i = 0; i < count; ++i) {
    whole <<= kWideDigitBits;
    whole += mpz_class(digits[i]);
  }
  return whole;
}

struct Sums {
  mpq_class sum, slope;
};

/// In units of digit n, the first one behind those of the terms
Sums ExactSums(std::int64_t fraction, const WideTerms& a, int last)
{
  const mpq_class r = mpq_class(fraction) / mpq_class(kOne);
  Sums sums;
  for (int k = last; k > 0; --k) {
    sums.slope = sums.slope * r + sums.sum;
    sums.sum = sums.sum * r + Whole(a.Row(k), a.n + 1);
  }
  sums.slope = sums.slope * r + sums.sum;
  sums.sum *= r;
  return sums;
}

void ExpectWithin(const mpq_class& exact, const std::vector<std::int64_t>& digits, double units)
{
  const mpq_class error = exact - Whole(digits.data(), static_cast<int>(digits.size()));
  EXPECT_GE(error, 0);
  EXPECT_LT(error, units);
  for (std::size_t i = 1; i < digits.size(); ++i)
    EXPECT_TRUE(digits[i] >= -kLargest && digits[i] < kLargest) << "digit " << i;
}

void ExpectSums(std::int64_t fraction, const WideTerms& a, int last)
{
  SCOPED_TRACE(testing::Message() << last << " terms of " << a.n << " digits, r = " << fraction
                                  << " / 2^51");
  std::vector<std::int64_t> sum(a.n + 2), slope(a.n + 2), alone(a.n + 2);
  wide::SumAt(fraction, a, last, alone.data());
  wide::SumAndSlopeAt(fraction, a, last, sum.data(), slope.data());
  EXPECT_EQ(alone, sum);
  const Sums exact = ExactSums(fraction, a, last);
  ExpectWithin(exact.sum, sum, last);
  // An error of a sum goes into as many products as it has terms behind.
  ExpectWithin(exact.slope, slope, 0.5 * last * (last + 1));
}

constexpr std::int64_t kFractions[] = {1, 12345, kOne / 3, kOne / 2, kOne - 1};

TEST(WideSums, AreWrongByAUnitForEachFactor)
{
  std::mt19937_64 random(20261126);
  for (const int n : {1, 2, 7, 20}) {
    const auto digit = [&](int k, int i) -> std::int64_t {
      if (i < k / 9) return 0;
      return static_cast<std::int64_t>(random() % (2 * kLargest)) - kLargest;
    };
    const WideTerms a = FilledTerms(n, 60, digit);
    for (const std::int64_t fraction : kFractions) {
      for (const int last : {1, 2, 15, 16, 17, 59}) ExpectSums(fraction, a, last);
    }
  }
}

// Terms that do not fall and have one sign: the largest sums that there can be, with a digit before
TEST(WideSums, AreRightForExtremeDigits)
{
  for (const std::int64_t largest : {kLargest, -kLargest}) {
    const WideTerms a = FilledTerms(3, 2001, [&](int, int) { return largest; });
    for (const std::int64_t fraction : kFractions) {
      ExpectSums(fraction, a, 100);
      ExpectSums(fraction, a, 2000);
    }
  }
}

TEST(WideSums, FractionsAreWholeNumbersBelowOne)
{
  const auto fractionOf = [](double x) {
    Real r(60);
    mpfr_set_d(r, x, MPFR_RNDN);
    return wide::FractionOf(r);
  };
  EXPECT_EQ(kOne / 2, fractionOf(0.5));
  EXPECT_EQ(kOne / 8 * 3, fractionOf(0.375));
  EXPECT_EQ(kOne - 1, fractionOf(1 - 0x1p-51));
  EXPECT_EQ(1, fractionOf(0x1p-51));
  EXPECT_EQ(0, fractionOf(0x1p-52)) << "no whole number";
  EXPECT_EQ(0, fractionOf(0.5 + 0x1p-52)) << "no whole number";
  EXPECT_EQ(0, fractionOf(1));
  EXPECT_EQ(0, fractionOf(1.5));
  EXPECT_EQ(0, fractionOf(0));
  EXPECT_EQ(0, fractionOf(-0.5));
}

}  // namespace
}  // namespace varno::solve
