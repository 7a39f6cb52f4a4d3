#include "solve/command/run.h"

#include <csignal>
#include <new>
#include <string>

#include "solve/command/exit_status.h"
#include "solve/command/input_file.h"
#include "solve/command/interruption.h"
#include "solve/command/output_file.h"
#include "solve/command/plotting.h"
#include "solve/command/problem_files.h"
#include "solve/command/progress_line.h"
#include "solve/command/row_output.h"
#include "solve/command/state_file.h"
#include "solve/command/summary_text.h"
#include "solve/command/sweep_command.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

/// Prints row after row until the last one, or until something ends the run.
int PrintRows(Solution& solution, RowOutput& output, Plotting& plotting, ProgressLine& progressLine,
              const Console& console)
{
  const bool shareTerminal = console.errorsAreTerminal && output.GoesToTerminal();
  try {
    for (;;) {
      const std::optional<Row> row = solution.Next();
      if (!row) return kSuccess;
      if (IsInterrupted()) break;
      if (shareTerminal) progressLine.Clear();
      output.Print(*row);
      plotting.Add(*row);
    }
    progressLine.Clear();
    console.Say("interrupted");
  } catch (const RunEnded& end) {
    progressLine.Clear();
    console.Say(end.what());
    if (end.Reason() == EndReason::kWrongRow) return kRowWasWrong;
    if (end.Reason() != EndReason::kInterrupted) return kEndedEarly;
  } catch (const OutputInterrupted&) {
    progressLine.Clear();
    console.Say("interrupted; the row that was being written is lost");
  } catch (const std::bad_alloc&) {
    progressLine.Clear();
    console.Say("out of memory");
    return kEndedEarly;
  }
  return kSignalBase + Interruption::Signal();
}

ProgressLine::Mode ProgressModeOf(const CommandLine& commandLine, const Console& console)
{
  if (commandLine.progress) return ProgressLine::Mode::kOn;
  if (commandLine.quiet) return ProgressLine::Mode::kOff;
  return console.errorsAreTerminal ? ProgressLine::Mode::kOn : ProgressLine::Mode::kRarely;
}

int SolveOne(const CommandLine& commandLine, SavedState state, const Problem& problem,
             const Console& console)
{
  ProgressLine progressLine(console, ProgressModeOf(commandLine, console));
  Options options = commandLine.options;
  options.jobs = commandLine.jobs;
  options.interrupted = IsInterrupted;
  options.progress = [&progressLine](const Progress& progress) { progressLine.Update(progress); };
  options.progressFrom = progressLine.FirstUpdate();
  if (!commandLine.quiet) {
    options.notice = [&](const std::string& notice) {
      progressLine.Clear();
      console.Say(notice);
    };
  }
  Solution solution(problem, std::move(options));

  if (commandLine.explain) {
    OutputFile output = OpenOutput(commandLine);
    output.Write(solution.Explain());
    output.Close();
    return kSuccess;
  }

  Plotting plotting(commandLine, {}, solution.Columns());
  const Interruption interruption;
  RowOutput output(OpenOutput(commandLine, ContinuedBytes(commandLine, state.rows.Bytes())),
                   commandLine, solution, state.rows);
  if (commandLine.save) WriteState(*commandLine.save, state);
  const auto keepState = [&] {
    state.rows = output.Written();
    if (commandLine.save) WriteState(*commandLine.save, state);
  };
  int status = kFailure;
  try {
    status = PrintRows(solution, output, plotting, progressLine, console);
    output.Finish();
    if (status == kSuccess && !output.HasCaughtUp()) throw TextChanged();
  } catch (...) {
    keepState();
    throw;
  }
  keepState();
  progressLine.Clear();
  plotting.Draw();
  if (!commandLine.quiet) console.Print(SummaryText(solution.Summarise()));
  return status;
}

/// What a command line with --resume goes on with; for another one, what it begins with.
SavedState Begin(CommandLine& commandLine)
{
  if (!commandLine.resume) return InitialState(commandLine, ReadInputs(commandLine));
  const InputFile file = ReadInputFile(*commandLine.resume);
  SavedState state = ParseState(file.text, file.name);
  commandLine = WithState(commandLine, state.options, state.file);
  state.options = commandLine.given;
  return state;
}

int Solve(CommandLine commandLine, const Console& console, const SweepHost& host)
{
  const SavedState state = Begin(commandLine);
  const Problem problem = ReadProblem(state.inputs, commandLine);
  if (!commandLine.quiet) console.Print(problem.Notes());

  if (commandLine.IsSweep() && !commandLine.explain)
    return SolveSweep(commandLine, state, problem, console, host);
  return SolveOne(commandLine, state, problem, console);
}

}  // namespace

int Run(const CommandLine& commandLine, const Console& console, const SweepHost& host)
{
  try {
    return Solve(commandLine, console, host);
  } catch (const InputError& error) {
    console.Print(error.what());
  } catch (const InputFileError& error) {
    console.Say(error.what());
  } catch (const UsageError& error) {
    console.Say(error.what());
  } catch (const PlotError& error) {
    console.Say(error.what());
  } catch (const OutputError& error) {
    console.Say(error.what());
    return kOutputLost;
  } catch (const OutputInterrupted&) {
    return kSignalBase + Interruption::Signal();
  } catch (const OutputClosed&) {
    // Quietly, with the status that the shell shows for programs that SIGPIPE ends.
    return kSignalBase + SIGPIPE;
  } catch (const TextChanged&) {
    console.Say("--resume: the rows that were written before come out differently now");
  } catch (const std::bad_alloc&) {
    console.Say("out of memory");
  }
  return kFailure;
}

}  // namespace varno::solve
