#pragma once

#include <string>

namespace varno::solve {

/// Throws PlotError where a picture that gnuplot wrote, of a kind by its suffix, does not end as
/// such a picture does: gnuplot does not tell of a disk that is full.
void RequireWholePicture(const std::string& file);

}  // namespace varno::solve
