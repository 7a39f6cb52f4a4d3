#include "solve/sweep/sweep_runs.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include <mpfr.h>

namespace varno::solve {

namespace {

/// The rows of one run.
class RunSink final : public TextSink {
 public:
  RunSink(OrderedOutput& output, std::int64_t run) : output(output), run(run) {}
  void Write(std::string_view text) override { output.AddRows(run, text); }

 private:
  OrderedOutput& output;
  std::int64_t run;
};

/// What the threads of a sweep share.
class SweepRuns {
 public:
  SweepRuns(const SweepPlan& plan, OrderedOutput& output) : plan(plan), output(output) {}

  SweepResult Run();

 private:
  void Work();
  void WorkUntilTheEnd();
  bool IsInterrupted() const { return plan.options.interrupted && plan.options.interrupted(); }
  void Solve(std::int64_t run);
  void PrintRows(std::int64_t run, const Combination& combination);
  void Fail(std::int64_t run, const Combination& combination, const std::string& reason);
  void CountRun();

  const SweepPlan& plan;
  OrderedOutput& output;
  std::atomic<std::int64_t> next = 0;

  std::mutex mutex;  // of what follows
  SweepResult result;
  std::exception_ptr error;
};

SweepResult SweepRuns::Run()
{
  std::vector<std::jthread> threads;
  for (int i = 1; i < plan.jobs && i < plan.sweep.Count(); ++i) {
    threads.emplace_back([this] {
      Work();
      mpfr_free_cache();  // which belongs to the thread
    });
  }
  Work();
  threads.clear();
  if (error != nullptr) std::rethrow_exception(error);
  return result;
}

void SweepRuns::Work()
{
  try {
    WorkUntilTheEnd();
  } catch (const OrderedOutput::Stopped&) {
    // Another thread knows why.
  } catch (...) {
    const std::scoped_lock lock(mutex);
    if (error == nullptr) error = std::current_exception();
    output.Stop();
  }
}

void SweepRuns::WorkUntilTheEnd()
{
  for (;;) {
    output.AwaitRoom();
    if (IsInterrupted()) return output.Stop();
    const std::int64_t run = next++;
    if (run >= plan.sweep.Count()) return;
    Solve(run);
    if (IsInterrupted()) return output.Stop();
    output.Finish(run);
    CountRun();
  }
}

void SweepRuns::Solve(std::int64_t run)
{
  const Combination combination = plan.sweep.At(run);
  try {
    PrintRows(run, combination);
  } catch (const InputError& wrong) {
    Fail(run, combination, wrong.what());
  } catch (const RunEnded& end) {
    if (end.Reason() == EndReason::kInterrupted) return;
    Fail(run, combination, end.what());
    const std::scoped_lock lock(mutex);
    if (end.Reason() == EndReason::kWrongRow) ++result.wrong;
  } catch (const std::bad_alloc&) {
    Fail(run, combination, "out of memory");
  }
}

void SweepRuns::PrintRows(std::int64_t run, const Combination& combination)
{
  const Problem problem = plan.problem.With(combination.settings);
  Solution solution(problem, plan.options);
  RunSink sink(output, run);
  const PrintRow print = plan.makePrinter(sink, solution, run, combination);
  while (const std::optional<Row> row = solution.Next()) print(*row);
}

void SweepRuns::Fail(std::int64_t run, const Combination& combination, const std::string& reason)
{
  output.AddMessage(run, plan.message(run, combination, reason));
  const std::scoped_lock lock(mutex);
  ++result.failed;
}

void SweepRuns::CountRun()
{
  const std::scoped_lock lock(mutex);
  ++result.done;
  if (plan.progress) plan.progress(result.done);
}

}  // namespace

SweepResult RunSweep(const SweepPlan& plan, OrderedOutput& output)
{
  return SweepRuns(plan, output).Run();
}

}  // namespace varno::solve
