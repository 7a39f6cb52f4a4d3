#pragma once

#include <span>
#include <vector>

#include "solve/quick/number.h"

namespace varno::solve::quick {

/// What a step may be at most by the terms of lines, for one order p and one tolerance.
class StepBound {
 public:
  StepBound(int order, double toleranceBits);

  /// Lowers `bound` to log2 of the longest step, in units of the scale of the terms, for which they
  /// fall as they should: of each of the last orders k that have terms that are not zero the most
  /// over some first terms j of (tol |c_j| / |c_k|)^(1/(k-j)) * tol^(1/p - 1/k), and of these the
  /// least (Jorba and Zou 2005). False where too few terms are shown.
  bool Lower(double& bound, std::span<const Number> terms) const;

 private:
  int order;
  double toleranceBits;
  std::vector<double> inverses;  // of whole numbers
  std::vector<double> atOrders;  // log2 of tol^(1/p - 1/k)
};

}  // namespace varno::solve::quick
