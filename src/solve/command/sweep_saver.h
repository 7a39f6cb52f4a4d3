#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "solve/command/state_file.h"
#include "solve/sweep/ordered_output.h"

namespace varno::solve {

/// Keeps in a file where a sweep stands, if there is to be one: from time to time, at once when a
/// signal wants an end, and at the end. A process that dies loses a tenth of its time at most, and
/// no more than some seconds.
class SweepSaver {
 public:
  /// Saves for the first time: a file that cannot be written is told before anything is computed.
  /// Throws OutputError.
  SweepSaver(std::optional<std::string> path, SavedState state, const OrderedOutput& output);
  SweepSaver(const SweepSaver&) = delete;
  SweepSaver& operator=(const SweepSaver&) = delete;
  ~SweepSaver() { Stop(); }

  /// Saves on a thread of its own until Finish.
  void KeepSaving();
  /// Saves for the last time. Throws OutputError.
  void Finish();

 private:
  using Clock = std::chrono::steady_clock;

  void Save();
  void SaveAgainAndAgain();
  void Stop();

  std::optional<std::string> path;
  SavedState state;
  const OrderedOutput& output;
  Clock::time_point begin = Clock::now();
  Clock::duration latestCost{};
  std::int64_t savedRuns = 0;

  std::mutex mutex;
  std::condition_variable stopping;
  bool isStopped = false;
  std::exception_ptr error;
  std::thread thread;
};

}  // namespace varno::solve
