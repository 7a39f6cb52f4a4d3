#include "solve/command/sweep_command.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "solve/command/exit_status.h"
#include "solve/command/held_text.h"
#include "solve/command/interruption.h"
#include "solve/command/plotting.h"
#include "solve/command/problem_files.h"
#include "solve/command/progress_line.h"
#include "solve/command/row_writers.h"
#include "solve/command/summary_text.h"
#include "solve/command/sweep_options.h"
#include "solve/sweep/ordered_output.h"
#include "solve/sweep/sweep_runs.h"

namespace varno::solve {

namespace {

/// Rows of runs that must wait for their turn may take this much memory.
constexpr std::size_t kMostWaitingBytes = std::size_t{64} << 20;

/// What all threads of a sweep write to, one at a time; the progress line gives way.
class Screen {
 public:
  explicit Screen(ProgressLine& progressLine) : progressLine(progressLine) {}

  void Write(TextSink& sink, std::string_view text)
  {
    const std::scoped_lock lock(mutex);
    progressLine.Clear();
    sink.Write(text);
  }
  void Update(const SweepProgress& progress)
  {
    const std::scoped_lock lock(mutex);
    progressLine.Update(progress);
  }

 private:
  ProgressLine& progressLine;
  std::mutex mutex;
};

/// A sink behind a screen.
class ScreenSink final : public TextSink {
 public:
  ScreenSink(TextSink& sink, Screen& screen) : sink(sink), screen(screen) {}
  void Write(std::string_view text) override { screen.Write(sink, text); }

 private:
  TextSink& sink;
  Screen& screen;
};

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
             Plotting& plotting)
      : sink(sink),
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
    values.clear();
    for (const Value& value : row.values) values.emplace_back(value.Text());
    if (row.event.empty()) {
      writer->Write(row.time.Text(), values);
    } else {
      writer->WriteEvent(row.event, row.time.Text(), values);
    }
    plotting.Add(row, label);
  }

 private:
  TextSink& sink;
  std::unique_ptr<RowWriter> writer;
  bool isTable;
  RunLabel label;
  Plotting& plotting;
  bool hasBegun = false;
  std::vector<std::string_view> values;
};

/// What stands before all rows: the header line of csv; and before the rows of a run.
OrderedOutput::Frame MakeFrame(const CommandLine& commandLine, const Solution& solution,
                               const Sweep& sweep)
{
  HeldText header;
  if (commandLine.format == Format::kCsv)
    MakeRowWriter(header, commandLine, solution, {sweep.Names(), {}})->Begin();
  return {header.text, commandLine.format == Format::kTable ? "\n" : ""};
}

auto PrinterMaker(const CommandLine& commandLine, const Sweep& sweep, Plotting& plotting)
{
  return [&](TextSink& sink, const Solution& solution, std::int64_t run,
             const Combination& combination) -> PrintRow {
    const auto printer = std::make_shared<RunPrinter>(sink, commandLine, solution, sweep,
                                                      combination, run, plotting);
    return [printer](const Row& row) { (*printer)(row); };
  };
}

auto MessageMaker(const Sweep& sweep)
{
  return [&](std::int64_t run, const Combination& combination, const std::string& reason) {
    return fmt::format("varno-solve: run {} ({}): {}{}", run + 1,
                       CombinationText(sweep, combination), reason,
                       reason.ends_with('\n') ? "" : "\n");
  };
}

ProgressLine::Mode ModeOfProgress(const CommandLine& commandLine, const Console& console)
{
  const bool isWanted = commandLine.progress || (console.errorsAreTerminal && !commandLine.quiet);
  return isWanted ? ProgressLine::Mode::kOn : ProgressLine::Mode::kOff;
}

int Jobs(const CommandLine& commandLine)
{
  if (commandLine.jobs > 0) return commandLine.jobs;
  return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

int Status(const SweepResult& result)
{
  if (Interruption::Signal() != 0) return kSignalBase + Interruption::Signal();
  if (result.wrong > 0) return kRowWasWrong;
  return result.failed > 0 ? kEndedEarly : kSuccess;
}

/// The options of each run, which has no progress of its own, and one thread: it is the runs that
/// share the processors.
Options RunOptions(const CommandLine& commandLine)
{
  Options options = commandLine.options;
  options.jobs = 1;
  options.interrupted = IsInterrupted;
  return options;
}

}  // namespace

int SolveSweep(const CommandLine& commandLine, const Problem& problem, const Console& console)
{
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  const auto seconds = [&] { return std::chrono::duration<double>(Clock::now() - begin).count(); };

  const Sweep sweep = ReadSweep(commandLine, problem);
  const Options options = RunOptions(commandLine);
  // Wrong options are told once, and before anything is written.
  const Solution asWritten(problem, options);
  Plotting plotting(commandLine, sweep.Names(), asWritten.Columns());
  OutputFile file = OpenOutput(commandLine);

  const Interruption interruption;
  ProgressLine progressLine(console, ModeOfProgress(commandLine, console));
  Screen screen(progressLine);
  HeldText held;
  ScreenSink rows(commandLine.hold ? static_cast<TextSink&>(held) : file, screen);
  ScreenSink messages(console.errors, screen);
  OrderedOutput output(rows, messages, MakeFrame(commandLine, asWritten, sweep), kMostWaitingBytes);
  const SweepPlan plan{.problem = problem,
                       .sweep = sweep,
                       .options = options,
                       .jobs = Jobs(commandLine),
                       .makePrinter = PrinterMaker(commandLine, sweep, plotting),
                       .message = MessageMaker(sweep),
                       .progress = [&](std::int64_t done) {
                         screen.Update({done, sweep.Count(), seconds()});
                       }};
  const SweepResult result = RunSweep(plan, output);
  file.Write(held.text);
  file.Close();
  progressLine.Clear();
  plotting.Draw();
  if (!commandLine.quiet) console.Print(SummaryText(result, sweep.Count(), options, seconds()));
  return Status(result);
}

}  // namespace varno::solve
