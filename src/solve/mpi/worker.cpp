#include "solve/mpi/worker.h"

#include <atomic>
#include <exception>
#include <string>
#include <thread>

#include "solve/command/command_line.h"
#include "solve/command/interruption.h"
#include "solve/command/problem_files.h"
#include "solve/command/state_file.h"
#include "solve/command/sweep_setup.h"
#include "solve/mpi/pause.h"
#include "solve/mpi/remote_exchange.h"
#include "solve/sweep/sweep_runs.h"

namespace varno::solve {

namespace {

/// Makes runs until there are no more. Returns what went wrong, if something did.
std::string MakeRuns(const std::string& job, int threads, int rankCount, RemoteExchange& exchange)
{
  try {
    const SavedState state = ParseState(job, "job");
    const CommandLine commandLine = WithState({}, state.options, state.file);
    const Problem problem = ReadProblem(state.inputs, commandLine);
    const SweepSetup setup(commandLine, state.inputs, problem);
    SweepPlan plan = setup.Plan(commandLine.jobs > 0 ? commandLine.jobs : threads, nullptr);
    plan.mostInRange = MostInRange(plan.sweep.Count(), rankCount);
    RunSweep(plan, exchange);
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace

void Work(Ranks& ranks)
{
  const std::string job = ranks.Broadcast({});
  if (job.empty()) return;
  const Interruption interruption;
  RemoteExchange exchange;
  std::atomic<bool> hasEnded = false;
  std::jthread threads([&, count = ranks.Threads(), rankCount = ranks.Count()] {
    exchange.End(MakeRuns(job, count, rankCount, exchange));
    hasEnded = true;
  });
  Pause pause;
  for (bool isBusy = true;; pause.After(isBusy)) {
    isBusy = false;
    while (const std::optional<Order> order = ranks.ReceiveOrder()) {
      exchange.Receive(*order);
      isBusy = true;
    }
    if (ranks.IsSending()) continue;
    const bool isLast = hasEnded;
    std::string parcel = exchange.TakeParcel();
    if (parcel.empty() && isLast) return;
    if (parcel.empty()) continue;
    ranks.Send(std::move(parcel));
    isBusy = true;
  }
}

}  // namespace varno::solve
