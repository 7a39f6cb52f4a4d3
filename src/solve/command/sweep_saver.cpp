#include "solve/command/sweep_saver.h"

#include <algorithm>
#include <utility>

#include "solve/command/problem_files.h"

namespace varno::solve {

namespace {

using std::chrono::milliseconds;

/// How often signals are looked for: mpirun leaves little time when it ends a job.
constexpr milliseconds kLookInterval{20};
constexpr milliseconds kShortestInterval{100};
constexpr milliseconds kLongestInterval{10'000};
/// Of the time so far, so much may pass until the next state.
constexpr int kPartOfTime = 10;
/// To save may take this part of the time.
constexpr int kPartForSaving = 20;

}  // namespace

SweepSaver::SweepSaver(std::optional<std::string> path, SavedState given,
                       const OrderedOutput& output)
    : path(std::move(path)), state(std::move(given)), output(output)
{
  Save();
}

void SweepSaver::Save()
{
  if (!path) return;
  const Clock::time_point start = Clock::now();
  state.sweep = output.State();
  WriteState(*path, state);
  savedRuns = state.sweep->result.done;
  latestCost = Clock::now() - start;
}

void SweepSaver::KeepSaving()
{
  if (path) thread = std::thread([this] { SaveAgainAndAgain(); });
}

void SweepSaver::SaveAgainAndAgain()
{
  Clock::time_point latest = begin;
  bool wasInterrupted = false;
  std::unique_lock lock(mutex);
  while (!stopping.wait_for(lock, kLookInterval, [this] { return isStopped; })) {
    const Clock::time_point now = Clock::now();
    const auto interval = std::max(std::clamp<Clock::duration>((now - begin) / kPartOfTime,
                                                               kShortestInterval, kLongestInterval),
                                   kPartForSaving * latestCost);
    const bool isNew = now - latest >= interval && output.Result().done > savedRuns;
    const bool isInterrupted = IsInterrupted() && !wasInterrupted;
    if (!isNew && !isInterrupted) continue;
    wasInterrupted |= isInterrupted;
    latest = now;
    try {
      Save();
    } catch (...) {
      error = std::current_exception();
      return;
    }
  }
}

void SweepSaver::Stop()
{
  if (!thread.joinable()) return;
  {
    const std::scoped_lock lock(mutex);
    isStopped = true;
  }
  stopping.notify_one();
  thread.join();
}

void SweepSaver::Finish()
{
  Stop();
  if (error != nullptr) std::rethrow_exception(error);
  Save();
}

}  // namespace varno::solve
