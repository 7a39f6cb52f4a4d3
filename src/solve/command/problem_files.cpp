#include "solve/command/problem_files.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "solve/command/input_file.h"
#include "solve/command/interruption.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

/// Rows into a file that is read would destroy it.
void RefuseOutputIntoInput(const std::string& output, const std::string& input, const char* what)
{
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (fs::is_regular_file(output, ignored) && fs::equivalent(output, input, ignored))
    throw UsageError("--output '" + output + "' is the file of the " + what);
}

}  // namespace

bool IsInterrupted()
{
  return Interruption::Signal() != 0;
}

Problem ReadProblem(const CommandLine& commandLine)
{
  InputFile input = ReadInputFile(commandLine.file);
  const Problem problem = Problem::Parse(std::move(input.text), std::move(input.name));
  return commandLine.settings.empty() ? problem : problem.With(commandLine.settings);
}

OutputFile OpenOutput(const CommandLine& commandLine)
{
  if (!commandLine.output || *commandLine.output == "-")
    return OutputFile::StandardOutput(IsInterrupted);
  RefuseOutputIntoInput(*commandLine.output, commandLine.file, "equations");
  for (const std::string& file : commandLine.sweepFiles)
    RefuseOutputIntoInput(*commandLine.output, file, "sweep");
  return OutputFile::Open(*commandLine.output, IsInterrupted);
}

}  // namespace varno::solve
