#pragma once

#include "solve/command/command_line.h"
#include "solve/command/console.h"
#include "solve/library/solve.h"

namespace varno::solve {

/// Solves a problem for all combinations of the swept values and prints the rows in their order.
/// Returns the exit status. Throws what reading the options and writing the rows throw.
int SolveSweep(const CommandLine& commandLine, const Problem& problem, const Console& console);

}  // namespace varno::solve
