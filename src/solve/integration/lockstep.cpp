#include "solve/integration/lockstep.h"

#include <algorithm>
#include <utility>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/singularity.h"

namespace varno::solve {

namespace {

/// To start threads takes longer than many a run.
constexpr std::chrono::milliseconds kTimeBeforeThreads{5};
/// With so many bits a single step is long.
constexpr mpfr_prec_t kBitsOfLongSteps = 2000;

}  // namespace

Lockstep::Lockstep(const MakeStepper& make, const std::vector<RunSettings>& settings, const Moment& start,
                   const std::vector<std::vector<Real>>& states, const Moment& reach,
                   StepWatch watch, const Poll& poll, Compare compare, bool mayUseThreads)
    : mayUseThreads(mayUseThreads && settings.size() > 1),
      reach(reach),
      watch(std::move(watch)),
      compare(std::move(compare))
{
  for (std::size_t i = 0; i < settings.size(); ++i) {
    runs.push_back(
        {std::make_unique<StepFeed>(make, settings[i], start, states[i], reach, poll), nullptr});
  }
  threadsFrom = std::chrono::steady_clock::now();
  if (settings.back().bits < kBitsOfLongSteps) threadsFrom += kTimeBeforeThreads;
}

/// The run that is farthest behind among those that have not ended; none when all have.
std::optional<std::size_t> Lockstep::RunBehind() const
{
  std::optional<std::size_t> behind;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    if (runs[i].end == nullptr && (!behind || Latest(i).IsBehind(Latest(*behind).End())))
      behind = i;
  }
  return behind;
}

void Lockstep::Reach(const Moment& time)
{
  for (auto run = RunBehind(); run && Latest(*run).IsBehind(time); run = RunBehind()) Advance(*run);
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
  return std::ranges::any_of(runs, [](const Runner& run) { return run.end != nullptr; });
}

void Lockstep::UseThreads()
{
  mayUseThreads = false;
  for (const Runner& run : runs) run.feed->GoAhead();
}

void Lockstep::Advance(std::size_t run)
{
  if (mayUseThreads && std::chrono::steady_clock::now() >= threadsFrom) UseThreads();
  try {
    runs[run].feed->Advance();
  } catch (const DomainError&) {
    runs[run].end = std::current_exception();
    return;
  } catch (const Singularity&) {
    runs[run].end = std::current_exception();
    return;
  }
  watch(run, Latest(run));
  CompareAfter(run);
}

/// A run has made a step: it or the other one, whichever is behind now, ends a step that the other
/// one's latest step holds.
void Lockstep::CompareAfter(std::size_t run) const
{
  const DenseStep& latest = Latest(run);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const DenseStep& other = Latest(i);
    if (i == run || other.Steps() == 0 || runs[i].end != nullptr) continue;
    compare(latest.IsBehind(other.End()) ? latest.End() : other.End(), latest, other);
  }
}

/// Where some runs have ended, all must have: else the others went on where those could not.
void Lockstep::ThrowIfEnded() const
{
  if (!AnyEnded()) return;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    if (runs[i].end == nullptr) throw Disagreement{Latest(i).End()};
  }
  std::rethrow_exception(runs.back().end);
}

}  // namespace varno::solve
