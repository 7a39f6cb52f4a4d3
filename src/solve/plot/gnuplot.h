#pragma once

#include <string>

#include "solve/plot/gnuplot_script.h"

namespace varno::solve {

/// Throws PlotError where there is no gnuplot on the PATH.
void RequireGnuplot();

/// Runs gnuplot with these commands; what it draws without a file goes to standard output where
/// that is wanted. Throws PlotError, with what gnuplot says, where it fails.
void RunGnuplot(const std::string& script, bool wantsOutput);

}  // namespace varno::solve
