#include "solve/integration/lockstep.h"

#include <algorithm>
#include <utility>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/integration/singularity.h"
#include "solve/integration/step_series.h"

namespace varno::solve {

namespace {

/// To start threads takes longer than many a run.
constexpr std::chrono::microseconds kTimeBeforeThreads{100};
/// With so many bits, or terms, a single step is long.
constexpr mpfr_prec_t kBitsOfLongSteps = 2000;
constexpr double kTermsOfLongSteps = 5000;
/// The times at which states jump are known to about so many bits less than the tolerance has.
constexpr double kNoiseBits = 14;

}  // namespace

Lockstep::Lockstep(const MakeStepper& make, const std::vector<RunSettings>& settings,
                   const Moment& start, const std::vector<std::vector<Real>>& states,
                   const Moment& reach, StepWatch watch, const Poll& poll, Compare compare,
                   int threads)
    : start(start),
      mayUseThreads(threads > 1 && settings.size() > 1),
      reach(reach),
      watch(std::move(watch)),
      compare(std::move(compare))
{
  for (std::size_t i = 0; i < settings.size(); ++i) {
    RunSettings own = settings[i];
    own.threads = std::max(1, threads / static_cast<int>(settings.size()));
    runs.push_back(
        {std::make_unique<StepFeed>(make, own, start, states[i], reach, poll), nullptr, own});
    NoteSwitch(i);
  }
  threadsFrom = std::chrono::steady_clock::now();
  const Runner& best = runs.back();
  const double terms = static_cast<double>(best.feed->LineCount()) * best.settings.order;
  const bool areLong = best.settings.bits >= kBitsOfLongSteps || terms >= kTermsOfLongSteps;
  if (!areLong) threadsFrom += kTimeBeforeThreads;
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
  ThrowIfEndedBefore(time);
}

void Lockstep::ReachNextStep(const Moment& time)
{
  while (!AnyEnded() && (Best().End() == time || Best().IsBehind(time))) Advance(*RunBehind());
  // The more exact runs come nearer to a singularity: see whether they end there, too.
  if (AnyEnded()) ReachEnd();
}

void Lockstep::ReachEnd()
{
  Reach(reach);
  if (runs.back().end != nullptr) std::rethrow_exception(runs.back().end);
}

bool Lockstep::AnyEnded() const
{
  return std::ranges::any_of(runs, [](const Runner& run) { return run.end != nullptr; });
}

void Lockstep::UseThreads()
{
  mayUseThreads = false;
  for (std::size_t i = 1; i < runs.size(); ++i) runs[i].feed->GoAhead();
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
  } catch (const StoppedByEvent&) {
    runs[run].end = std::current_exception();
    return;
  }
  NoteSwitch(run);
  watch(run, Latest(run));
  CompareAfter(run);
}

void Lockstep::NoteSwitch(std::size_t run)
{
  const std::shared_ptr<const Switch>& what = Latest(run).switched;
  if (what == nullptr) return;
  runs[run].switches.push_back(what);
  ++runs[run].passed;
}

/// Whether something happened up to a time.
bool Lockstep::IsReached(const Runner& run, const Switch& what, const Moment& time) const
{
  const double apart = Log2Size(what.time - time), way = Log2Size(time - start);
  if (apart <= way - run.settings.onTimeBits) return true;
  if (what.jumps && apart < way - run.settings.toleranceBits + kNoiseBits) throw ZeroInDoubt{time};
  return run.feed->Latest().backwards ? what.time >= time : what.time <= time;
}

std::optional<Lockstep::Switches> Lockstep::TakeSwitch(const Moment& time)
{
  Switches switches;
  std::size_t reached = 0;
  for (const Runner& run : runs) {
    if (run.switches.empty()) continue;
    switches.push_back(run.switches.front());
    if (IsReached(run, *switches.back(), time)) ++reached;
  }
  if (reached == 0) return std::nullopt;
  // One of them may lie just behind the time.
  if (switches.size() < runs.size()) throw Disagreement{switches.front()->time};
  for (Runner& run : runs) run.switches.pop_front();
  return switches;
}

SizedStates Lockstep::StatesAt(std::size_t run, const Moment& time) const
{
  const DenseStep& step = Latest(run);
  if (step.switched && IsReached(runs[run], *step.switched, time))
    return {step.switched->states, step.switched->sizes};
  // Of a run that has ended nothing but its end is left, which cannot be told from the time.
  const bool hasEnded = runs[run].end != nullptr;
  return {step.StatesAt(hasEnded ? step.End() : time), step.StateSizes()};
}

/// Whether the latest step of the run behind ends within a smooth stretch, and that of the other
/// one holds the end on the same stretch.
bool Lockstep::AreOnOneStretch(const Runner& ahead, const Runner& behind) const
{
  const bool endsInSwitch = ahead.feed->Latest().switched != nullptr;
  return !behind.feed->Latest().switched && ahead.passed - (endsInSwitch ? 1 : 0) == behind.passed;
}

/// A run has made a step, or the best one has: the latest step of the run may hold the end of the
/// best one's now. To compare at the ends of the others, too, would take the series of the best
/// run, which is in the memory of another core.
void Lockstep::CompareWithBest(std::size_t run) const
{
  const DenseStep &step = Latest(run), &best = Best();
  if (step.Steps() == 0 || best.Steps() == 0 || step.IsBehind(best.End())) return;
  if (runs[run].end != nullptr || runs.back().end != nullptr) return;
  if (AreOnOneStretch(runs[run], runs.back())) compare(best.End(), step, best);
}

void Lockstep::CompareAfter(std::size_t run) const
{
  const std::size_t best = runs.size() - 1;
  if (run < best) return CompareWithBest(run);
  for (std::size_t i = 0; i < best; ++i) CompareWithBest(i);
}

/// Whether a run has come to a time, or ended where this cannot be told from it.
bool Lockstep::HasReached(const Runner& run, const Moment& time) const
{
  const DenseStep& latest = run.feed->Latest();
  if (!latest.IsBehind(time)) return true;
  const double way = Log2Size(time - start);
  return run.end != nullptr && Log2Size(latest.end - time) <= way - run.settings.onTimeBits;
}

/// Where some runs have ended, all must have: else the others went on where those could not.
void Lockstep::ThrowIfEndedBefore(const Moment& time) const
{
  const auto hasReached = [&](const Runner& run) { return HasReached(run, time); };
  if (std::ranges::all_of(runs, hasReached)) return;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    if (runs[i].end == nullptr || hasReached(runs[i])) throw Disagreement{Latest(i).End()};
  }
  std::rethrow_exception(runs.back().end);
}

}  // namespace varno::solve
