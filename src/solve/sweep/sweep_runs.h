#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "solve/library/solve.h"
#include "solve/rows/text_sink.h"
#include "solve/sweep/run_exchange.h"
#include "solve/sweep/sweep.h"

namespace varno::solve {

/// Writes one row of one run.
using PrintRow = std::function<void(const Row&)>;

/// How the runs of a sweep are made.
struct SweepPlan {
  const Family& family;  ///< by the names of the sweep
  const Sweep& sweep;
  std::function<bool()> interrupted;  ///< Options::interrupted of the runs
  int jobs = 1;                       ///< threads, at least one
  std::int64_t mostInRange = 1;       ///< runs that a thread takes at once, when they are short
  /// What writes the rows of a run into a sink; called by several threads.
  std::function<PrintRow(TextSink&, const Solution&, std::int64_t run, const Combination&)>
      makePrinter;
  /// The message for a run that ended early or could not begin; called by several threads.
  std::function<std::string(std::int64_t run, const Combination&, const std::string& reason)>
      message;
};

/// Makes the runs that the exchange hands out, several at a time, and brings their texts there. A
/// run that fails leaves its message, and the others go on. Ends early when `interrupted` says so.
/// Throws what the exchange throws, but Stopped.
void RunSweep(const SweepPlan& plan, RunExchange& exchange);

}  // namespace varno::solve
