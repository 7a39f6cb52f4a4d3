#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "solve/rows/text_sink.h"
#include "solve/rows/text_skip.h"
#include "solve/sweep/run_exchange.h"
#include "solve/sweep/sweep_state.h"

namespace varno::solve {

/// Hands out the runs of a sweep, and brings their texts, which several threads make in any order,
/// out in the order of the runs. What is ahead of its turn waits in memory; when much waits, so do
/// the threads that would add to it, but for the one whose turn it is.
class OrderedOutput final : public RunExchange {
 public:
  /// What stands in front: `header` before the first text of all, `separator` before that of each
  /// further run that has any.
  struct Frame {
    std::string header, separator;
  };

  /// `mostWaiting`: bytes that may wait before threads do. A sweep that was ended goes on from
  /// `state`: what was written of its current run is left out when that comes again; where it does
  /// not come again, writing throws TextChanged.
  OrderedOutput(TextSink& rows, TextSink& messages, Frame frame, std::size_t mostWaiting,
                std::int64_t runCount, SweepState state = {});

  /// Writes what an earlier process had finished and could not write any more: first of all, where
  /// a state is given.
  void GoOn();

  std::optional<RunRange> Take(std::int64_t most) override;
  void AddRows(std::int64_t run, std::string_view text) override;
  void AddMessage(std::int64_t run, std::string_view text) override;
  void Finish(std::int64_t run, RunOutcome outcome) override;
  void Stop() override;

  /// Take without waiting: an empty range where there is no room yet.
  std::optional<RunRange> TryTake(std::int64_t most);
  /// Whether there is room for more rows of a run.
  bool HasRoom(std::int64_t run) const;
  /// AddRows without waiting for room.
  void AddRowsAtOnce(std::int64_t run, std::string_view text);
  bool IsStopped() const;

  /// Called after each run with how many are done, by one thread at a time and not for all of them
  /// when they come fast.
  void Watch(std::function<void(std::int64_t done)> given) { watch = std::move(given); }
  SweepResult Result() const;
  /// Where the sweep stands. What a sink has failed to write counts as not written.
  SweepState State() const;

 private:
  struct Texts {
    std::string rows, messages;
    bool isFinished = false;
  };

  void ThrowIfStopped() const;
  bool MayAdd(std::int64_t run) const { return run == state.current || waitingBytes < mostWaiting; }
  std::optional<RunRange> Next(std::int64_t most);
  void Add(std::int64_t run, std::string_view text);
  void WriteRows(std::string_view text);
  void WriteFinishedRuns();
  template <typename Write>
  void Guarded(Write write);

  TextSink& rowSink;
  TextSink& messageSink;
  Frame frame;
  std::size_t mostWaiting;
  std::int64_t runCount;
  std::function<void(std::int64_t done)> watch;
  std::mutex watchMutex;

  mutable std::mutex mutex;
  std::condition_variable changed;
  SweepState state;                       // without what waits
  TextSkip written;                       // of the current run by an earlier process
  std::map<std::int64_t, Texts> waiting;  // by run
  std::size_t waitingBytes = 0;
  std::int64_t next = 0;                  // the first run that was not handed out
  std::set<std::int64_t> finishedBefore;  // runs of an earlier process, which are not made again
  bool isStopped = false;
};

}  // namespace varno::solve
