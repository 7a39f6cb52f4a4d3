#pragma once

#include "solve/command/command_line.h"
#include "solve/command/console.h"
#include "solve/command/state_file.h"
#include "solve/command/sweep_host.h"
#include "solve/library/solve.h"

namespace varno::solve {

/// Solves a problem for all combinations of the swept values and prints the rows in their order.
/// Goes on from the state, if it has any of a sweep. Returns the exit status. Throws what reading
/// the options and writing the rows throw.
int SolveSweep(const CommandLine& commandLine, const SavedState& state, const Problem& problem,
               const Console& console, const SweepHost& host);

}  // namespace varno::solve
