#include "solve/fixed/wide_sums.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "solve/fixed/columns.h"
#include "solve/fixed/int128.h"

namespace varno::solve::wide {

namespace {

/// Without carries a digit grows by less than 2^52 with each term, and one of a slope by the digit
/// of the sum: after so many terms both are below 2^60.
constexpr int kTermsBetweenCarries = 16;

/// digits = r digits + others, for the digits from the first to the last. No digit waits for a
/// carry: a product of 128 bits is split, and half of it goes to the next digit.
template <class Number>
void MultiplyAndAdd(std::int64_t* digits, int first, int last, std::int64_t fraction,
                    const Number* others)
{
  constexpr std::int64_t kDigit = (std::int64_t{1} << kWideDigitBits) - 1;
  std::int64_t low = 0;
  for (int i = first; i <= last; ++i) {
    const Int128 product = static_cast<Int128>(digits[i]) * fraction;
    digits[i] = static_cast<std::int64_t>(others[i]) +
                static_cast<std::int64_t>(product >> kWideDigitBits) + low;
    low = static_cast<std::int64_t>(product) & kDigit;
  }
}

template <bool kWithSlope>
void SumTerms(std::int64_t fraction, const WideTerms& a, int last, std::int64_t* sum,
              std::int64_t* slope)
{
  const int end = a.n + 1;
  std::fill_n(sum, end + 1, 0);
  if constexpr (kWithSlope) std::fill_n(slope, end + 1, 0);
  int first = end;
  for (int k = last, untilCarry = kTermsBetweenCarries; k > 0; --k) {
    first = std::min(first, a.leading[k] + 1);
    if constexpr (kWithSlope) MultiplyAndAdd(slope, first, end, fraction, sum);
    MultiplyAndAdd(sum, first, end, fraction, a.Row(k) - 1);
    if (--untilCarry > 0) continue;
    CarryUp(sum, end);
    if constexpr (kWithSlope) CarryUp(slope, end);
    first = std::max(0, first - 1);
    untilCarry = kTermsBetweenCarries;
  }
  // So far, the sum of a[k] r^(k-1) and its derivative: the product with r is still to come.
  if constexpr (kWithSlope) {
    MultiplyAndAdd(slope, 0, end, fraction, sum);
    CarryUp(slope, end);
  }
  constexpr std::array<std::int64_t, kMostColumns + 2> kNothing{};
  MultiplyAndAdd(sum, 0, end, fraction, kNothing.data());
  CarryUp(sum, end);
}

}  // namespace

std::int64_t FractionOf(mpfr_srcptr r)
{
  if (mpfr_sgn(r) <= 0 || mpfr_get_exp(r) > 0) return 0;
  if (mpfr_get_exp(r) - mpfr_min_prec(r) < -kWideDigitBits) return 0;
  return static_cast<std::int64_t>(std::ldexp(mpfr_get_d(r, MPFR_RNDN), kWideDigitBits));
}

void SumAt(std::int64_t fraction, const WideTerms& a, int last, std::int64_t* sum)
{
  SumTerms<false>(fraction, a, last, sum, nullptr);
}

void SumAndSlopeAt(std::int64_t fraction, const WideTerms& a, int last, std::int64_t* sum,
                   std::int64_t* slope)
{
  SumTerms<true>(fraction, a, last, sum, slope);
}

}  // namespace varno::solve::wide
