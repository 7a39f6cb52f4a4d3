#pragma once

#include <string>

#include "solve/tape/tape.h"

namespace varno::solve {

/// The tape as text, a line each: "3 = 1 * 2", "4 = 2*1 - c0*3 + c1", then the right-hand sides
/// ("x' = 4") by the names given. Constants are c0, c1, ...
std::string Print(const Tape& tape, const std::vector<std::string>& stateNames);

}  // namespace varno::solve
