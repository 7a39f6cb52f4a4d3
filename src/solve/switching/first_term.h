#pragma once

#include <optional>
#include <vector>

#include "solve/integration/run_settings.h"
#include "solve/piecewise/piece.h"
#include "solve/series/series.h"
#include "solve/switching/switch_point.h"

namespace varno::solve {

/// The first term of a series that is not 0.
struct FirstTerm {
  int order;  ///< its number; one more than the highest looked at where all terms are 0
  int sign;   ///< in the direction of the run; 0 where all terms are 0
};

/// The first terms of the lines of a piece at a point, which tell on which side of 0 they are just
/// beyond it.
///
/// The states at the point are known to the tolerance. What that does to a term, and what rounding
/// does, is seen by series about states that are moved by as much, with some more bits: a term that
/// does not stand out of it counts as 0, in runs that may say so.
class FirstTerms {
 public:
  /// Throws DomainError where a line has no series at the point.
  FirstTerms(const Piece& piece, const SwitchRule& rule, const SwitchPoint& point);

  /// Of a line, from a term on; those before it count as 0. Throws ZeroInDoubt.
  FirstTerm Of(LineId line, int from);

 private:
  void Extend(int order);
  bool StandsOut(LineId line, int k) const;

  SwitchRule rule;
  Moment time;
  std::unique_ptr<Series> exact;
  std::vector<std::unique_ptr<Series>> moved;
};

}  // namespace varno::solve
