#include "solve/team/team.h"

#include <algorithm>

#include <mpfr.h>

#include "solve/number/exponent_range.h"

namespace varno::solve {

namespace {

/// Some hundred microseconds: to wake a thread takes a tenth of it, and what one thread does between
/// two jobs mostly less. Only where each member has a processor of its own.
constexpr int kMostLooks = 20000;

/// Lets a processor rest for a moment.
void Pause()
{
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#endif
}

}  // namespace

Team::Team(int memberCount) : errors(static_cast<std::size_t>(memberCount))
{
  const unsigned processors = std::thread::hardware_concurrency();
  mostLooks = static_cast<unsigned>(memberCount) <= processors ? kMostLooks : 1;
  try {
    for (int member = 1; member < memberCount; ++member)
      threads.emplace_back([this, member] { Serve(member); });
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

void Team::WaitForChange(const Counter& counter, std::uint32_t known) const
{
  for (int look = 0; look < mostLooks; ++look) {
    if (counter.load(std::memory_order_acquire) != known) return;
    Pause();
  }
  counter.wait(known, std::memory_order_acquire);
}

void Team::Run(const Job& wanted)
{
  // All others wait for the next job: nobody looks at any of this.
  job = &wanted;
  hasFailed = false;
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
    (*job)(member);
  } catch (const Stopped&) {
    // Another member tells why.
  } catch (...) {
    errors[static_cast<std::size_t>(member)] = std::current_exception();
    hasFailed = true;
    ++meetings;
    meetings.notify_all();
  }
}

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
