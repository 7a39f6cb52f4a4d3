#pragma once

#include <vector>

#include "solve/command/command_line.h"
#include "solve/command/input_file.h"
#include "solve/library/solve.h"
#include "solve/sweep/sweep.h"

namespace varno::solve {

/// The sweep that the options --sweep and --sweep-file ask for: those first, then these, each in
/// its order; the last one changes from run to run. `files` are those of --sweep-file. Throws
/// UsageError, InputError.
Sweep ReadSweep(const CommandLine& commandLine, const std::vector<InputFile>& files,
                const Problem& problem);

}  // namespace varno::solve
