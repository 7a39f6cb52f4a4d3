#pragma once

#include <optional>
#include <vector>

#include "solve/integration/dense_step.h"
#include "solve/number/moment.h"

namespace varno::solve {

/// Waits for a solution to come to rest: for the first hundredth of an interval, counted from its
/// start, over which no variable has a derivative of more than a tolerance times the largest
/// magnitude that the variable has had so far.
class Calm {
 public:
  /// `log2Tolerance` is of 1/time.
  Calm(const Moment& start, const Moment& end, double log2Tolerance);

  /// Adds the next step of a run that begins at the start. Gives the end of that hundredth if the
  /// step holds it.
  std::optional<Moment> Add(const DenseStep& step);

 private:
  void AddStretch(const DenseStep& step, const Moment& from, const Moment& to);
  bool IsCalm() const;

  Moment start, part;
  double log2Tolerance;
  int partsDone = 0;
  Moment partEnd;
  // For each state, log2: so far, and in the present part.
  std::vector<double> largestValues, largestSlopes;
};

}  // namespace varno::solve
