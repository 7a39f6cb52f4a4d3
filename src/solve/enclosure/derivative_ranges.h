#pragma once

#include <vector>

#include "solve/enclosure/line_ranges.h"
#include "solve/tape/held_lines.h"

namespace varno::solve {

/// Encloses the partial derivatives of the line `of` by every line of the tape, where these have
/// the given ranges (LineRanges): by interval differentiation in reverse.
///
/// The held lines are taken for independent variables: what they are made of is not followed, and
/// has derivative 0 on the ways through them.
std::vector<Range> DerivativeRanges(const Tape& tape, const LineRanges& lines,
                                    const std::vector<Range>& ranges, const HeldLines& held,
                                    LineId of);

}  // namespace varno::solve
