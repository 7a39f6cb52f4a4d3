#pragma once

#include <cstdint>
#include <vector>

#include "solve/fixed/narrow.h"
#include "solve/fixed/narrow_scaled_sum.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// What the terms of a tape's lines are made of. All outlives who is given it.
template <class Arithmetic>
struct LineOperands {
  const Tape& tape;
  std::vector<typename Arithmetic::Terms>& terms;             ///< by line
  std::vector<typename Arithmetic::Terms>& weighted;          ///< j times term j
  const std::vector<std::uint32_t>& weightedRows;             ///< by line, in `weighted`
  const std::vector<typename Arithmetic::Factor>& constants;  ///< by constant
  const std::vector<typename Arithmetic::Factor>& divisors;   ///< by line: a reciprocal
};

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
template <class Arithmetic>
class SettledLines {
 public:
  explicit SettledLines(const LineOperands<Arithmetic>& /*operands*/) {}
  void Begin(long /*scaleExponent*/, bool /*isBackwards*/) {}
  void Rearrange() {}
  static LineId StoreTerms(LineId first, int /*k*/) { return first; }
};

template <>
class SettledLines<NarrowArithmetic> {
 public:
  explicit SettledLines(const LineOperands<NarrowArithmetic>& operands);

  /// A step with this scale.
  void Begin(long newScaleExponent, bool backwards);
  /// The exponent of a line has changed, a line has got one, or the place of its terms.
  void Rearrange()
  {
    for (Prepared& line : prepared) line.kind = kUnprepared;
  }
  /// Stores term k > 0 of the lines from the first on, weighted ones, too; returns the first line
  /// of which it is to be computed in another way, or the number of lines.
  LineId StoreTerms(LineId first, int k);

 private:
  /// Stand for those whose terms are not made here, and that are to be prepared.
  static constexpr LineKind kOtherKind = LineKind::kConstant, kUnprepared = LineKind::kTime;

  /// What is prepared of a line.
  struct Prepared {
    LineKind kind = kUnprepared;
    bool isNegative;          // of a state and an integral
    narrow::TermShift shift;  // from the units counted in
    NarrowTerms* s;           // of the line
    NarrowTerms* weighted;    // the same, where it is needed
    const NarrowTerms *a, *b;
    NarrowRatio ofOperand, ofProducts;
    NarrowScaledSum sum;
  };

  static bool StoreTerm(const Prepared& line, int k);
  void Prepare(LineId id, int k);
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
  std::vector<Prepared> prepared;  // by line
  long scaleExponent = 0;
  bool isBackwards = false;
};

}  // namespace varno::solve
