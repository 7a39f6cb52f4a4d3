#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "solve/command/command_line.h"
#include "solve/library/solve.h"
#include "solve/plot/plot_data.h"

namespace varno::solve {

/// What distinguishes a run of a sweep in a picture.
struct RunLabel {
  std::int64_t run = 0;
  std::string title;               ///< "mu = 3"
  std::vector<std::string> swept;  ///< texts of the swept values
};

/// Collects rows for the picture that a command line asks for, and has it drawn; does nothing where
/// it asks for none. Rows may come from several threads.
class Plotting {
 public:
  /// Throws PlotError where the picture cannot be made, before any row is computed.
  Plotting(const CommandLine& commandLine, const std::vector<std::string>& sweptNames,
           const std::vector<std::string>& columns);

  void Add(const Row& row, const RunLabel& label = {});
  /// Draws what was collected, if anything was and no signal wants an end. Throws OutputError.
  void Draw() const;

 private:
  std::optional<PlotRequest> request;
  std::vector<std::string> columns;
  std::size_t sweptCount;
  std::mutex mutex;
  std::map<std::int64_t, PlottedRun> runs;
};

}  // namespace varno::solve
