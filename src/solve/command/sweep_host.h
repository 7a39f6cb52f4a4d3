#pragma once

#include <functional>
#include <string>

#include "solve/sweep/ordered_output.h"
#include "solve/sweep/sweep_runs.h"

namespace varno::solve {

/// Where the runs of sweeps are made.
struct SweepHost {
  int jobs;             ///< threads of this process, unless --jobs says otherwise
  bool isAlone = true;  ///< whether all runs are made in this process
  /// Makes the runs that the output hands out. `job` is a text of InitialState, from which another
  /// process makes the same plan. Throws what RunSweep does.
  std::function<void(const std::string& job, const SweepPlan& plan, OrderedOutput& output)> run;
};

/// The threads of this process.
SweepHost ThisProcess();

}  // namespace varno::solve
