#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "solve/library/solve.h"
#include "solve/rows/text_sink.h"
#include "solve/sweep/ordered_output.h"
#include "solve/sweep/sweep.h"

namespace varno::solve {

/// Writes one row of one run.
using PrintRow = std::function<void(const Row&)>;

/// How the runs of a sweep are made.
struct SweepPlan {
  const Problem& problem;
  const Sweep& sweep;
  Options options;  ///< of each run
  int jobs = 1;     ///< threads, at least one
  /// What writes the rows of a run into a sink; called by several threads.
  std::function<PrintRow(TextSink&, const Solution&, std::int64_t run, const Combination&)>
      makePrinter;
  /// The message for a run that ended early or could not begin; called by several threads.
  std::function<std::string(std::int64_t run, const Combination&, const std::string& reason)>
      message;
  /// Called after each run with how many are done, by one thread at a time.
  std::function<void(std::int64_t done)> progress;
};

/// How a sweep went.
struct SweepResult {
  std::int64_t done = 0;    ///< runs that began and ended, those that failed included
  std::int64_t failed = 0;  ///< runs that ended early or could not begin
  std::int64_t wrong = 0;   ///< of these, runs in which a row was wrong that was already given
};

/// Solves a problem for all combinations of the swept values, several runs at a time; their rows
/// come out in the order of the sweep. A run that fails leaves its message, and the others go on.
/// Ends early when options.interrupted says so. Throws what the output throws.
SweepResult RunSweep(const SweepPlan& plan, OrderedOutput& output);

}  // namespace varno::solve
