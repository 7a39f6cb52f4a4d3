#pragma once

#include <cstdint>

#include <mpfr.h>

#include "solve/fixed/wide_terms.h"

namespace varno::solve::wide {

/// 2^51 r, where that is a whole number between 0 and 2^51, as for the ends of nearly all steps;
/// else 0.
std::int64_t FractionOf(mpfr_srcptr r);

/// Sums over a step by Horner's scheme, at an offset r with such a fraction: each term takes a
/// product of n + 1 digits with one.
///
/// Sums have n + 1 digits like those of the terms, and one before: digits[1 + i] times
/// 2^(51 (exponent - 1 - i)). All but the first are balanced. They are too small by less than a
/// unit of the last digit for each factor r.

/// The sum over k = 1..last of a[k] r^k, last > 0
void SumAt(std::int64_t fraction, const WideTerms& a, int last, std::int64_t* sum);
/// The same, and that of k a[k] r^(k-1)
void SumAndSlopeAt(std::int64_t fraction, const WideTerms& a, int last, std::int64_t* sum,
                   std::int64_t* slope);

}  // namespace varno::solve::wide
