#include "solve/sweep/sweep_runs.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include <mpfr.h>

namespace varno::solve {

namespace {

using Clock = std::chrono::steady_clock;

/// The rows of a run are brought in one piece if it takes less than this, else when so much time
/// or so many bytes have come together.
constexpr std::chrono::milliseconds kLongestWait{50};
constexpr std::size_t kMostHeld = std::size_t{1} << 18;
/// Runs are taken for about so much time at once.
constexpr std::chrono::milliseconds kTimeOfRange{100};

/// The rows of one run.
class RunSink final : public TextSink {
 public:
  RunSink(RunExchange& exchange, std::int64_t run) : exchange(exchange), run(run) {}

  void Write(std::string_view text) override
  {
    held += text;
    if (held.size() >= kMostHeld || Clock::now() - latest >= kLongestWait) Flush();
  }
  void Flush()
  {
    if (!held.empty()) exchange.AddRows(run, held);
    held.clear();
    latest = Clock::now();
  }

 private:
  RunExchange& exchange;
  std::int64_t run;
  std::string held;
  Clock::time_point latest = Clock::now();
};

/// What the threads of a sweep share.
class SweepRuns {
 public:
  SweepRuns(const SweepPlan& plan, RunExchange& exchange) : plan(plan), exchange(exchange) {}

  void Run();

 private:
  void Work();
  void WorkUntilTheEnd();
  bool IsInterrupted() const { return plan.interrupted && plan.interrupted(); }
  RunOutcome Solve(std::int64_t run);
  void PrintRows(RunSink& sink, std::int64_t run, const Combination& combination);
  RunOutcome Fail(std::int64_t run, const Combination& combination, const std::string& reason);

  const SweepPlan& plan;
  RunExchange& exchange;

  std::mutex mutex;
  std::exception_ptr error;
};

void SweepRuns::Run()
{
  std::vector<std::jthread> threads;
  try {
    for (int i = 1; i < plan.jobs && i < plan.sweep.Count(); ++i) {
      threads.emplace_back([this] {
        Work();
        mpfr_free_cache();  // which belongs to the thread
      });
    }
  } catch (const std::system_error&) {
    // There are no more to be had: those that there are do everything.
  }
  Work();
  threads.clear();
  if (error != nullptr) std::rethrow_exception(error);
}

void SweepRuns::Work()
{
  try {
    WorkUntilTheEnd();
  } catch (const RunExchange::Stopped&) {
    // Another thread knows why.
  } catch (...) {
    const std::scoped_lock lock(mutex);
    if (error == nullptr) error = std::current_exception();
    exchange.Stop();
  }
}

void SweepRuns::WorkUntilTheEnd()
{
  std::int64_t most = 1;
  for (;;) {
    if (IsInterrupted()) return exchange.Stop();
    const std::optional<RunRange> range = exchange.Take(most);
    if (!range) return;
    const Clock::time_point begin = Clock::now();
    for (std::int64_t run = range->first; run < range->first + range->count; ++run) {
      if (IsInterrupted()) return exchange.Stop();
      const RunOutcome outcome = Solve(run);
      if (IsInterrupted()) return exchange.Stop();
      exchange.Finish(run, outcome);
    }
    const auto time = Clock::now() - begin;
    if (time < kTimeOfRange / 2) most = std::min(2 * most, plan.mostInRange);
    if (time > kTimeOfRange) most = std::max<std::int64_t>(1, most / 2);
  }
}

RunOutcome SweepRuns::Solve(std::int64_t run)
{
  const Combination combination = plan.sweep.At(run);
  RunSink sink(exchange, run);
  try {
    PrintRows(sink, run, combination);
    return RunOutcome::kAllRows;
  } catch (const InputError& wrong) {
    return Fail(run, combination, wrong.what());
  } catch (const RunEnded& end) {
    sink.Flush();
    if (end.Reason() == EndReason::kInterrupted) return RunOutcome::kFailed;
    Fail(run, combination, end.what());
    return end.Reason() == EndReason::kWrongRow ? RunOutcome::kRowWasWrong : RunOutcome::kFailed;
  } catch (const std::bad_alloc&) {
    sink.Flush();
    return Fail(run, combination, "out of memory");
  }
}

void SweepRuns::PrintRows(RunSink& sink, std::int64_t run, const Combination& combination)
{
  Solution solution = plan.family.At(combination.values);
  const PrintRow print = plan.makePrinter(sink, solution, run, combination);
  while (const std::optional<Row> row = solution.Next()) print(*row);
  sink.Flush();
}

RunOutcome SweepRuns::Fail(std::int64_t run, const Combination& combination,
                           const std::string& reason)
{
  exchange.AddMessage(run, plan.message(run, combination, reason));
  return RunOutcome::kFailed;
}

}  // namespace

void RunSweep(const SweepPlan& plan, RunExchange& exchange)
{
  SweepRuns(plan, exchange).Run();
}

}  // namespace varno::solve
