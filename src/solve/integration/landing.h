#pragma once

#include <optional>
#include <span>
#include <vector>

#include "solve/integration/singularity.h"
#include "solve/integration/watched_roots.h"
#include "solve/number/moment.h"
#include "solve/number/real.h"
#include "solve/series/series.h"

namespace varno::solve {

/// A branch point at which something happens that may end its expression, as if(t < 1, sqrt(1 - t),
/// 0) ends at 1: a run steps onto it, from so near that nothing is left of the difference.
struct Landing {
  Moment advance;                  ///< from the start of the step
  Real offset;                     ///< the same in units of the series' scale
  std::vector<double> tails;       ///< log2 of what the sums of the states may be wrong by there
  std::vector<WatchedRoot> roots;  ///< watched lines that are 0 there; none at a time watched
};

/// A step about whose end a run ends in a singularity.
struct LandingStep {
  const Series& series;
  const Moment& begin;
  bool backwards;
  long scaleExponent;
  mpfr_prec_t bits;
};

/// The branch point at the end of a way, if all states are bounded there, and if it lies at the
/// time watched or watched lines are 0 there as far as their series tell.
///
/// The terms of a line that branches with an exponent e fall there like k^(-1 - e), so that those
/// behind the last one, p, add up to p/e times it.
std::optional<Landing> FindLanding(const LandingStep& step, const Singularity& end,
                                   std::size_t stateCount, const std::optional<Moment>& watchedTime,
                                   std::span<const WatchedLine> watched);

}  // namespace varno::solve
