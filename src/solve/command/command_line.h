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
  bool continuesOutput = false;       ///< with --resume, whether it is the earlier one's file
  std::optional<std::string> events;  ///< a file for the events
  std::optional<PlotRequest> plot;
  std::optional<std::string> save, resume;  ///< files of states
  bool explain = false;
  bool hold = false;      ///< no row before all are there
  bool progress = false;  ///< a progress line also where none would be shown
  bool quiet = false;

  /// The options as they were given, under their full names, each value an argument of its own;
  /// without --save and --resume.
  std::vector<std::string> given;

  bool IsSweep() const { return !sweeps.empty() || !sweepFiles.empty(); }
};

/// A text that was asked for instead: the help, or the version.
struct Information {
  std::string text;
};

/// Understands the arguments, without the program's name. Of a command line with --resume, only
/// what is said about files is understood: the rest stands in the state, see WithState. Throws
/// UsageError.
std::variant<CommandLine, Information> ParseCommandLine(const std::vector<std::string>& arguments);

/// A command line with --resume, with what the state holds of the earlier one: its options and
/// FILE. Throws UsageError where it asks for something that cannot change.
CommandLine WithState(const CommandLine& resuming, const std::vector<std::string>& options,
                      const std::string& file);

}  // namespace varno::solve
