#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "solve/command/command_line.h"
#include "solve/command/input_file.h"
#include "solve/command/output_file.h"
#include "solve/library/solve.h"

namespace varno::solve {

/// Whether a signal wants the run to end; for Options::interrupted.
bool IsInterrupted();

/// The texts of the files that a command line names.
struct Inputs {
  InputFile equations;
  std::vector<InputFile> sweepFiles;  ///< in the order of the options
};

/// Throws InputFileError.
Inputs ReadInputs(const CommandLine& commandLine);

/// Reads the equations, and makes the settings. Throws InputError.
Problem ReadProblem(const Inputs& inputs, const CommandLine& commandLine);

/// With --resume, how much of the file of --output stays, of which earlier processes have written
/// so many bytes; none where it is a new one.
std::optional<std::int64_t> ContinuedBytes(const CommandLine& commandLine, std::int64_t written);

/// Where the rows go. A file that holds rows of an earlier process, so many bytes of them, is
/// continued behind these. Throws OutputError; UsageError, before anything is written, where one of
/// the files that the command line names would destroy another one or the equations.
OutputFile OpenOutput(const CommandLine& commandLine,
                      std::optional<std::int64_t> continuedBytes = {});
/// Where the events go, of a command line that names a file for them and that OpenOutput has not
/// refused. Throws OutputError.
OutputFile OpenEvents(const CommandLine& commandLine);

}  // namespace varno::solve
