#pragma once

#include <memory>
#include <string>

#include "solve/command/command_line.h"
#include "solve/command/plotting.h"
#include "solve/command/problem_files.h"
#include "solve/library/solve.h"
#include "solve/rows/text_sink.h"
#include "solve/sweep/ordered_output.h"
#include "solve/sweep/sweep.h"
#include "solve/sweep/sweep_runs.h"

namespace varno::solve {

/// What a sweep is made of, on whatever machine its runs are made.
class SweepSetup {
 public:
  /// All must outlive this. Throws UsageError, InputError.
  SweepSetup(const CommandLine& commandLine, const Inputs& inputs, const Problem& problem);
  SweepSetup(const SweepSetup&) = delete;
  SweepSetup& operator=(const SweepSetup&) = delete;

  const Sweep& AllRuns() const { return sweep; }
  const Options& RunOptions() const { return options; }
  /// The names of the solution's columns.
  const std::vector<std::string>& Columns() const { return asWritten.Columns(); }
  /// What stands before all rows, the header line of csv, and before the rows of a run.
  OrderedOutput::Frame Frame() const;
  /// How to make the runs, with this many threads. What a plot asks for goes there, too.
  SweepPlan Plan(int jobs, Plotting* plotting) const;

 private:
  const CommandLine& commandLine;
  Sweep sweep;
  Options options;
  Solution asWritten;
  Family family;
};

}  // namespace varno::solve
