#pragma once

#include <span>

#include "solve/fixed/wide_terms.h"

namespace varno::solve::wide {

/// Sets logs to log2 of the terms from the first on, right to 1e-8: -infinity for 0, that of a unit
/// for what is too small to be seen. Returns the largest of them. The same digits on all
/// processors; four at a time where there is AVX2.
double FindLogs(const WideTerms& terms, int first, std::span<double> logs);

/// The same one by one.
double FindLogsSingly(const WideTerms& terms, int first, std::span<double> logs);

}  // namespace varno::solve::wide
