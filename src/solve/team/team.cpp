#include "solve/team/team.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <mpfr.h>

#include "solve/number/exponent_range.h"
#include "solve/team/start_elsewhere.h"

namespace varno::solve {

namespace {

/// How often a member looks before it sleeps: for some hundred microseconds, more than one thread
/// needs mostly between two jobs. To wake another one takes a tenth of that.
constexpr int kMostLooks = 8000;

/// Lets a processor rest for a moment.
void Pause()
{
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#endif
}

}  // namespace

Team::Team(int memberCount)
{
  errors.resize(static_cast<std::size_t>(memberCount));
  try {
    for (int member = 1; member < memberCount; ++member) {
      std::thread thread = StartElsewhere([this, member] { Serve(member); });
      if (!thread.joinable()) break;
      threads.push_back(std::move(thread));
    }
  } catch (...) {
    Dismiss();
    throw;
  }
}

Team::~Team()
{
  Dismiss();
}

void Team::Dismiss()
{
  isDismissed = true;
  ++jobs;
  jobs.notify_all();
  for (std::thread& thread : threads) thread.join();
}

void Team::WaitForChange(const Counter& counter, std::uint32_t known)
{
  for (int look = 0; look < kMostLooks; ++look) {
    if (counter.load(std::memory_order_acquire) != known) return;
    Pause();
  }
  counter.wait(known, std::memory_order_acquire);
}

void Team::Run(std::size_t roundCount, const Job& wanted)
{
  // All others wait for the next job: nobody looks at any of this.
  job = &wanted;
  hasFailed = false;
  const std::size_t first = Pace::FirstOfSample(roundCount),
                    behind = Pace::BehindSample(roundCount);
  const bool isTogether = pace.IsTogether();
  RunRounds(0, first, isTogether);
  const auto begin = std::chrono::steady_clock::now();
  RunRounds(first, behind, pace.IsSampleTogether());
  pace.Took(roundCount,
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  RunRounds(behind, roundCount, isTogether);
}

void Team::RunRounds(std::size_t first, std::size_t behind, bool together)
{
  if (first == behind) return;
  firstRound = first;
  behindRounds = behind;
  if (together) {
    RunTogether();
    return;
  }
  for (std::size_t round = first; round < behind; ++round) {
    for (int member = 0; member < MemberCount(); ++member) (*job)(member, round);
  }
}

void Team::RunTogether()
{
  arrived = 0;
  done = 0;
  std::ranges::fill(errors, nullptr);
  ++jobs;
  jobs.notify_all();
  DoPart(0);
  for (std::uint32_t count = done; count < threads.size(); count = done) WaitForChange(done, count);
  for (const std::exception_ptr& error : errors) {
    if (error != nullptr) std::rethrow_exception(error);
  }
}

/// What a thread of the team does while it lives.
void Team::Serve(int member)
{
  {
    const ScopedExponentRange range;
    for (std::uint32_t known = 0;; ++known) {
      WaitForChange(jobs, known);
      if (isDismissed) break;
      DoPart(member);
      if (++done == threads.size()) done.notify_one();
    }
  }
  mpfr_free_cache();  // which belongs to the thread
}

void Team::DoPart(int member)
{
  try {
    for (std::size_t round = firstRound; round < behindRounds; ++round) {
      if (round > firstRound) Meet();
      (*job)(member, round);
    }
  } catch (const Stopped&) {
    // Another member tells why.
  } catch (...) {
    errors[static_cast<std::size_t>(member)] = std::current_exception();
    hasFailed = true;
    ++meetings;
    meetings.notify_all();
  }
}

/// Waits for all others.
void Team::Meet()
{
  const std::uint32_t known = meetings.load(std::memory_order_acquire);
  StopIfFailed();
  if (arrived.fetch_add(1, std::memory_order_acq_rel) + 1 == MemberCount()) {
    arrived.store(0, std::memory_order_relaxed);
    meetings.fetch_add(1, std::memory_order_acq_rel);
    meetings.notify_all();
  } else {
    WaitForChange(meetings, known);
  }
  StopIfFailed();
}

void Team::StopIfFailed() const
{
  if (hasFailed.load(std::memory_order_acquire)) throw Stopped();
}

}  // namespace varno::solve
