#include "solve/quick/step_bound.h"

#include <algorithm>
#include <array>
#include <limits>

namespace varno::solve::quick {

namespace {

/// The radius of convergence is taken from this many terms that are not zero.
constexpr int kTermsForRadius = 5;
/// Of the first terms so many are looked at: with more the step could only be longer. No order is
/// as low.
constexpr int kFirstTerms = 8;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

StepBound::StepBound(int order, double toleranceBits)
    : order(order), toleranceBits(toleranceBits), inverses{0}, atOrders{0}
{
  for (int k = 1; k <= order; ++k) {
    inverses.push_back(1.0 / k);
    atOrders.push_back(toleranceBits * (1.0 / k - 1.0 / order));
  }
}

bool StepBound::Lower(double& bound, std::span<const Number> terms) const
{
  std::array<double, kFirstTerms> first;
  for (int j = 0; j < kFirstTerms; ++j) first[j] = Log2Roughly(terms[j]);

  int found = 0;
  bool isBounded = false;
  for (int k = order; k > 0 && found < kTermsForRadius; --k) {
    if (terms[k] == 0) continue;
    ++found;
    const double needed = Log2Roughly(terms[k]) + toleranceBits;
    // Most lines are soon seen not to lower the bound.
    const double enough = bound - atOrders[k];
    double longest = -kInfinity;
    for (int j = 0; j < std::min(kFirstTerms, k) && longest < enough; ++j)
      longest = std::max(longest, (first[j] - needed) * inverses[k - j]);
    // The first of all terms that are not zero says nothing by itself.
    if (longest == -kInfinity) continue;
    isBounded = true;
    bound = std::min(bound, longest + atOrders[k]);
  }
  return isBounded && found == kTermsForRadius;
}

}  // namespace varno::solve::quick
