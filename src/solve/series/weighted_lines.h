#pragma once

#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// The lines of which recurrences need j times term j, by their numbers.
std::vector<bool> LinesNeedingWeights(const Tape& tape);

}  // namespace varno::solve
