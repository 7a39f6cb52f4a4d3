#include "solve/fixed/wide_settled.h"

namespace varno::solve {

bool StoreSettledMultiple(WideTerms& terms, int m, int whole, const WideTerms& from, int k)
{
  const double digit = whole;
  return StoreScaled(BestColumnKernel(), terms, m, WideRowView(digit), DigitsOf(from, k));
}

int StoreSettledPowers(WideTerms& terms, int first, const WideRow& factor)
{
  const ColumnKernel& kernel = BestColumnKernel();
  for (int k = first - 1; k >= 0; --k) {
    if (!StoreScaled(kernel, terms, k, factor, DigitsOf(terms, k + 1))) return first - 1 - k;
  }
  return first;
}

}  // namespace varno::solve
