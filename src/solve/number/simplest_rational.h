#pragma once

#include "solve/number/rational.h"

namespace varno::solve {

/// The fraction between two others, ends included, with the smallest denominator, and of these the
/// one nearest to 0: 1/3 between 0.33 and 0.34. low <= high.
Rational SimplestBetween(const Rational& low, const Rational& high);

}  // namespace varno::solve
