#pragma once

#include <string>

#include "solve/plot/gnuplot_script.h"

namespace varno::solve {

/// Throws PlotError where there is no gnuplot on the PATH.
void RequireGnuplot();

/// Runs gnuplot with these commands and returns what it draws without a file, as for a terminal.
/// Throws PlotError, with what gnuplot says, where it fails.
std::string RunGnuplot(const std::string& script);

}  // namespace varno::solve
