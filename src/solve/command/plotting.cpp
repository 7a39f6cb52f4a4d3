#include "solve/command/plotting.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

#include "solve/command/output_file.h"
#include "solve/command/problem_files.h"
#include "solve/plot/gnuplot.h"
#include "solve/plot/picture_file.h"

namespace varno::solve {

namespace {

/// Throws OutputError where the picture's file could not be written, without touching it.
void RequireWritable(const std::string& file)
{
  const std::filesystem::path folder = std::filesystem::path(file).parent_path();
  const std::string place = folder.empty() ? "." : folder.string();
  const bool exists = access(file.c_str(), F_OK) == 0;
  if (access(exists ? file.c_str() : place.c_str(), W_OK) == 0) return;
  throw OutputError("--plot: cannot write '" + file + "': " + std::strerror(errno));
}

/// Makes a picture in the terminal as large as the terminal is, where that is known.
void FitIntoTerminal(PlotRequest& request)
{
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return;
  request.terminalWidth = size.ws_col;
  request.terminalHeight = size.ws_row > 2 ? size.ws_row - 1 : size.ws_row;
}

}  // namespace

Plotting::Plotting(const CommandLine& commandLine, const std::vector<std::string>& sweptNames,
                   const std::vector<std::string>& solutionColumns)
    : request(commandLine.plot), columns(sweptNames), sweptCount(sweptNames.size())
{
  if (!request) return;
  columns.emplace_back("t");
  columns.insert(columns.end(), solutionColumns.begin(), solutionColumns.end());
  CheckRequest(*request, columns);
  RequireGnuplot();
  if (request->file == "-") {
    FitIntoTerminal(*request);
  } else {
    RequireWritable(request->file);
  }
}

void Plotting::Add(const Row& row, const RunLabel& label)
{
  if (!request || !row.IsAskedFor()) return;
  const std::scoped_lock lock(mutex);
  PlottedRun& run = runs[label.run];
  run.title = label.title;
  for (const std::string& text : label.swept) run.values.push_back(PlottedValue(text));
  run.values.push_back(PlottedValue(row.time.Text()));
  for (const Value& value : row.values) run.values.push_back(PlottedValue(value.Text()));
}

void Plotting::Draw() const
{
  if (!request || runs.empty() || IsInterrupted()) return;
  PlotData data{columns, sweptCount, {}};
  for (const auto& [number, run] : runs) data.runs.push_back(run);
  try {
    const std::string picture = RunGnuplot(GnuplotScript(*request, data));
    if (request->file == "-") {
      OutputFile::StandardOutput(IsInterrupted).Write(picture);
    } else {
      RequireWholePicture(request->file);
    }
  } catch (const PlotError& error) {
    throw OutputError(error.what());
  }
}

}  // namespace varno::solve
