#include "solve/library/stiffness_notice.h"

#include <cmath>

#include <fmt/format.h>

namespace varno::solve {

namespace {

/// With fewer steps ahead a run is not worth a word.
constexpr double kManySteps = 1000;

double Length(const DenseStep& step)
{
  return std::abs((step.End() - step.Begin()).ToDouble());
}

}  // namespace

double StepsAhead(const DenseStep& latest, const Moment& to)
{
  return latest.IsBehind(to) ? std::abs((to - latest.End()).ToDouble()) / Length(latest) : 0;
}

std::optional<std::string> StiffnessNotice::After(const DenseStep& step, const Moment& to, int runs,
                                                  double seconds)
{
  ++steps;
  if (wasGiven) return std::nullopt;
  stiffness.Look(step);
  if (!stiffness.IsNoticed()) return std::nullopt;
  const double ahead = StepsAhead(step, to);
  if (ahead < kManySteps) return std::nullopt;
  wasGiven = true;
  return fmt::format(
      "stiff at t = {:.6g}: what decays like exp(-{:.2g} t) holds the steps down to {:.2g}, not "
      "the "
      "digits asked for; at this pace about {:.2g} more steps and {:.2g} seconds",
      step.End().ToDouble(), stiffness.RateTimesStep() / Length(step), Length(step), ahead,
      seconds / static_cast<double>(steps) * runs * ahead);
}

}  // namespace varno::solve
