#include "solve/command/sweep_command.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "solve/command/exit_status.h"
#include "solve/command/held_text.h"
#include "solve/command/interruption.h"
#include "solve/command/output_file.h"
#include "solve/command/plotting.h"
#include "solve/command/problem_files.h"
#include "solve/command/progress_line.h"
#include "solve/command/summary_text.h"
#include "solve/command/sweep_saver.h"
#include "solve/command/sweep_setup.h"
#include "solve/command/usage_error.h"
#include "solve/sweep/ordered_output.h"

namespace varno::solve {

namespace {

/// Rows of runs that must wait for their turn may take this much memory.
constexpr std::size_t kMostWaitingBytes = std::size_t{64} << 20;

using Clock = std::chrono::steady_clock;

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

ProgressLine::Mode ModeOfProgress(const CommandLine& commandLine, const Console& console)
{
  const bool isWanted = commandLine.progress || (console.errorsAreTerminal && !commandLine.quiet);
  return isWanted ? ProgressLine::Mode::kOn : ProgressLine::Mode::kOff;
}

int Status(const SweepResult& result, std::int64_t runCount)
{
  if (Interruption::Signal() != 0) return kSignalBase + Interruption::Signal();
  if (result.wrong > 0) return kRowWasWrong;
  return result.failed > 0 || result.done < runCount ? kEndedEarly : kSuccess;
}

}  // namespace

int SolveSweep(const CommandLine& commandLine, const SavedState& state, const Problem& problem,
               const Console& console, const SweepHost& host)
{
  const Clock::time_point begin = Clock::now();
  const auto seconds = [&] { return std::chrono::duration<double>(Clock::now() - begin).count(); };

  const SweepSetup setup(commandLine, state.inputs, problem);
  const std::int64_t runCount = setup.AllRuns().Count();
  const SweepState before = state.sweep.value_or(SweepState());
  if (commandLine.plot && !host.isAlone)
    throw UsageError("--plot needs all runs in one process: draw the rows of --output");
  Plotting plotting(commandLine, setup.AllRuns().Names(), setup.Columns());
  OutputFile file = OpenOutput(commandLine, ContinuedBytes(commandLine, before.rowBytes));

  const Interruption interruption;
  ProgressLine progressLine(console, ModeOfProgress(commandLine, console));
  Screen screen(progressLine);
  HeldText held;
  ScreenSink rows(commandLine.hold ? static_cast<TextSink&>(held) : file, screen);
  ScreenSink messages(console.errors, screen);
  OrderedOutput output(rows, messages, setup.Frame(), kMostWaitingBytes, runCount, before);
  output.Watch([&](std::int64_t done) {
    screen.Update({done, runCount, seconds(), before.result.done});
  });
  SweepSaver saver(commandLine.save, state, output);
  // What is held is not written yet.
  if (!commandLine.hold) saver.KeepSaving();
  const int jobs = commandLine.jobs > 0 ? commandLine.jobs : host.jobs;
  try {
    output.GoOn();
    host.run(StateText(InitialState(commandLine, state.inputs)),
             setup.Plan(jobs, commandLine.plot ? &plotting : nullptr), output);
    file.Write(held.text);
  } catch (...) {
    saver.Finish();
    throw;
  }
  saver.Finish();
  file.Close();
  progressLine.Clear();
  plotting.Draw();
  const SweepResult result = output.Result();
  if (!commandLine.quiet)
    console.Print(SummaryText(result, runCount, setup.RunOptions(), seconds()));
  return Status(result, runCount);
}

}  // namespace varno::solve
