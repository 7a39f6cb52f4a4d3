#pragma once

#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// The lines whose terms are factors in sums of products of two series, by their numbers.
std::vector<bool> LinesMultiplied(const Tape& tape);

}  // namespace varno::solve
