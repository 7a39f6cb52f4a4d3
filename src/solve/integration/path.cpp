#include "solve/integration/path.h"

#include <utility>

namespace varno::solve {

Path::Path(Problem given, std::vector<Moment> earlyTimes)
    : problem(std::move(given)), early(std::move(earlyTimes))
{
  Depart(early.empty() ? problem.interval.to : early.front());
}

void Path::Depart(const Moment& reach)
{
  lockstep.emplace(problem.makeRun, problem.settings, problem.interval.start, problem.startStates,
                   reach, problem.watch, problem.poll, problem.compare, problem.threads);
}

std::vector<SizedStates> Path::LatestStates(const Moment& time) const
{
  std::vector<SizedStates> states;
  for (std::size_t i = 0; i < lockstep->RunCount(); ++i)
    states.push_back(lockstep->StatesAt(i, time));
  return states;
}

/// Goes from the start to the first of the early times, and begins anew for the others.
void Path::IntegrateEarly()
{
  for (auto time = early.rbegin(); time != early.rend(); ++time) {
    lockstep->Reach(*time);
    earlyStates.push_back(LatestStates(*time));
    KeepSwitches(*time);
  }
  early.clear();
  earlySteps = Best().Steps();
  Depart(problem.interval.to);
}

/// What happens at the start belongs to the way onwards.
void Path::KeepSwitches(const Moment& time)
{
  while (auto switches = lockstep->TakeSwitch(time)) {
    if (switches->back()->time != problem.interval.start)
      earlySwitches.push_back(*std::move(switches));
  }
}

std::optional<Lockstep::Switches> Path::TakeSwitch(const Moment& time)
{
  if (!early.empty()) return std::nullopt;
  if (!earlySwitches.empty()) {
    const Moment& first = earlySwitches.back().back()->time;
    if (problem.interval.IsBackwards() ? first < time : first > time) return std::nullopt;
    Lockstep::Switches switches = std::move(earlySwitches.back());
    earlySwitches.pop_back();
    return switches;
  }
  if (!earlyStates.empty()) return std::nullopt;
  return lockstep->TakeSwitch(time);
}

std::vector<SizedStates> Path::StatesAt(const Moment& time)
{
  if (!early.empty()) IntegrateEarly();
  if (!earlyStates.empty()) {
    std::vector<SizedStates> states = std::move(earlyStates.back());
    earlyStates.pop_back();
    return states;
  }
  lockstep->Reach(time);
  return LatestStates(time);
}

Moment Path::NextStepEnd(const Moment& time)
{
  lockstep->ReachNextStep(time);
  return Best().End();
}

}  // namespace varno::solve
