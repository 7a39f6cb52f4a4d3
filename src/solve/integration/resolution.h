#pragma once

#include <span>
#include <vector>

#include "solve/integration/run_settings.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The states at the start of a step, with log2 of their sizes and of those of all lines there, and
/// of the step's length.
struct StepStart {
  std::span<const Real> states;
  std::span<const double> stateSizes;
  std::span<const double> lineSizes;
  double lengthLog2;
};

/// The precision that a step needs for its derivatives to be more than rounding errors; 0 where any
/// will do.
///
/// A derivative may be the rest of a cancellation, as 10^60 (sqrt(1 + 10^-60 cos t) - 1) is, of
/// which few bits see nothing. It counts as zero only where what rounding hides of it, times the
/// step, is nothing beside the state; beside 1 for a state that is zero itself, or the rest of a
/// cancellation.
double BitsForDerivatives(const Tape& tape, const Series& series, const StepStart& start,
                          const RunSettings& settings, mpfr_prec_t bits);

}  // namespace varno::solve
