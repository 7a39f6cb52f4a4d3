#pragma once

#include <cstdint>
#include <string>

#include "solve/library/solve.h"
#include "solve/sweep/sweep_state.h"

namespace varno::solve {

/// What a run did, in three lines: steps, order and bits; digits, and how they were verified;
/// seconds.
std::string SummaryText(const Summary& summary);

/// The same of a sweep: runs; digits; seconds.
std::string SummaryText(const SweepResult& result, std::int64_t runs, const Options& options,
                        double seconds);

}  // namespace varno::solve
