#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "solve/series/line_schedule.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// In which order the terms of some orders of all lines are made so that they stay in a processor's
/// own cache from one order to the next: those of some neighbouring lines, as far as what these are
/// made of lets them, then those of the next ones, and what has waited for these.
///
/// Order k of all lines before order k + 1 of any brings all terms of a large system from the
/// memory for each order: this does for all orders of a wave together.
class LineWaves {
 public:
  /// The orders of a wave; fewer are its first ones.
  static constexpr int kOrders = 24;
  /// Lines first..last-1 of a list, and the order of their terms in the wave.
  struct Stretch {
    std::uint32_t first, last;
    int order;
  };

  /// Of about so many lines at a time.
  LineWaves(const Tape& tape, const LineSchedule& schedule, std::size_t linesAtOnce);

  /// What a member makes of its lines (LineSchedule::Lines) without terms of a wave that others
  /// make, one stretch after the other.
  std::span<const Stretch> Stretches(int member) const { return Of(member).stretches; }
  /// What is left to a member when all have done this: terms of these lines, in these stretches of
  /// them. They read nothing that is left to another one.
  std::span<const LineId> RestLines(int member) const { return Of(member).restLines; }
  std::span<const Stretch> Rest(int member) const { return Of(member).rest; }
  bool HasRest() const;
  /// Whether few lines have to wait, and few are left.
  bool IsWorthwhile() const { return isWorthwhile; }

 private:
  struct Member {
    std::vector<Stretch> stretches;
    std::vector<LineId> restLines;
    std::vector<Stretch> rest;
  };
  const Member& Of(int member) const { return members[static_cast<std::size_t>(member)]; }
  void ShareRest(std::vector<std::vector<LineId>> parts);

  std::vector<Member> members;
  bool isWorthwhile = true;
};

}  // namespace varno::solve
