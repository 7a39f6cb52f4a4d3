#include "solve/command/program.h"

#include <csignal>
#include <variant>

#include "solve/command/command_line.h"
#include "solve/command/exit_status.h"
#include "solve/command/output_file.h"
#include "solve/command/run.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

int PrintInformation(const std::string& text, const Console& console)
{
  try {
    OutputFile output = OutputFile::StandardOutput([] { return false; });
    output.Write(text);
    output.Close();
    return kSuccess;
  } catch (const OutputError& error) {
    console.Say(error.what());
    return kOutputLost;
  } catch (const OutputClosed&) {
    return kSignalBase + SIGPIPE;
  }
}

}  // namespace

int RunProgram(const std::vector<std::string>& arguments, const Console& console,
               const SweepHost& host)
{
  try {
    const auto request = ParseCommandLine(arguments);
    if (const auto* information = std::get_if<Information>(&request)) {
      return PrintInformation(information->text, console);
    }
    return Run(std::get<CommandLine>(request), console, host);
  } catch (const UsageError& error) {
    console.Say(error.what());
    console.Print("Try 'varno-solve --help' for more information.");
    return kFailure;
  }
}

}  // namespace varno::solve
