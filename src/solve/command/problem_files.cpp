#include "solve/command/problem_files.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "solve/command/input_file.h"
#include "solve/command/interruption.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

bool IsSameFile(const std::string& one, const std::string& other)
{
  namespace fs = std::filesystem;
  std::error_code ignored;
  return fs::is_regular_file(one, ignored) && fs::equivalent(one, other, ignored);
}

/// What goes into a file that is read would destroy it.
void RefuseOverwriting(const std::string& option, const std::string& path,
                       const CommandLine& commandLine)
{
  if (IsSameFile(path, commandLine.file))
    throw UsageError(option + " '" + path + "' is the file of the equations");
  const auto isPath = [&](const std::string& file) { return IsSameFile(path, file); };
  if (std::ranges::any_of(commandLine.sweepFiles, isPath))
    throw UsageError(option + " '" + path + "' is the file of the sweep");
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
  if (commandLine.plot) RefuseOverwriting("--plot", commandLine.plot->file, commandLine);
  // A picture in the terminal takes the place of the rows.
  if (!commandLine.output && commandLine.plot && commandLine.plot->file == "-")
    return OutputFile::Open("/dev/null", IsInterrupted);
  if (!commandLine.output || *commandLine.output == "-")
    return OutputFile::StandardOutput(IsInterrupted);
  RefuseOverwriting("--output", *commandLine.output, commandLine);
  return OutputFile::Open(*commandLine.output, IsInterrupted);
}

OutputFile OpenEvents(const CommandLine& commandLine)
{
  RefuseOverwriting("--events", *commandLine.events, commandLine);
  return OutputFile::Open(*commandLine.events, IsInterrupted);
}

}  // namespace varno::solve
