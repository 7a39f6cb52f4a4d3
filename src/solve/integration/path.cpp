#include "solve/integration/path.h"

#include <ranges>
#include <utility>

namespace varno::solve {

Path::Path(const Tape& tape, const RunSettings& settings, const Interval& interval,
           std::vector<Real> startStates, std::vector<Moment> early, StepWatch watch)
    : tape(tape), settings(settings), interval(interval), startStates(std::move(startStates)),
      watch(std::move(watch)), early(std::move(early))
{
  run.emplace(tape, settings, interval.start, this->startStates, this->early.empty() ? interval.to : this->early.front());
}

void Path::Reach(const Moment& time)
{
  while (run->IsBehind(time)) {
    run->Step();
    watch(*run);
  }
}

/// Goes from the start to the first of the early times, and begins anew for the others.
void Path::IntegrateEarly()
{
  for (const Moment& time : early | std::views::reverse) {
    Reach(time);
    earlyStates.push_back(run->StatesAt(time));
  }
  early.clear();
  earlySteps = run->Steps();
  run.emplace(tape, settings, interval.start, startStates, interval.to);
}

std::vector<Real> Path::StatesAt(const Moment& time)
{
  if (!early.empty()) IntegrateEarly();
  if (!earlyStates.empty()) {
    std::vector<Real> states = std::move(earlyStates.back());
    earlyStates.pop_back();
    return states;
  }
  Reach(time);
  return run->StatesAt(time);
}

Moment Path::NextStepEnd(const Moment& time)
{
  do {
    run->Step();
    watch(*run);
  } while (!(interval.IsBackwards() ? run->End() < time : run->End() > time));
  return run->End();
}

}  // namespace varno::solve
