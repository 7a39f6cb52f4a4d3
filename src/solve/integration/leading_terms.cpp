#include "solve/integration/leading_terms.h"

#include <limits>

namespace varno::solve {

namespace {

/// Beyond it nothing is looked for: no series gets that long.
constexpr int kLargestOrder = 1'000'000;
/// Lines that are made of later ones take another pass.
constexpr int kMostPasses = 8;

using Leading = std::optional<int>;

Leading Sum(Leading a, Leading b)
{
  if (!a || !b || *a + *b > kLargestOrder) return std::nullopt;
  return *a + *b;
}

Leading Shown(const Series& series, LineId id)
{
  for (int k = 0; k <= series.Order(); ++k) {
    if (series.Log2(id, k) > -std::numeric_limits<double>::infinity()) return k;
  }
  return std::nullopt;
}

/// Of a line whose terms shown are all 0.
struct LeadingRules {
  const Tape& tape;
  const std::vector<Leading>& known;

  /// The least of the operands', if one of them alone has it: nothing can cancel it.
  Leading Combination(const Line& line) const
  {
    Leading least;
    bool isShared = false;
    for (std::uint32_t i = 0; i < line.factorCount; ++i) {
      const Leading& operand = known[tape.factors[line.firstFactor + i].line];
      if (!operand) return std::nullopt;
      if (least && *least < *operand) continue;
      isShared = least == operand;
      least = operand;
    }
    return isShared ? std::nullopt : least;
  }

  Leading Of(const Line& line) const
  {
    switch (line.kind) {
      case LineKind::kState:
        // x' = f: one more than f
        return Sum(known[tape.rightHandSides[line.index]], 1);
      case LineKind::kCombination:
        return Combination(line);
      case LineKind::kProduct:
        return Sum(known[line.a], known[line.b]);
      case LineKind::kSquare:
        return Sum(known[line.a], known[line.a]);
      case LineKind::kQuotient:
      case LineKind::kIntegralOfQuotient:
        // The divisor does not begin with 0.
        return known[line.a];
      case LineKind::kIntegralOfProduct:
        // f(a) = 0 at the start, f' = b a'
        return known[line.a] && *known[line.a] > 0 ? Sum(known[line.a], known[line.b])
                                                   : std::nullopt;
      default:
        return std::nullopt;
    }
  }
};

}  // namespace

std::vector<std::optional<int>> LeadingTerms(const Tape& tape, const Series& series)
{
  std::vector<Leading> leading;
  for (LineId id = 0; id < tape.lines.size(); ++id) leading.push_back(Shown(series, id));
  const LeadingRules rules{tape, leading};
  for (int pass = 0; pass < kMostPasses; ++pass) {
    for (LineId id = 0; id < leading.size(); ++id) {
      if (!leading[id]) leading[id] = rules.Of(tape.lines[id]);
    }
  }
  return leading;
}

}  // namespace varno::solve
