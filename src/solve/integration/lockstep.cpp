#include "solve/integration/lockstep.h"

#include <algorithm>
#include <utility>

#include "solve/evaluation/domain_error.h"

namespace varno::solve {

Lockstep::Lockstep(const Tape& tape, const std::vector<RunSettings>& settings, const Moment& start,
                   const std::vector<std::vector<Real>>& states, const Moment& reach,
                   StepWatch watch, const Poll& poll, Compare compare)
    : reach(reach), watch(std::move(watch)), compare(std::move(compare))
{
  ends.resize(settings.size());
  runs.reserve(settings.size());
  for (std::size_t i = 0; i < settings.size(); ++i)
    runs.emplace_back(tape, settings[i], start, states[i], reach, poll);
}

/// The run that is farthest behind among those that have not ended; null when all have.
Run* Lockstep::RunBehind()
{
  Run* behind = nullptr;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    if (ends[i] == nullptr && (behind == nullptr || runs[i].IsBehind(behind->End())))
      behind = &runs[i];
  }
  return behind;
}

void Lockstep::Reach(const Moment& time)
{
  for (Run* run = RunBehind(); run != nullptr && run->IsBehind(time); run = RunBehind())
    Advance(*run);
  ThrowIfEnded();
}

void Lockstep::ReachNextStep(const Moment& time)
{
  while (!AnyEnded() && (Best().End() == time || Best().IsBehind(time))) Advance(*RunBehind());
  // The more exact runs come nearer to a singularity: see whether they end there, too.
  if (AnyEnded()) Reach(reach);
}

bool Lockstep::AnyEnded() const
{
  return std::ranges::any_of(ends, [](const auto& end) { return end != nullptr; });
}

void Lockstep::Advance(Run& run)
{
  try {
    run.Step();
  } catch (const DomainError&) {
    ends[static_cast<std::size_t>(&run - runs.data())] = std::current_exception();
    return;
  } catch (const Singularity&) {
    ends[static_cast<std::size_t>(&run - runs.data())] = std::current_exception();
    return;
  }
  watch(run);
  CompareAfter(run);
}

/// A run has made a step: it or the other one, whichever is behind now, ends a step that the other
/// one's latest step holds.
void Lockstep::CompareAfter(const Run& run) const
{
  for (const Run& other : runs) {
    const bool hasEnded = ends[static_cast<std::size_t>(&other - runs.data())] != nullptr;
    if (&other == &run || other.Steps() == 0 || hasEnded) continue;
    compare(run.IsBehind(other.End()) ? run.End() : other.End(), run, other);
  }
}

/// Where some runs have ended, all must have: else the others went on where those could not.
void Lockstep::ThrowIfEnded() const
{
  if (!AnyEnded()) return;
  const auto goesOn = std::ranges::find(ends, nullptr);
  if (goesOn != ends.end())
    throw Disagreement{runs[static_cast<std::size_t>(goesOn - ends.begin())].End()};
  std::rethrow_exception(ends.back());
}

}  // namespace varno::solve
