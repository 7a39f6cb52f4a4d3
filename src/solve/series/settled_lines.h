#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "solve/fixed/narrow.h"
#include "solve/fixed/narrow_scaled_sum.h"
#include "solve/series/line_operands.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The terms of lines that are settled: most of all terms, in a fraction of the time.
///
/// A line is settled when it has an exponent and has lost bits, or loses some by its next term: of
/// a term that follows nothing is to be known but its digits, unless it is 0 or does not fit. The
/// exponents of the line and of its operands stay mostly as they are for the rest of the step, so
/// what they make of constants is prepared once. What is left of each recurrence is arithmetic on
/// words.
///
/// Where this does not do, a term is computed like those of other lines. An arithmetic without
/// settled lines has none.
///
/// An object serves one thread, for the lines whose terms that makes, which stand in their order.
template <class Arithmetic>
class SettledLines {
 public:
  SettledLines(const LineOperands<Arithmetic>& /*operands*/, std::span<const LineId> /*lines*/) {}
  void Begin(long /*scaleExponent*/, bool /*isBackwards*/) {}
  static std::size_t StoreTerms(std::size_t first, std::size_t /*last*/, int /*k*/)
  {
    return first;
  }
};

template <>
class SettledLines<NarrowArithmetic> {
 public:
  SettledLines(const LineOperands<NarrowArithmetic>& operands, std::span<const LineId> lines);

  /// A step with this scale.
  void Begin(long newScaleExponent, bool backwards);
  /// Stores term k > 0 of the lines first..last-1 in their order, weighted ones, too; returns the
  /// first of which it is to be computed in another way, or `last`.
  std::size_t StoreTerms(std::size_t first, std::size_t last, int k);

 private:
  /// Stands for those whose terms are not made here.
  static constexpr LineKind kOtherKind = LineKind::kConstant;
  /// Of a line that is to be prepared.
  static constexpr std::int64_t kUnprepared = -1;

  /// What is prepared of a line.
  struct Prepared {
    std::int64_t arrangement = kUnprepared;  // for which this is
    LineKind kind;
    bool isNegative;          // of a state and an integral
    narrow::TermShift shift;  // from the units counted in
    NarrowTerms* s;           // of the line
    NarrowTerms* weighted;    // the same, where it is needed
    const NarrowTerms *a, *b;
    NarrowRatio ofOperand, ofProducts;
    NarrowScaledSum sum;
  };

  static bool StoreTerm(const Prepared& line, int k);
  void Prepare(Prepared& line, LineId id, int k);
  bool LosesBits(LineId id, int k) const;
  bool SetUp(Prepared& line, LineId id) const;
  static bool SetUnits(Prepared& line, long exponent);
  bool PrepareSum(Prepared& line, LineId id) const;
  bool PrepareDivision(Prepared& line, LineId id, long products) const;
  static bool Divide(const Prepared& line, int k, Int128& products);
  NarrowTerms* Weighted(LineId id) const
  {
    const std::uint32_t row = operands.weightedRows[id];
    return row == kNone ? nullptr : &operands.weighted[row];
  }

  LineOperands<NarrowArithmetic> operands;
  std::span<const LineId> lines;
  std::vector<Prepared> prepared;  // by place in `lines`
  long scaleExponent = 0;
  bool isBackwards = false;
};

}  // namespace varno::solve
