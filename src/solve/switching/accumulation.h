#pragma once

#include <deque>
#include <optional>

#include "solve/integration/run_settings.h"
#include "solve/integration/slow_approach.h"
#include "solve/number/moment.h"

namespace varno::solve {

/// Notices switches that come closer and closer to one another without end, as the bounces of a
/// ball do.
class Accumulation {
 public:
  /// A place where they end, and log2 of what it may be wrong by.
  struct Limit {
    Moment time;
    double log2Error;
  };

  /// A run from `start` to `reach` that follows shrinking distances until they are 2^-placeBits of
  /// the way, or no number of switches gets there (SlowApproach).
  Accumulation(const Moment& start, const Moment& reach, const RunSettings& settings)
      : start(start), placeBits(settings.placeBits), approach(start, reach, settings.approachBits)
  {}

  /// Adds the time of the next switch. If they end in a point, gives that point: where their
  /// distances fall geometrically, alone or in groups of two or four, to as many digits as they are
  /// known to (Aitken's delta-squared process).
  std::optional<Limit> Add(const Moment& time);

 private:
  Moment GeometricLimit() const;

  Moment start;
  double placeBits;
  SlowApproach approach;
  std::deque<Moment> times;  // the latest last
};

}  // namespace varno::solve
