#pragma once

#include <vector>

#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// log2 of how much each line moves right-hand sides at the start of a step: the sizes of the
/// derivatives of the right-hand sides by the line, each times the weight (log2) of its right-hand
/// side, of which the largest counts. An estimate that looks at term 0 only: lines that cancel each
/// other, or are 0 just there, are not seen.
std::vector<double> LineEffects(const Tape& tape, const Series& series,
                                const std::vector<double>& weights);

}  // namespace varno::solve
