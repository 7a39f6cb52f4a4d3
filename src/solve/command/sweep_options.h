#pragma once

#include "solve/command/command_line.h"
#include "solve/library/solve.h"
#include "solve/sweep/sweep.h"

namespace varno::solve {

/// The sweep that the options --sweep and --sweep-file ask for: those first, then these, each in
/// its order; the last one changes from run to run. Throws UsageError, InputError, InputFileError.
Sweep ReadSweep(const CommandLine& commandLine, const Problem& problem);

}  // namespace varno::solve
