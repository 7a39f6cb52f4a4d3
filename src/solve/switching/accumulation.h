#pragma once

#include <deque>
#include <optional>

#include "solve/number/moment.h"

namespace varno::solve {

/// Notices switches that come closer and closer to one another without end, as the bounces of a
/// ball do.
class Accumulation {
 public:
  /// A run from `start` that follows shrinking distances until they are 2^-placeBits of the way.
  Accumulation(const Moment& start, double placeBits) : start(start), placeBits(placeBits) {}

  /// Adds the time of the next switch. If they end in a point, gives that point: where their
  /// distances fall geometrically, alone or in groups of two or four, to as many digits as they are
  /// known to (Aitken's delta-squared process).
  std::optional<Moment> Add(const Moment& time);

 private:
  Moment Limit() const;

  Moment start;
  double placeBits;
  std::deque<Moment> times;  // the latest last
};

}  // namespace varno::solve
