#pragma once

#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "solve/integration/watched_roots.h"
#include "solve/number/moment.h"
#include "solve/piecewise/piece.h"

namespace varno::solve {

/// A watch or an event of a piece at a root.
struct RootAt {
  bool isEvent;
  std::size_t index;  ///< in Piece::events or Piece::watches
  /// The sign just before and behind it in the direction of the run; 0 where it is not certain.
  int signBefore, signAfter;
  int mostRoots;                                              ///< as WatchedRoot
  double log2Part = std::numeric_limits<double>::infinity();  ///< the same

  bool ChangesSign() const { return signBefore * signAfter < 0; }
};

/// How many first terms of lines count as 0 at the start of a run.
using ZeroTerms = std::map<LineId, int>;

/// What a run looks for on a piece.
class WatchList {
 public:
  /// The piece must outlive the list.
  explicit WatchList(const Piece& piece);

  /// The lines to watch, for Run::Watch.
  std::vector<WatchedLine> Lines(const ZeroTerms& zeroTerms) const;
  /// What the roots of these lines are of.
  std::vector<RootAt> Of(std::span<const WatchedRoot> roots) const;

  /// The nearest of the times at which something known beforehand happens.
  std::optional<Moment> TimeAhead(const Moment& time, bool backwards) const;
  /// What happens at a time and was known beforehand.
  std::vector<RootAt> At(const Moment& time, bool backwards) const;

 private:
  struct Entry {
    bool isEvent;
    std::size_t index;
    LineId line;
  };
  struct Timed {
    bool isEvent;
    std::size_t index;
    Moment time;
    int slope;  // the sign of the derivative by t
  };

  std::vector<Entry> lines;
  std::vector<Timed> times;
};

}  // namespace varno::solve
