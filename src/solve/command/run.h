#pragma once

#include "solve/command/command_line.h"
#include "solve/command/console.h"
#include "solve/command/sweep_host.h"

namespace varno::solve {

/// Does what a command line asks for: reads the problem, solves it, writes the rows. Returns the
/// exit status of the process; every failure has been told on the console.
int Run(const CommandLine& commandLine, const Console& console, const SweepHost& host);

}  // namespace varno::solve
