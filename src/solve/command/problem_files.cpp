#include "solve/command/problem_files.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "solve/command/input_file.h"
#include "solve/command/interruption.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

/// Whether two names are those of one file, which need not be there yet. Devices may be named
/// twice.
bool IsSameFile(const std::string& one, const std::string& other)
{
  namespace fs = std::filesystem;
  std::error_code error;
  if (one == "-" || other == "-") return false;
  if (fs::exists(one, error))
    return fs::is_regular_file(one, error) && fs::equivalent(one, other, error);
  const auto whole = [&](const std::string& name) {
    return fs::weakly_canonical(fs::absolute(name, error), error);
  };
  const fs::path path = whole(one);
  return !path.empty() && path == whole(other);
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

/// One of the files that are written would destroy another one, or what is read.
void RefuseClashes(const CommandLine& commandLine)
{
  struct Written {
    std::string option, path, content;
  };
  std::vector<Written> files;
  const auto add = [&](const Written& file) {
    RefuseOverwriting(file.option, file.path, commandLine);
    for (const Written& other : files) {
      if (IsSameFile(file.path, other.path))
        throw UsageError(file.option + " '" + file.path + "' is the file of the " + other.content);
    }
    files.push_back(file);
  };
  if (commandLine.output) add({"--output", *commandLine.output, "rows"});
  if (commandLine.events) add({"--events", *commandLine.events, "events"});
  if (commandLine.plot) add({"--plot", commandLine.plot->file, "picture"});
  // A new state may replace the one that is gone on with, other files may not.
  for (const Written& file : files) {
    if (commandLine.resume && IsSameFile(file.path, *commandLine.resume))
      throw UsageError(file.option + " '" + file.path + "' is the file of the state");
  }
  if (commandLine.save) add({"--save", *commandLine.save, "state"});
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
  RefuseClashes(commandLine);
  // A picture in the terminal takes the place of the rows.
  if (!commandLine.output && commandLine.plot && commandLine.plot->file == "-")
    return OutputFile::Open("/dev/null", IsInterrupted);
  if (!commandLine.output || *commandLine.output == "-")
    return OutputFile::StandardOutput(IsInterrupted);
  if (continuedBytes)
    return OutputFile::Continue(*commandLine.output, *continuedBytes, IsInterrupted);
  return OutputFile::Open(*commandLine.output, IsInterrupted);
}

OutputFile OpenEvents(const CommandLine& commandLine)
{
  return OutputFile::Open(*commandLine.events, IsInterrupted);
}

}  // namespace varno::solve
