#include "solve/command/row_output.h"

#include <utility>

#include "solve/command/problem_files.h"
#include "solve/command/row_writers.h"

namespace varno::solve {

void RowOutput::Continuation::Write(std::string_view text)
{
  const std::string_view rest = skip.Rest(text);
  if (!rest.empty()) file.Write(rest);
  written.Add(rest);
}

RowOutput::RowOutput(OutputFile file, const CommandLine& commandLine, const Solution& solution,
                     const TextDigest& known)
    : file(std::move(file), known),
      writer(MakeRowWriter(this->file, commandLine, solution)),
      periodOf(commandLine.options.period)
{
  if (commandLine.events) {
    events.emplace(OpenEvents(commandLine), solution.Columns());
  }
}

void RowOutput::Print(const Row& row)
{
  try {
    if (!hasBegun) writer->Begin();
    hasBegun = true;
    WriteRow(*writer, row, periodOf);
    if (events) events->Print(row);
  } catch (const OutputError& error) {
    throw OutputError(error.what() + std::string("; lost from the row t = ") + row.time.Text() +
                      " on");
  }
}

void RowOutput::Finish()
{
  file.Close();
  if (events) events->Close();
}

}  // namespace varno::solve
