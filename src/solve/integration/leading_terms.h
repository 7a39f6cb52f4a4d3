#pragma once

#include <optional>
#include <vector>

#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The order of the first term of each line that is not 0: as the series shows it, or, where all
/// terms computed so far vanish, as it follows from those of the operands. Products of lines that
/// begin with t^m and t^n begin with t^(m+n), so that sin(t)^1000 is known not to be 0. None where
/// it is not known.
std::vector<std::optional<int>> LeadingTerms(const Tape& tape, const Series& series);

}  // namespace varno::solve
