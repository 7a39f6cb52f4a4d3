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

Inputs ReadInputs(const CommandLine& commandLine)
{
  Inputs inputs{ReadInputFile(commandLine.file), {}};
  for (const std::string& path : commandLine.sweepFiles)
    inputs.sweepFiles.push_back(ReadInputFile(path));
  return inputs;
}

Problem ReadProblem(const Inputs& inputs, const CommandLine& commandLine)
{
  const Problem problem = Problem::Parse(inputs.equations.text, inputs.equations.name);
  return commandLine.settings.empty() ? problem : problem.With(commandLine.settings);
}

std::optional<std::int64_t> ContinuedBytes(const CommandLine& commandLine, std::int64_t written)
{
  if (commandLine.resume && commandLine.continuesOutput) return written;
  return std::nullopt;
}

OutputFile OpenOutput(const CommandLine& commandLine, std::optional<std::int64_t> continuedBytes)
{
  if (commandLine.save) {
    RefuseOverwriting("--save", *commandLine.save, commandLine);
    if (commandLine.output && IsSameFile(*commandLine.save, *commandLine.output))
      throw UsageError("--save '" + *commandLine.save + "' is the file of the rows");
  }
  if (commandLine.plot) RefuseOverwriting("--plot", commandLine.plot->file, commandLine);
  // A picture in the terminal takes the place of the rows.
  if (!commandLine.output && commandLine.plot && commandLine.plot->file == "-")
    return OutputFile::Open("/dev/null", IsInterrupted);
  if (!commandLine.output || *commandLine.output == "-")
    return OutputFile::StandardOutput(IsInterrupted);
  RefuseOverwriting("--output", *commandLine.output, commandLine);
  if (commandLine.resume && IsSameFile(*commandLine.output, *commandLine.resume))
    throw UsageError("--output '" + *commandLine.output + "' is the file of the state");
  if (continuedBytes)
    return OutputFile::Continue(*commandLine.output, *continuedBytes, IsInterrupted);
  return OutputFile::Open(*commandLine.output, IsInterrupted);
}

OutputFile OpenEvents(const CommandLine& commandLine)
{
  const std::string& path = *commandLine.events;
  RefuseOverwriting("--events", path, commandLine);
  if (commandLine.output && IsSameFile(path, *commandLine.output))
    throw UsageError("--events '" + path + "' is the file of the rows");
  for (const auto& state : {commandLine.save, commandLine.resume}) {
    if (state && IsSameFile(path, *state))
      throw UsageError("--events '" + path + "' is the file of the state");
  }
  return OutputFile::Open(path, IsInterrupted);
}

}  // namespace varno::solve
