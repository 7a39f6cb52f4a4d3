#pragma once

#include <string>

#include "solve/library/solve.h"

namespace varno::solve {

/// What a run did, in three lines: steps, order and bits; digits, and how they were verified;
/// seconds.
std::string SummaryText(const Summary& summary);

}  // namespace varno::solve
