#include "solve/integration/line_sizes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace varno::solve {

namespace {

/// Looks at term 0 of the lines; `sizes` holds those of the lines before.
struct SizeRules {
  const Tape& tape;
  const Series& series;
  const std::vector<double>& sizes;

  double Value(LineId line) const { return series.Log2(line, 0); }

  double Combination(const Line& line) const
  {
    double size = series.Log2Constant(line.constant);
    const std::span<const double> weights = series.FactorLogs();
    for (std::uint32_t i = line.firstFactor; i < line.firstFactor + line.factorCount; ++i)
      size = std::max(size, weights[i] + sizes[tape.factors[i].line]);
    return size;
  }

  double Product(LineId a, LineId b) const
  {
    return std::max(sizes[a] + Value(b), Value(a) + sizes[b]);
  }

  /// What an error of the dividend makes of one in a quotient that begins at a common root.
  double OfCommonRoot(const Line& line, int order) const
  {
    if (line.kind != LineKind::kQuotient && line.kind != LineKind::kIntegralOfQuotient)
      return -std::numeric_limits<double>::infinity();
    const double effect = sizes[line.a] - series.Log2(line.b, order);
    return std::isnan(effect) ? -std::numeric_limits<double>::infinity() : effect;
  }

  /// What an error of the operand a makes of one in the line, beside the line's own magnitude.
  double Of(const Line& line, LineId id) const
  {
    switch (line.kind) {
      case LineKind::kConstant:
      case LineKind::kTime:
      case LineKind::kState:
        return Value(id);
      case LineKind::kCombination:
        return Combination(line);
      case LineKind::kProduct:
        return Product(line.a, line.b);
      case LineKind::kSquare:
        return Product(line.a, line.a) + 1;
      case LineKind::kQuotient:
        return std::max(sizes[line.a], Value(id) + sizes[line.b]) - Value(line.b);
      case LineKind::kSquareRoot:
        return sizes[line.a] - 1 - Value(id);
      case LineKind::kPower:
        return series.Log2Constant(line.constant) + Value(id) + sizes[line.a] - Value(line.a);
      case LineKind::kIntegralOfProduct:
        return Value(line.b) + sizes[line.a];
      case LineKind::kIntegralOfQuotient:
        return sizes[line.a] - Value(line.b);
      case LineKind::kAngle:
        return std::max(sizes[line.a], sizes[line.b]) - 0.5 * Value(line.c);
    }
    return Value(id);
  }
};

}  // namespace

std::vector<double> LineSizes(const Tape& tape, const Series& series,
                              const std::vector<bool>& leftOut)
{
  std::vector<double> sizes;
  sizes.reserve(tape.lines.size());
  const SizeRules rules{tape, series, sizes};
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (!leftOut.empty() && leftOut[id]) {
      // Its operands may be missing: u/b would be infinite without b.
      sizes.push_back(rules.Value(id));
      continue;
    }
    if (const int order = series.CommonRootOrder(id); order > 0) {
      // What it is divided by is 0; its terms tell how large it is.
      double largest = rules.Value(id);
      for (int k = 1; k <= std::min(order, series.Order()); ++k)
        largest = std::max(largest, series.Log2(id, k));
      sizes.push_back(std::max(largest, rules.OfCommonRoot(tape.lines[id], order)));
      continue;
    }
    const double effect = rules.Of(tape.lines[id], id);
    // NaN: -infinity met +infinity, a factor 0 beside an operand without bounds.
    sizes.push_back(std::isnan(effect) ? rules.Value(id) : std::max(rules.Value(id), effect));
  }
  return sizes;
}

}  // namespace varno::solve
