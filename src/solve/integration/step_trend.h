#pragma once

#include <deque>

namespace varno::solve {

/// Tells steps that shrink towards a singularity from those that are short because everything is
/// fast: the former become shorter by a tenth or more each.
class StepTrend {
 public:
  /// Whether a step of at most this length (log2) continues steps that have been shrinking.
  bool IsShrinking(double boundLog2) const;
  void Add(double boundLog2);

 private:
  std::deque<double> latestBounds;  // the last one first
};

}  // namespace varno::solve
