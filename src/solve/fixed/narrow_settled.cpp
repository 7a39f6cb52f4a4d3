#include "solve/fixed/narrow_settled.h"

#include <algorithm>

namespace varno::solve {

using namespace narrow;

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
  const TermShift shift(static_cast<int>(up));
  for (int k = first - 1; k >= 0; --k) {
    NarrowSums product;
    product.Add(terms.high[k + 1], terms.low[k + 1], ratio);
    if (!StoreSettled(terms, k, product.Total(), shift)) return first - 1 - k;
  }
  return first;
}

}  // namespace varno::solve
