#include "solve/verification/step_record.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// Of start values, nothing of which has cancelled yet.
std::vector<double> SizesOf(const std::vector<Real>& states)
{
  std::vector<double> sizes;
  sizes.reserve(states.size());
  for (const Real& state : states) sizes.push_back(Log2Size(state));
  return sizes;
}

}  // namespace

void StepRecord::Add(std::size_t run, std::shared_ptr<const StepPolynomial> step)
{
  if (run >= ways.size()) ways.resize(run + 1);
  Ways& way = ways[run];
  const bool isFirst = way.forwards.empty() && way.backwards.empty();
  if (isFirst) way.backwardsFirst = step->backwards;
  (step->backwards ? way.backwards : way.forwards).push_back(std::move(step));
}

/// The step that holds a time; null where none does.
const StepPolynomial* StepRecord::Find(const Steps& steps, const Moment& time)
{
  if (steps.empty() || steps.front()->IsAhead(time)) return nullptr;
  const auto step = std::ranges::partition_point(
      steps, [&](const auto& candidate) { return candidate->IsOver(time); });
  if (step != steps.end()) return step->get();
  return steps.back()->end == time ? steps.back().get() : nullptr;
}

bool StepRecord::IsFirst(const Ways& way, const StepPolynomial& step)
{
  return &step == (step.backwards ? way.backwards : way.forwards).front().get();
}

std::optional<std::vector<SizedStates>> StepRecord::StatesAt(const Moment& time) const
{
  if (ways.empty()) return std::nullopt;
  std::vector<SizedStates> states;
  for (const Ways& way : ways) {
    const StepPolynomial* step = Find(way.forwards, time);
    if (step == nullptr) step = Find(way.backwards, time);
    if (step == nullptr) return std::nullopt;
    states.push_back({step->StatesAt(time), step->stateSizes});
    if (IsFirst(way, *step) && time == step->begin)
      states.back().sizes = SizesOf(states.back().values);
  }
  return states;
}

std::vector<std::shared_ptr<const StepPolynomial>> StepRecord::BestSteps() const
{
  if (ways.empty()) return {};
  const Ways& best = ways.back();
  const auto& [first, second] = best.backwardsFirst ? std::tie(best.backwards, best.forwards)
                                                    : std::tie(best.forwards, best.backwards);
  Steps steps = first;
  steps.insert(steps.end(), second.begin(), second.end());
  return steps;
}

}  // namespace varno::solve
