#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "solve/library/solve.h"
#include "solve/plot/gnuplot_script.h"

namespace varno::solve {

enum class Format { kTable, kCsv, kJson };

/// What a command line asks for.
struct CommandLine {
  std::string file;  ///< "-": standard input
  Options options;
  std::vector<std::string> settings;  ///< of --set, in order
  std::vector<std::string> sweeps, sweepFiles;
  int jobs = 0;  ///< threads; 0: as many as there are cores
  Format format = Format::kTable;
  std::optional<std::string> output;  ///< a file for the rows
  std::optional<std::string> events;  ///< a file for the events
  std::optional<PlotRequest> plot;
  bool explain = false;
  bool hold = false;      ///< no row before all are there
  bool progress = false;  ///< a progress line also where none would be shown
  bool quiet = false;

  bool IsSweep() const { return !sweeps.empty() || !sweepFiles.empty(); }
};

/// A text that was asked for instead: the help, or the version.
struct Information {
  std::string text;
};

/// Understands the arguments, without the program's name. Throws UsageError.
std::variant<CommandLine, Information> ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace varno::solve
