#pragma once

#include <optional>
#include <span>

#include "solve/quick/number.h"

namespace varno::solve::quick {

/// log2 of the longest step, in units of the scale of a line's terms, for which they fall as they
/// should with a tolerance of 2^-toleranceBits: of each of the last orders k that have terms that
/// are not zero the most over some first terms j of
/// (tol |c_j| / |c_k|)^(1/(k-j)) * tol^(1/p - 1/k), and of these the least (Jorba and Zou 2005). None where
/// too few terms are shown.
std::optional<double> StepBound(std::span<const Number> terms, double toleranceBits);

}  // namespace varno::solve::quick
