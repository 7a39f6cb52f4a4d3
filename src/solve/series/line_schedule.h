#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <mpfr.h>

#include "solve/tape/tape.h"

namespace varno::solve {

/// Which member of a team makes the terms of which lines, and when: term k of all lines in phases,
/// at the ends of which the members meet.
///
/// A line and what it is made of never stand in one phase with different members, and in the order
/// of the tape in any case. So each line finds its operands as it does on one thread, and its terms
/// are the same.
class LineSchedule {
 public:
  /// All lines for one member, in the order of the tape.
  explicit LineSchedule(const Tape& tape);
  /// For a series of about this precision and order.
  LineSchedule(const Tape& tape, mpfr_prec_t bits, int order, int memberCount);

  int MemberCount() const { return static_cast<int>(members.size()); }
  std::size_t PhaseCount() const { return members.front().ends.size(); }
  /// The lines of a member, in the order in which it makes them.
  std::span<const LineId> Lines(int member) const { return Of(member).lines; }
  /// Those of a phase.
  std::span<const LineId> Lines(int member, std::size_t phase) const
  {
    const std::size_t begin = Begin(member, phase);
    return Lines(member).subspan(begin, End(member, phase) - begin);
  }
  /// How many of them there are up to the begin or the end of a phase.
  std::size_t Begin(int member, std::size_t phase) const
  {
    return phase == 0 ? 0 : End(member, phase - 1);
  }
  std::size_t End(int member, std::size_t phase) const { return Of(member).ends[phase]; }
  /// Whether so many members clearly need less time than one.
  bool IsWorthwhile() const { return seconds < kWorthwhilePart * secondsOfOne; }

 private:
  static constexpr double kWorthwhilePart = 0.8;

  struct Member {
    std::vector<LineId> lines;
    std::vector<std::size_t> ends;  // by phase
  };
  const Member& Of(int member) const { return members[static_cast<std::size_t>(member)]; }
  void AddToFirst(std::span<const LineId> lines);
  void Share(std::span<const LineId> lines, const std::vector<double>& costs, double cost);
  void EndPhase();

  std::vector<Member> members;
  double seconds = 0, secondsOfOne = 0;  // for term k of all lines, estimated
};

/// Whether so many threads make the terms of a tape clearly faster than one.
bool IsWorthSharing(const Tape& tape, mpfr_prec_t bits, int order, int threadCount);

}  // namespace varno::solve
