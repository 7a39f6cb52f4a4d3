#pragma once

#include "solve/command/command_line.h"
#include "solve/command/output_file.h"
#include "solve/library/solve.h"

namespace varno::solve {

/// Whether a signal wants the run to end; for Options::interrupted.
bool IsInterrupted();

/// Reads the file of the equations, and makes the settings. Throws InputFileError, InputError.
Problem ReadProblem(const CommandLine& commandLine);

/// Where the rows go. Throws OutputError; UsageError where they would destroy the equations.
OutputFile OpenOutput(const CommandLine& commandLine);
/// Where the events go, of a command line that names a file for them. Throws as OpenOutput.
OutputFile OpenEvents(const CommandLine& commandLine);

}  // namespace varno::solve
