#include "solve/mpi/coordinator.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "solve/mpi/pause.h"
#include "solve/mpi/records.h"

namespace varno::solve {

namespace {

using Clock = std::chrono::steady_clock;

/// Ranks that do not answer when a sweep has been stopped are given up after this time: they may
/// have died, and mpirun leaves little time when it ends a job.
constexpr std::chrono::milliseconds kTimeToStop{400};

/// Serves the other ranks until all have ended.
class Service {
 public:
  Service(Ranks& ranks, OrderedOutput& output)
      : ranks(ranks), output(output), ended(static_cast<std::size_t>(ranks.Count()), false)
  {
    ended[0] = true;
  }

  /// Goes on until the threads of this rank have ended, too. False where ranks were given up.
  bool Run(const std::atomic<bool>& ownHasEnded);
  void ThrowIfFailed() const
  {
    if (error != nullptr) std::rethrow_exception(error);
  }

 private:
  struct Wish {
    int rank;
    std::int64_t number;
  };

  bool AllEnded() const;
  bool Receive();
  void Take(int rank, RecordKind kind, std::int64_t number, std::string_view text);
  bool Serve();
  void TellStop();

  Ranks& ranks;
  OrderedOutput& output;
  std::vector<bool> ended;  // by rank
  std::deque<Wish> takers, askers;
  std::exception_ptr error;
  bool hasToldStop = false;
  Clock::time_point stopped;
};

bool Service::AllEnded() const
{
  for (const bool isEnded : ended) {
    if (!isEnded) return false;
  }
  return true;
}

bool Service::Run(const std::atomic<bool>& ownHasEnded)
{
  Pause pause;
  for (;;) {
    bool isBusy = false;
    while (Receive()) isBusy = true;
    isBusy |= Serve();
    if (output.IsStopped()) TellStop();
    if (ownHasEnded && AllEnded()) return true;
    if (hasToldStop && ownHasEnded && Clock::now() - stopped > kTimeToStop) return false;
    pause.After(isBusy);
  }
}

/// One parcel, if there is one.
bool Service::Receive()
{
  const auto parcel = ranks.ReceiveParcel();
  if (!parcel) return false;
  ForEachRecord(parcel->second, [&](RecordKind kind, std::int64_t number, std::string_view text) {
    try {
      Take(parcel->first, kind, number, text);
    } catch (const RunExchange::Stopped&) {
      // What comes now is too late.
    } catch (...) {
      if (error == nullptr) error = std::current_exception();
      output.Stop();
    }
  });
  return true;
}

void Service::Take(int rank, RecordKind kind, std::int64_t number, std::string_view text)
{
  switch (kind) {
    case RecordKind::kTake:
      takers.push_back({rank, number});
      return;
    case RecordKind::kAsk:
      askers.push_back({rank, number});
      return;
    case RecordKind::kRows:
      return output.AddRowsAtOnce(number, text);
    case RecordKind::kMessage:
      return output.AddMessage(number, text);
    case RecordKind::kFinish:
      return output.Finish(number, static_cast<RunOutcome>(text.front()));
    case RecordKind::kStop:
      return output.Stop();
    case RecordKind::kEnded:
      ended[static_cast<std::size_t>(rank)] = true;
      if (!text.empty()) throw std::runtime_error(std::string(text));
      return;
  }
}

/// Answers those who can be answered now. Whether there were any.
bool Service::Serve()
{
  if (output.IsStopped()) return false;
  bool isBusy = false;
  try {
    while (!takers.empty()) {
      const Wish wish = takers.front();
      const std::optional<RunRange> range = output.TryTake(wish.number);
      if (range && range->count == 0) break;
      takers.pop_front();
      const RunRange runs = range.value_or(RunRange{0, 0});
      ranks.Send(wish.rank, {OrderKind::kRuns, runs.first, runs.count});
      isBusy = true;
    }
  } catch (const RunExchange::Stopped&) {
    return true;
  }
  for (std::size_t i = askers.size(); i-- > 0;) {
    const Wish wish = askers.front();
    askers.pop_front();
    if (output.HasRoom(wish.number)) {
      ranks.Send(wish.rank, {OrderKind::kGrant, wish.number, 0});
      isBusy = true;
    } else {
      askers.push_back(wish);
    }
  }
  return isBusy;
}

void Service::TellStop()
{
  if (hasToldStop) return;
  hasToldStop = true;
  stopped = Clock::now();
  for (int rank = 1; rank < ranks.Count(); ++rank) {
    if (!ended[static_cast<std::size_t>(rank)]) ranks.Send(rank, {OrderKind::kStop, 0, 0});
  }
}

}  // namespace

SweepHost Coordinator::Host()
{
  return {.jobs = ranks.Threads(),
          .isAlone = ranks.Count() == 1,
          .run = [this](const std::string& job, const SweepPlan& plan, OrderedOutput& output) {
            Run(job, plan, output);
          }};
}

void Coordinator::Run(const std::string& job, const SweepPlan& plan, OrderedOutput& output)
{
  hasBegun = true;
  ranks.Broadcast(job);
  std::atomic<bool> hasEnded = false;
  std::exception_ptr error;
  SweepPlan own = plan;
  own.mostInRange = MostInRange(plan.sweep.Count(), ranks.Count());
  std::jthread threads([&] {
    try {
      RunSweep(own, output);
    } catch (...) {
      error = std::current_exception();
    }
    hasEnded = true;
  });
  Service service(ranks, output);
  allEnded = service.Run(hasEnded);
  threads.join();
  if (error != nullptr) std::rethrow_exception(error);
  service.ThrowIfFailed();
}

bool Coordinator::Dismiss()
{
  if (!hasBegun) ranks.Broadcast({});
  return allEnded;
}

}  // namespace varno::solve
