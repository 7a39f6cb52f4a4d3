#pragma once

#include <vector>

#include "solve/number/real.h"

namespace varno::solve::support {

/// Terms 0..n of a series, to check recurrences against: every operation here is the definition
/// written down, at a precision far above that of what is checked.
using PowerSeries = std::vector<Real>;

inline constexpr mpfr_prec_t kReferenceBits = 4000;

PowerSeries Plus(const PowerSeries& a, const PowerSeries& b);
PowerSeries Minus(const PowerSeries& a, const PowerSeries& b);
/// The Cauchy product.
PowerSeries Times(const PowerSeries& a, const PowerSeries& b);
PowerSeries Times(const PowerSeries& a, mpfr_srcptr factor);
/// By repeated products; exponent >= 0.
PowerSeries ToThe(const PowerSeries& a, int exponent);
/// k times term k: the terms of scale (t - t0) u', whatever the scale.
PowerSeries Derivative(const PowerSeries& a);
/// value, 0, 0, ...
PowerSeries ConstantSeries(mpfr_srcptr value, std::size_t size);
PowerSeries ConstantSeries(long value, std::size_t size);

/// log2 of the largest term.
double LargestLog2(const PowerSeries& a);

}  // namespace varno::solve::support
