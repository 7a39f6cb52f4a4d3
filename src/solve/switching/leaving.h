#pragma once

#include <cstddef>

#include "solve/integration/run_settings.h"
#include "solve/piecewise/piece.h"
#include "solve/switching/switch_point.h"

namespace varno::solve {

/// Whether a solution on which an expression stays 0 may leave it at any time, as y - t in
/// y' = 1 + sqrt(abs(y - t)), to the side that a piece is for. `watch` is the expression there.
///
/// A state is moved until the expression is some d. Where the first derivative of the expression
/// by the time that is not 0 then is like a power of d below 1, and leads away, d is reached from
/// nearly 0 in a time that shrinks with it (Osgood's criterion, for y'' = sqrt(abs(y)), too).
bool MayLeave(const Piece& beside, const Watch& watch, const SwitchPoint& point,
              const RunSettings& settings);

}  // namespace varno::solve
