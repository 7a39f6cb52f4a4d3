#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace varno::solve {

/// The rows of one run, as far as pictures need them.
struct PlottedRun {
  std::string title;           ///< what distinguishes it from other runs; empty where there is one
  std::vector<double> values;  ///< row by row, one for each column
};

/// The rows of all runs that a picture shows.
struct PlotData {
  std::vector<std::string> columns;  ///< swept names, then t, then those of the solution
  std::size_t sweptCount = 0;        ///< how many of the columns are swept names
  std::vector<PlottedRun> runs;

  std::size_t RowCount(const PlottedRun& run) const { return run.values.size() / columns.size(); }
  /// Whether no run has more than one row.
  bool HasSingleRows() const;
};

/// A number of a row as pictures need it: NaN where it has no double.
double PlottedValue(const std::string& text);

}  // namespace varno::solve
