#pragma once

#include <vector>

#include "solve/integration/run_settings.h"
#include "solve/roots/polynomial.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// What the terms of a series tell about a step.
struct SeriesStep {
  const Series& series;
  const std::vector<double>& sizes;  ///< log2 of the sizes of all lines at its start
  mpfr_srcptr length;                ///< in units of the series' scale
  const RunSettings& settings;
};

/// Whether term `first` of a line outweighs all that follow in a step of this length (log2, in
/// units of the series' scale): if those before it are 0, the line has no root but there.
bool FirstTermOutweighs(const Series& series, LineId line, int first, double lengthLog2);

/// Whether term `first` of a line is more than rounding may have made of it.
bool FirstTermStandsOut(const SeriesStep& step, LineId line, int first);

/// A line over a step as a polynomial on [0, 1], from term `first` on, which becomes the first one.
/// A term is as exact as the largest of those up to it, or as the size of the line: what begins
/// with small terms knows these to all their digits; but never more than the series resolves. The
/// terms that the tolerance hides are left out; they, and the end of the series, count as an error.
UncertainPolynomial OverStep(const Tape& tape, const SeriesStep& step, LineId line, int first);

}  // namespace varno::solve
