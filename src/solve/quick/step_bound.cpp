#include "solve/quick/step_bound.h"

#include <algorithm>
#include <array>
#include <limits>

namespace varno::solve::quick {

namespace {

/// The radius of convergence is taken from this many terms that are not zero.
constexpr int kTermsForRadius = 5;
/// Of the first terms so many are looked at. With more the step could only be longer.
constexpr int kFirstTerms = 8;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

std::optional<double> StepBound(std::span<const Number> terms, double toleranceBits)
{
  const int order = static_cast<int>(terms.size()) - 1;
  std::array<double, kFirstTerms> first;
  const int firstCount = std::min(kFirstTerms, order);
  for (int j = 0; j < firstCount; ++j) first[j] = Log2Roughly(terms[j]);

  double lowest = kInfinity;
  int found = 0;
  for (int k = order; k > 0 && found < kTermsForRadius; --k) {
    if (terms[k] == 0) continue;
    ++found;
    const double needed = Log2Roughly(terms[k]) + toleranceBits;
    double longest = -kInfinity;
    for (int j = 0; j < std::min(firstCount, k); ++j)
      longest = std::max(longest, (first[j] - needed) / (k - j));
    // The first of all terms that are not zero says nothing by itself.
    if (longest == -kInfinity) continue;
    lowest = std::min(lowest, longest + toleranceBits * (1.0 / k - 1.0 / order));
  }
  if (found < kTermsForRadius || lowest == kInfinity) return std::nullopt;
  return lowest;
}

}  // namespace varno::solve::quick
