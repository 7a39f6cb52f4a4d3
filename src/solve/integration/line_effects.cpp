#include "solve/integration/line_effects.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Hands the effect of a line on to its operands; these come before it on the tape.
struct EffectRules {
  const Tape& tape;
  const Series& series;
  std::vector<double>& effects;

  double Value(LineId line) const { return series.Log2(line, 0); }

  void Raise(LineId line, double effect) const
  {
    // NaN: a factor 0 beside an effect without bounds.
    double& known = effects[line];
    if (std::isnan(effect)) {
      known = kInfinity;
    } else {
      known = std::max(known, effect);
    }
  }

  void Combination(const Line& line, double effect) const
  {
    const std::span<const double> weights = series.FactorLogs();
    for (std::uint32_t i = line.firstFactor; i < line.firstFactor + line.factorCount; ++i)
      Raise(tape.factors[i].line, effect + weights[i]);
  }

  void HandOn(LineId id, double effect) const
  {
    const Line& line = tape.lines[id];
    switch (line.kind) {
      case LineKind::kConstant:
      case LineKind::kTime:
      case LineKind::kState:
        return;
      case LineKind::kCombination:
        Combination(line, effect);
        return;
      case LineKind::kProduct:
        Raise(line.a, effect + Value(line.b));
        Raise(line.b, effect + Value(line.a));
        return;
      case LineKind::kSquare:
        Raise(line.a, effect + Value(line.a) + 1);
        return;
      case LineKind::kQuotient:
        Raise(line.a, effect - Value(line.b));
        Raise(line.b, effect + Value(id) - Value(line.b));
        return;
      case LineKind::kSquareRoot:
        Raise(line.a, effect - 1 - Value(id));
        return;
      case LineKind::kPower:
        Raise(line.a, effect + series.Log2Constant(line.constant) + Value(id) - Value(line.a));
        return;
      case LineKind::kIntegralOfProduct:
        Raise(line.a, effect + Value(line.b));
        return;
      case LineKind::kIntegralOfQuotient:
        Raise(line.a, effect - Value(line.b));
        return;
      case LineKind::kAngle:
        Raise(line.a, effect + Value(line.b) - Value(line.c));
        Raise(line.b, effect + Value(line.a) - Value(line.c));
        return;
    }
  }
};

}  // namespace

std::vector<double> LineEffects(const Tape& tape, const Series& series,
                                const std::vector<double>& weights)
{
  std::vector<double> effects(tape.lines.size(), -kInfinity);
  const EffectRules rules{tape, series, effects};
  for (std::size_t i = 0; i < weights.size(); ++i) rules.Raise(tape.rightHandSides[i], weights[i]);
  for (LineId id = static_cast<LineId>(effects.size()); id-- > 0;) {
    if (effects[id] > -kInfinity) rules.HandOn(id, effects[id]);
  }
  return effects;
}

}  // namespace varno::solve
