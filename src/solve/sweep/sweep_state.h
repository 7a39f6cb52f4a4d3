#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "solve/rows/text_digest.h"

namespace varno::solve {

/// How a sweep went so far.
struct SweepResult {
  std::int64_t done = 0;    ///< runs that began and ended, those that failed included
  std::int64_t failed = 0;  ///< runs that ended early or could not begin
  std::int64_t wrong = 0;   ///< of these, runs in which a row was wrong that was already given
};

/// Where a sweep stands: what is to be kept if another process shall go on with it.
struct SweepState {
  /// A run that has ended before those in front of it.
  struct FinishedRun {
    std::int64_t run = 0;
    std::string rows, messages;
  };

  SweepResult result;
  std::int64_t current = 0;          ///< the first run whose rows are not all written
  std::int64_t rowBytes = 0;         ///< written in all
  bool hasHeader = false;            ///< whether anything is written
  TextDigest rowsOfCurrent;          ///< what is written of the current run
  std::vector<FinishedRun> waiting;  ///< in order
};

}  // namespace varno::solve
