#include "solve/fixed/narrow_settled.h"

#include <algorithm>

namespace varno::solve {

using namespace narrow;

NarrowSums NarrowSums::OfProducts(const NarrowTerms& a, const NarrowTerms& b, int first, int last,
                                  int k)
{
  const std::int64_t *aHigh = a.high.data(), *aLow = a.low.data();
  const std::int64_t *bHigh = b.high.data() + k, *bLow = b.low.data() + k;
  // Locals: the sums stay in registers.
  Int128 highSum = 0, crossSum = 0;
  for (std::ptrdiff_t j = first; j <= last; ++j) {
    highSum += static_cast<Int128>(aHigh[j]) * bHigh[-j];
    crossSum += static_cast<Int128>(aHigh[j]) * bLow[-j];
    crossSum += static_cast<Int128>(aLow[j]) * bHigh[-j];
  }
  return {highSum, crossSum};
}

NarrowSums NarrowSums::OfProducts(const NarrowTerms& a, int first, int k)
{
  NarrowSums sums = OfProducts(a, a, first, k > 0 ? (k - 1) / 2 : -1, k);
  sums.highs *= 2;
  sums.crosses *= 2;
  if (k % 2 == 0 && k / 2 >= first) {
    const std::int64_t high = a.high[k / 2];
    sums.highs += static_cast<Int128>(high) * high;
    sums.crosses += 2 * (static_cast<Int128>(high) * a.low[k / 2]);
  }
  return sums;
}

namespace narrow {

NarrowRatio RatioIn(const NarrowFactor& factor, long from, long to, long up)
{
  const Int128 mantissa = Joined(factor.high, factor.low);
  const long shift = RatioBits(factor, from, to) - up;
  Unnoted lost;
  return RatioOf(shift < 0 ? ShiftRight(mantissa, -shift, lost) : mantissa << shift);
}

}  // namespace narrow

int StoreSettledPowers(NarrowTerms& terms, int first, const NarrowFactor& factor)
{
  if (!terms.IsSettled()) return 0;
  const long up =
      std::max(0L, RatioBits(factor, terms.exponent, terms.exponent) - NarrowRatio::kMostBits);
  if (!IsShift(up)) return 0;
  const NarrowRatio ratio = RatioIn(factor, terms.exponent, terms.exponent, up);
  for (int k = first - 1; k >= 0; --k) {
    NarrowSums product;
    product.Add(terms.high[k + 1], terms.low[k + 1], ratio);
    if (!StoreSettled(terms, k, product.Total(), static_cast<int>(up))) return first - 1 - k;
  }
  return first;
}

}  // namespace varno::solve
