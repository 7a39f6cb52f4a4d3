#include "solve/integration/resolution.h"

#include <algorithm>
#include <cmath>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// Bits that the roundings of several operations may cost.
constexpr double kRoundingBits = 10;

/// log2 of what the errors of a state are measured by.
double Reference(mpfr_srcptr state, double size, double toleranceBits)
{
  const double value = Log2Size(state);
  return std::isfinite(value) && value > size - toleranceBits ? value : 0;
}

}  // namespace

double BitsForDerivatives(const Tape& tape, const Series& series, const StepStart& start,
                          const RunSettings& settings, mpfr_prec_t bits)
{
  const auto bitsAtHand = static_cast<double>(bits);
  double needed = 0;
  for (std::size_t i = 0; i < start.states.size(); ++i) {
    const LineId derivative = tape.rightHandSides[i];
    const double size = start.lineSizes[derivative];
    if (!std::isfinite(size)) continue;
    const double hidden = size - bitsAtHand;
    if (hidden < series.Log2(derivative, 0) - settings.toleranceBits) continue;
    const double mayBeHidden =
        Reference(start.states[i], start.stateSizes[i], settings.toleranceBits) -
        settings.toleranceBits - start.lengthLog2;
    if (hidden < mayBeHidden) continue;
    needed = std::max(needed, size - mayBeHidden + kRoundingBits);
  }
  return needed;
}

}  // namespace varno::solve
