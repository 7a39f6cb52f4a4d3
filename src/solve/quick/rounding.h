#pragma once

#include "solve/quick/number.h"

namespace varno::solve::quick {

/// Whether a number that is not 0 and may be off by `uncertainty` has so many decimal digits for
/// certain, rounded to nearest: it is known to a fortieth of the last one's unit, and no boundary
/// of rounding lies as near.
bool IsRoundingKnown(Number value, Number uncertainty, int digits);

}  // namespace varno::solve::quick
