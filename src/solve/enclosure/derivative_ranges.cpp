#include "solve/enclosure/derivative_ranges.h"

namespace varno::solve {

namespace {

/// Hands the derivative by a line on to its operands; these come before it on the tape.
struct Reverse {
  const Tape& tape;
  const LineRanges& lines;
  const std::vector<Range>& ranges;
  std::vector<Range>& derivatives;

  void Add(LineId line, const Range& part) const { derivatives[line] = derivatives[line] + part; }

  void Combination(const Line& line, const Range& d) const
  {
    for (std::uint32_t i = 0; i < line.factorCount; ++i) {
      const Factor& factor = tape.factors[line.firstFactor + i];
      Add(factor.line, d * lines.Weight(factor));
    }
  }

  void Double(LineId a, const Range& part) const
  {
    Add(a, part);
    Add(a, part);
  }

  void Half(LineId a, Range part) const
  {
    mpfi_div_2ui(part, part, 1);
    Add(a, part);
  }

  /// d is the derivative by the line `id`.
  void Line(LineId id, const Range& d) const
  {
    const varno::solve::Line& line = tape.lines[id];
    const Range& s = ranges[id];
    switch (line.kind) {
      case LineKind::kConstant:
      case LineKind::kTime:
      case LineKind::kState:
        return;
      case LineKind::kCombination:
        Combination(line, d);
        return;
      case LineKind::kProduct:
        Add(line.a, d * ranges[line.b]);
        Add(line.b, d * ranges[line.a]);
        return;
      case LineKind::kSquare:
        Double(line.a, d * ranges[line.a]);
        return;
      case LineKind::kQuotient:
        Add(line.a, d / ranges[line.b]);
        Add(line.b, -(d * s / ranges[line.b]));
        return;
      case LineKind::kSquareRoot:
        Half(line.a, d / s);
        return;
      case LineKind::kPower:
        Add(line.a, d * lines.Constant(line.constant) * s / ranges[line.a]);
        return;
      case LineKind::kIntegralOfProduct:
        Add(line.a, Signed(line, d * ranges[line.b]));
        return;
      case LineKind::kIntegralOfQuotient:
        Add(line.a, Signed(line, d / ranges[line.b]));
        return;
      case LineKind::kAngle:
        // c = a^2 + b^2 is there for the recurrence only.
        Add(line.a, d * ranges[line.b] / ranges[line.c]);
        Add(line.b, -(d * ranges[line.a] / ranges[line.c]));
        return;
    }
  }

  static Range Signed(const varno::solve::Line& line, const Range& part)
  {
    return line.negative ? -part : part;
  }
};

}  // namespace

std::vector<Range> DerivativeRanges(const Tape& tape, const LineRanges& lines,
                                    const std::vector<Range>& ranges, const HeldLines& held,
                                    LineId of)
{
  std::vector<Range> derivatives(tape.lines.size(), Range(lines.Bits()));
  mpfi_set_si(derivatives[of], 1);
  const Reverse reverse{tape, lines, ranges, derivatives};
  for (LineId id = static_cast<LineId>(tape.lines.size()); id-- > 0;) {
    // A copy: operands may be the line's own neighbours in memory, but never the line itself.
    if (!derivatives[id].IsZero() && !held.contains(id)) reverse.Line(id, derivatives[id]);
  }
  return derivatives;
}

}  // namespace varno::solve
