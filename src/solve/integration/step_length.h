#pragma once

#include <mpfr.h>

#include "solve/number/moment.h"

namespace varno::solve {

/// The length of a step, mantissa * 2^exponent with a mantissa of few bits: times that are sums of
/// steps stay short. Always positive.
struct StepLength {
  long mantissa;
  long exponent;

  /// The largest such number that is not above 2^log2.
  static StepLength AtMost(double log2);
  double Log2() const;
  /// Sets result to the length in units of 2^unitExponent.
  void InUnits(long unitExponent, mpfr_ptr result) const;
  Moment ToMoment() const;
};

}  // namespace varno::solve
