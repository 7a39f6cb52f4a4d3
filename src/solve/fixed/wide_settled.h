#pragma once

#include "solve/fixed/wide_row.h"

namespace varno::solve {

/// Stores a whole number other than 0 times term k of another series as term m of a settled one.
/// False, and nothing is stored, if that one is not settled or the term 0 or too large.
bool StoreSettledMultiple(WideTerms& terms, int m, int whole, const WideTerms& from, int k);

/// Stores the terms before the first, which is there, each the product of the one behind it with a
/// factor, as long as they are not 0 and fit; returns how many.
int StoreSettledPowers(WideTerms& terms, int first, const WideRow& factor);

template <int kMostDigits>
int StoreSettledPowers(WideTerms& terms, int first, const WideValue<kMostDigits>& factor)
{
  return factor.isZero ? 0 : StoreSettledPowers(terms, first, RowOf(factor, terms.n));
}

}  // namespace varno::solve
