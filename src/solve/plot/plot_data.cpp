#include "solve/plot/plot_data.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace varno::solve {

bool PlotData::HasSingleRows() const
{
  return std::ranges::all_of(runs, [this](const PlottedRun& run) { return RowCount(run) <= 1; });
}

double PlottedValue(const std::string& text)
{
  const double value = std::strtod(text.c_str(), nullptr);
  return std::isfinite(value) ? value : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace varno::solve
