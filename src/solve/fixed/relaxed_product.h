#pragma once

#include <functional>
#include <vector>

#include "solve/fixed/long_terms.h"

namespace varno::solve {

/// Which terms of two series a sum of products takes: a[j] b[k-j] for j >= aFirst, k - j >= bFirst.
struct TermRange {
  int aFirst, bFirst;
};

/// The sums of a[j] b[k-j] for one k after the other, while the terms of a and b are found: the sum
/// k is asked for when the terms that stand in it are known, no others.
///
/// J. van der Hoeven, Relax, but don't be too lazy, Journal of Symbolic Computation 34, 2002: the
/// products with a block of 2^m terms that has just become known are made at once, for the 2^m sums
/// that follow.
class RelaxedProduct {
 public:
  /// Blocks of fewer terms are multiplied term by term.
  static constexpr int kLeastBlock = 8;

  /// Begins anew.
  void Reset() { settled = known = 0; }
  /// The sum k; k grows by one from call to call. For a square, b is a. `poll` is called while
  /// blocks are multiplied.
  LongSum Sum(int n, const LongTerms& a, const LongTerms& b, TermRange range, int k,
              const std::function<void()>& poll);

 private:
  struct Factors {
    const LongTerms &a, &b;
    TermRange range;
    bool isSquare;
  };
  mp_limb_t* Row(int n, int i) { return &sums[static_cast<std::size_t>(LongSum::Size(n)) * i]; }
  void Rescale(int n, long exponent);
  void Grow(int n, const Factors& factors, int count, const std::function<void()>& poll);
  void AddBlocks(int n, const Factors& factors, int i, int from, int to,
                 const std::function<void()>& poll);
  void AddTerms(int n, const Factors& factors, int i);

  std::vector<mp_limb_t> sums;     // row i: that of k = i + aFirst + bFirst
  std::vector<mp_limb_t> scratch;  // for one product
  int known = 0;                   // the rows before were asked for
  int settled = 0;                 // rows that there are: all earlier blocks are in them
  long exponent = 0;               // of the products in them
};

}  // namespace varno::solve
