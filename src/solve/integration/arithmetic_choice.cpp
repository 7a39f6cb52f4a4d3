#include "solve/integration/arithmetic_choice.h"

#include <algorithm>

namespace varno::solve {

namespace {

/// A failure may be one of a single step; after several, up to 2^kMostBackoff - 1 steps are made
/// before the next trial.
constexpr int kFailuresAllowed = 2;
constexpr int kMostBackoff = 6;

}  // namespace

void ArithmeticChoice::StepTried(bool wasExact)
{
  failures = wasExact ? 0 : std::min(failures + 1, kMostBackoff);
  stepsToSkip = failures < kFailuresAllowed ? 0 : (1 << failures) - 1;
}

}  // namespace varno::solve
