#pragma once

#include <optional>
#include <vector>

#include "solve/enclosure/range.h"
#include "solve/tape/held_lines.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// A stretch of time and a range for each state.
struct Box {
  Range time;
  std::vector<Range> states;
};

/// Encloses the values that the lines of a tape take over a box.
class LineRanges {
 public:
  /// The tape must outlive this.
  LineRanges(const Tape& tape, mpfr_prec_t bits);

  /// A range for each line, by interval arithmetic line after line; none where a line may have no
  /// value in the box, be unbounded or jump. Held lines take their values, the constant or
  /// anything between, for those that use them. One entry for each line.
  std::optional<std::vector<Range>> Over(const Box& box, const HeldLines& held) const;

  /// The constants of the tape. Throws DomainError where one has no value.
  const Range& Constant(ConstantId constant) const;
  /// The factor of a term of a combination.
  Range Weight(const Factor& factor) const;
  mpfr_prec_t Bits() const { return bits; }

 private:
  /// Sets result to the range of a line; false where that is not known to be one.
  bool Evaluate(const Line& line, const Box& box, const std::vector<Range>& ranges,
                Range& result) const;
  void Combination(const Line& line, const std::vector<Range>& ranges, Range& result) const;

  const Tape& tape;
  mpfr_prec_t bits;
  Range zero;
  std::vector<Range> constants;
};

}  // namespace varno::solve
