#include "solve/integration/step_trend.h"

#include <cstddef>
#include <limits>

namespace varno::solve {

namespace {

/// Steps shrink when they do so by this much (log2) over so many of them.
constexpr std::size_t kStepsLookedAt = 8;
constexpr double kLeastShrinkingLog2 = 1;

}  // namespace

bool StepTrend::IsShrinking(double boundLog2) const
{
  if (boundLog2 == -std::numeric_limits<double>::infinity()) return true;
  return latestBounds.size() == kStepsLookedAt &&
         boundLog2 < latestBounds.back() - kLeastShrinkingLog2;
}

void StepTrend::Add(double boundLog2)
{
  latestBounds.push_front(boundLog2);
  if (latestBounds.size() > kStepsLookedAt) latestBounds.pop_back();
}

}  // namespace varno::solve
