#pragma once

#include <cstddef>
#include <vector>

#include "solve/fixed/narrow_settled.h"

namespace varno::solve {

/// Terms of a settled series that is a sum of others, each times a constant.
///
/// As long as no exponent changes each constant is a ratio, so that a term takes two or three
/// products of words for each operand, and one rounding for all. Where the operands cancel, their
/// sum is counted in larger units: what is dropped is then less than a unit of an operand, times
/// its constant.
class NarrowScaledSum {
 public:
  /// Sums of so many operands at most; longer ones would drop too much.
  static constexpr std::size_t kMostOperands = 100;

  bool IsEmpty() const { return operands.empty(); }
  /// Adds factor * a, where a outlives this.
  void Add(const NarrowTerms& a, const NarrowFactor& factor);
  /// Fits the ratios to the exponents that the operands and the sum have now, and to where their
  /// terms are; false if it cannot be used with these.
  bool Prepare(const NarrowTerms& sum);
  /// Term k as sums of digits, in units of 2^Up() units of the sum.
  [[gnu::always_inline]] NarrowSums Term(int k) const;
  int Up() const { return up; }

 private:
  struct Operand {
    const NarrowTerms* terms;
    NarrowFactor factor;
  };
  /// Ratio times digits
  struct Product {
    const std::int64_t *high, *low;
    NarrowRatio ratio;
  };

  std::vector<Operand> operands;
  std::vector<Product> products;      // prepared, those with a low digit 0 first
  const Product* longOnes = nullptr;  // the first of the others
  int up = 0;                         // log2 of the units counted in
};

inline NarrowSums NarrowScaledSum::Term(int k) const
{
  NarrowSums sums;
  const Product *a = products.data(), *const end = a + products.size();
  while (a != longOnes) {
    sums.AddShort(a->high[k], a->low[k], a->ratio);
    ++a;
  }
  while (a != end) {
    sums.Add(a->high[k], a->low[k], a->ratio);
    ++a;
  }
  return sums;
}

}  // namespace varno::solve
