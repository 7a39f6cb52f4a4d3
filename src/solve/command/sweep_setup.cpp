#include "solve/command/sweep_setup.h"

#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "solve/command/held_text.h"
#include "solve/command/row_writers.h"
#include "solve/command/sweep_options.h"

namespace varno::solve {

namespace {

/// "mu = 3, x(0) = 2"
std::string CombinationText(const Sweep& sweep, const Combination& combination)
{
  std::string text;
  for (std::size_t i = 0; i < combination.texts.size(); ++i) {
    if (i > 0) text += ", ";
    text += sweep.Names()[i] + " = " + combination.texts[i];
  }
  return text;
}

/// Writes the rows of one run.
class RunPrinter {
 public:
  RunPrinter(TextSink& sink, const CommandLine& commandLine, const Solution& solution,
             const Sweep& sweep, const Combination& combination, std::int64_t run,
             Plotting* plotting)
      : sink(sink),
        commandLine(commandLine),
        writer(MakeRowWriter(sink, commandLine, solution, {sweep.Names(), combination.texts})),
        isTable(commandLine.format == Format::kTable),
        label{run, CombinationText(sweep, combination), combination.texts},
        plotting(plotting)
  {}

  void operator()(const Row& row)
  {
    if (!hasBegun && isTable) {
      sink.Write("# " + label.title + "\n");
      writer->Begin();
    }
    hasBegun = true;
    WriteRow(*writer, row, commandLine.options.period);
    if (plotting != nullptr) plotting->Add(row, label);
  }

 private:
  TextSink& sink;
  const CommandLine& commandLine;
  std::unique_ptr<RowWriter> writer;
  bool isTable;
  RunLabel label;
  Plotting* plotting;
  bool hasBegun = false;
};

/// The options of each run, which has no progress of its own, and one thread: it is the runs that
/// share the processors.
Options OptionsOfRuns(const CommandLine& commandLine)
{
  Options options = commandLine.options;
  options.jobs = 1;
  options.interrupted = IsInterrupted;
  return options;
}

}  // namespace

SweepSetup::SweepSetup(const CommandLine& commandLine, const Inputs& inputs, const Problem& problem)
    : commandLine(commandLine),
      sweep(ReadSweep(commandLine, inputs.sweepFiles, problem)),
      options(OptionsOfRuns(commandLine)),
      // Wrong options are told once, and before anything is written.
      asWritten(problem, options),
      family(problem, options, sweep.Names())
{}

OrderedOutput::Frame SweepSetup::Frame() const
{
  HeldText header;
  if (commandLine.format == Format::kCsv)
    MakeRowWriter(header, commandLine, asWritten, {sweep.Names(), {}})->Begin();
  return {header.text, commandLine.format == Format::kTable ? "\n" : ""};
}

SweepPlan SweepSetup::Plan(int jobs, Plotting* plotting) const
{
  return {
      .family = family,
      .sweep = sweep,
      .interrupted = IsInterrupted,
      .jobs = jobs,
      .makePrinter = [this, plotting](TextSink& sink, const Solution& solution, std::int64_t run,
                                      const Combination& combination) -> PrintRow {
        const auto printer = std::make_shared<RunPrinter>(sink, commandLine, solution, sweep,
                                                          combination, run, plotting);
        return [printer](const Row& row) { (*printer)(row); };
      },
      .message =
          [this](std::int64_t run, const Combination& combination, const std::string& reason) {
            return fmt::format("varno-solve: run {} ({}): {}{}", run + 1,
                               CombinationText(sweep, combination), reason,
                               reason.ends_with('\n') ? "" : "\n");
          }};
}

}  // namespace varno::solve
