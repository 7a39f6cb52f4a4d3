#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

namespace varno::solve {

/// Waits between looks for messages, longer and longer while there are none: MPI itself would wait
/// with a busy processor, which is wanted for the runs.
class Pause {
 public:
  void After(bool wasBusy)
  {
    time = wasBusy ? kShortest : std::min(2 * time, kLongest);
    std::this_thread::sleep_for(time);
  }

 private:
  static constexpr std::chrono::microseconds kShortest{50}, kLongest{500};
  std::chrono::microseconds time = kShortest;
};

}  // namespace varno::solve
