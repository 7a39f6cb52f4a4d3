#pragma once

#include <map>

#include "solve/number/real.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// Lines that count as constants for a while, and which: 0 where a line is nothing beside others,
/// the value it has where it hardly moves.
using HeldLines = std::map<LineId, Real>;

}  // namespace varno::solve
