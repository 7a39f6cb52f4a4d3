#pragma once

#include <map>
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

/// Ranges of some lines that are known otherwise; of those that nobody asks for they may be any.
using KnownRanges = std::map<LineId, Range>;

/// Encloses the values that the lines of a tape take over a box.
class LineRanges {
 public:
  /// The tape must outlive this.
  LineRanges(const Tape& tape, mpfr_prec_t bits);

  /// A range for each line, by interval arithmetic line after line; none where a line may have no
  /// value in the box, be unbounded or jump. Held lines take their values, the constant or
  /// anything between, for those that use them. One entry for each line.
  /// What is in `known` is not computed.
  std::optional<std::vector<Range>> Over(const Box& box, const HeldLines& held,
                                         const KnownRanges& known = {}) const;
  /// The range of one line where its operands have these. Unlike above it may be unbounded, and the
  /// line without a value at the end of its domain, if its radicand, base or divisor is not on both
  /// sides of 0: 1/[0, a] is [1/a, infinity]. None where it may have none elsewhere.
  std::optional<Range> UpToEdge(LineId id, const Box& box, const std::vector<Range>& ranges) const;

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
