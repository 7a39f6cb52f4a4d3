#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "solve/plot/plot_data.h"

namespace varno::solve {

/// A picture that cannot be made as it is wanted. what() says why, and what would do.
class PlotError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A picture that is wanted.
struct PlotRequest {
  std::string file;                   ///< its suffix says of which kind; "-": in the terminal
  std::vector<std::string> axes;      ///< two or three columns; none: all columns over t
  std::string title, xLabel, yLabel;  ///< empty: no title, the names of the columns
  int terminalWidth = 79, terminalHeight = 24;  ///< in characters
};

/// Throws PlotError where the file has no suffix of a known kind, or an axis is none of the
/// columns.
void CheckRequest(const PlotRequest& request, const std::vector<std::string>& columns);

/// The commands, with the data, by which gnuplot draws the picture: curves over time, or in two or
/// three dimensions as the axes say. Without axes, runs of a single row each are drawn over the
/// last swept name; with a swept name as the first axis the rows of all runs are points of one set;
/// with swept names as the first two of three axes they are a map, whose colours are the third.
std::string GnuplotScript(const PlotRequest& request, const PlotData& data);

}  // namespace varno::solve
