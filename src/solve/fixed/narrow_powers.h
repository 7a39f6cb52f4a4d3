#pragma once

#include <cstdint>
#include <vector>

#include <mpfr.h>

#include "solve/fixed/narrow_values.h"

namespace varno::solve {

/// The powers of an offset r between 0 and 1 with few digits, as the ends of nearly all steps have:
/// sums of series over a step are sums of products with them.
///
/// A power is wrong by less than a unit of 2^-118 for each factor.
class NarrowPowers {
 public:
  /// The sums over k = 1..last of a[k] r^k, and of k a[k] r^(k-1).
  struct SumWithSlope {
    NarrowValue sum, slope;
  };
  /// Derivatives of more terms may not fit.
  static constexpr int kMostTermsOfSlopes = 44;

  /// Computes the powers 0..last-1, if they are not there; false if 2^64 r is not a whole number
  /// below 2^64.
  bool Set(mpfr_srcptr r, int last);

  /// The sum over k = 1..last of a[k] r^k, of a series that has lost bits.
  NarrowValue Sum(const NarrowTerms& a, int last) const;
  /// The same with its derivative, which is wrong by up to 2^10 units for each term, for last <=
  /// kMostTermsOfSlopes.
  SumWithSlope SumAndSlope(const NarrowTerms& a, int last) const;

 private:
  NarrowValue TimesOffset(Int128 sum, long exponent) const;

  std::uint64_t fraction = 0;           // 2^64 r
  std::vector<std::int64_t> high, low;  // of r^j, in units of 2^-118
};

}  // namespace varno::solve
