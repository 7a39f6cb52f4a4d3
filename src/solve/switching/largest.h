#pragma once

#include <vector>

namespace varno::solve {

/// The largest |p(x)| for x from `begin` to `end`, where p has these coefficients, from that of x^0
/// on: to about ten digits, by bounds over halves of what is left (branch and bound).
double LargestMagnitude(const std::vector<double>& coefficients, double begin, double end);

}  // namespace varno::solve
