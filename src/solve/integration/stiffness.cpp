#include "solve/integration/stiffness.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// So many steps in a row are no accident; what really decays is gone after fewer.
constexpr int kLongStreak = 128;
/// By how much longer steps (log2) the early terms of all states must allow.
constexpr double kLongerLog2 = 3;
/// The late terms are those of an exponential when their ratios differ by less (log2).
constexpr double kSameRateLog2 = 0.3;

/// The terms of the states at the end of a step.
struct StepTerms {
  const StateTerms& series;
  int order;
  double offsetLog2;  // the length of the step in units of the series' scale

  double Log2(LineId state, int k) const { return series.Logs(state)[k] + k * offsetLog2; }

  double Largest(LineId state) const
  {
    double largest = -kInfinity;
    int k = 0;
    for (const double term : series.Logs(state))
      largest = std::max(largest, term + k++ * offsetLog2);
    return largest;
  }

  /// How much longer the step might be, log2, if the late terms of a state fell like its early
  /// ones. The tolerance is that of the order (run_settings.h): ln(tol) = 2 - 2 p.
  double Longer(LineId state) const
  {
    const double largest = Largest(state);
    if (largest == -kInfinity) return kInfinity;
    double steepest = -kInfinity;
    const int last = std::max(3, order / 4);
    for (int k = std::max(2, order / 6); k <= last; ++k)
      steepest = std::max(steepest, (Log2(state, k) - largest) / k);
    const double fallAtTolerance = -2 * (order - 1) / std::numbers::ln2 / order;
    return fallAtTolerance - steepest;
  }

  /// The state whose late terms fall least beside what they begin with.
  std::optional<LineId> Restless(LineId stateCount) const
  {
    std::optional<LineId> restless;
    double highest = -kInfinity;
    for (LineId state = 0; state < stateCount; ++state) {
      const double late = Log2(state, order) - Largest(state);
      if (!(late > highest)) continue;
      highest = late;
      restless = state;
    }
    return restless;
  }

  int Sign(LineId state, int k) const
  {
    Real term(2);
    series.Term(state, k, term);
    return mpfr_sgn(static_cast<mpfr_srcptr>(term));
  }

  /// r h where the late terms of a state are those of c exp(-r t); none where they are not.
  std::optional<double> Rate(LineId state) const
  {
    double least = kInfinity, most = -kInfinity;
    for (int k = 2 * order / 3; k < order; ++k) {
      const double rate = std::log2(k + 1) + Log2(state, k + 1) - Log2(state, k);
      if (!std::isfinite(rate) || Sign(state, k) == Sign(state, k + 1)) return std::nullopt;
      least = std::min(least, rate);
      most = std::max(most, rate);
    }
    if (most - least > kSameRateLog2) return std::nullopt;
    return std::exp2((least + most) / 2);
  }
};

/// r h of a step that is held down by stability.
std::optional<double> HeldDownBy(const DenseStep& step)
{
  const StepTerms terms{*step.series, step.order,
                        step.lengthLog2 - static_cast<double>(step.scaleExponent)};
  const auto stateCount = static_cast<LineId>(step.states.size());
  for (LineId state = 0; state < stateCount; ++state) {
    if (terms.Longer(state) < kLongerLog2) return std::nullopt;
  }
  const std::optional<LineId> restless = terms.Restless(stateCount);
  return restless ? terms.Rate(*restless) : std::nullopt;
}

}  // namespace

void Stiffness::Look(const DenseStep& step)
{
  const std::optional<double> rate = HeldDownBy(step);
  streak = rate ? streak + 1 : 0;
  if (rate) rateTimesStep = *rate;
}

bool Stiffness::IsNoticed() const
{
  return streak >= kLongStreak;
}

}  // namespace varno::solve
