#pragma once

#include <optional>
#include <vector>

#include "solve/number/moment.h"

namespace varno::solve {

/// Notices times that come closer and closer to one another, towards a place that they do not reach
/// in any number worth waiting for: the steps before an essential singularity, as that of
/// sin(1/(1 - t)), which shrink like the square of the distance.
///
/// Where they are c d^q apart at the distance d, with q > 1, there are about d^(1-q) / (c (q-1)) of
/// them down to d. So each doubling of their number divides the distance by the same factor,
/// 2^(1/(q-1)): the times number 1, 2, 4, 8, ... converge geometrically, and show their limit
/// (Aitken's delta-squared process).
class SlowApproach {
 public:
  struct Limit {
    Moment time;       ///< rounded to the decimals that are known
    double log2Error;  ///< of the time: a small part of the distance
  };

  /// Times on the way from `start` to `reach`, where a limit nearer than 2^-nearBits of the way is
  /// believed.
  SlowApproach(const Moment& start, const Moment& reach, double nearBits)
      : start(start), reach(reach), nearBits(nearBits)
  {}

  /// Adds the next time. Gives the limit where there is one that is near, and not beyond `reach`.
  std::optional<Limit> Add(const Moment& time);

 private:
  std::optional<Limit> Find() const;
  std::vector<double> Falls() const;

  Moment start, reach;
  double nearBits;
  long count = 0;
  std::vector<Moment> doublings;  // the times number 1, 2, 4, 8, ...
};

}  // namespace varno::solve
