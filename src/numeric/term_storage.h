#pragma once

#include <vector>

#include "numeric/mpf.h"

namespace varno {

/// Zeros at the precision in force for the terms 0..`termCount`; a negative count counts as 0. The
/// array never grows, so that a term may be computed in place. Ends the run with
/// "#(ERR) Out of memory" when there is no room for it.
std::vector<Mpf> TermStorage(int termCount);

}  // namespace varno
