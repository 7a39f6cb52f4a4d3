#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "solve/integration/line_polynomial.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// A line in which a run looks for roots.
struct WatchedLine {
  LineId line;
  /// So many of its first terms count as 0, because the step begins at a root of it: the root is
  /// divided out, so that rounding does not show it again.
  int zeroTerms = 0;
  /// Whether it may be 0 all along. One that is known to have a sign is not, whatever its terms
  /// are.
  bool mayBeZero = true;
};

/// A root of a watched line, or several that rounding does not tell from one.
struct WatchedRoot {
  std::size_t index;  ///< of the line among those that are watched
  /// The sign just before and behind it: -1 or 1, 0 where that is not certain.
  int signBefore, signAfter;
  /// There are at most so many roots, multiple ones counted as often.
  int mostRoots;
  /// log2 of the largest term of the line over the step, as a part of the line's size.
  double log2Part = std::numeric_limits<double>::infinity();

  bool IsCrossing() const { return signBefore * signAfter < 0; }
};

/// How near roots of different lines come to one another, as log2 in units of the series' scale,
/// where the states are not exact: as near as `same` they are in one place, as near as `doubt` it
/// takes more digits to tell.
struct Nearness {
  double same = -std::numeric_limits<double>::infinity();
  double doubt = -std::numeric_limits<double>::infinity();
};

/// The first roots in a step: those that lie in one place, as far as their errors tell.
struct WatchedRootsAhead {
  std::vector<WatchedRoot> roots;  ///< by index
  Real place;                      ///< from the start of the step, in units of the series' scale
  Real error;                      ///< how far it may be off
  bool isInDoubt = false;          ///< whether further roots may lie in the same place
};

/// Where the first roots of watched lines lie in a step, its end included; none if there are none.
///
/// Most lines are shown to have no root by their first term, which outweighs the others, and what
/// rounding may have made of it; of the rest all roots are isolated. Lines that are 0 in all their
/// terms have no roots, if they may be 0.
std::optional<WatchedRootsAhead> FirstWatchedRoots(const Tape& tape, const SeriesStep& step,
                                                   std::span<const WatchedLine> watched,
                                                   const Nearness& nearness = {});

}  // namespace varno::solve
