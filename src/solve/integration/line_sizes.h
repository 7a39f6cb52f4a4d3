#pragma once

#include <vector>

#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// log2 of the size of each line at the start of a step.
///
/// The size of a line is how large it would be if nothing cancelled: a rounding error of one part
/// in 2^b anywhere above it shows in it as about size * 2^-b. A sum has the largest size of its
/// parts, a product a b the larger of size(a) |b| and |a| size(b), a function f(u) the larger of
/// |f| and |f'| size(u); a constant, t and a state their own magnitude. -infinity for what is 0
/// with nothing behind it. Lines that the series leaves out count as the constants that they are;
/// one entry for each line, none if nothing is left out.
std::vector<double> LineSizes(const Tape& tape, const Series& series,
                              const std::vector<bool>& leftOut = {});

}  // namespace varno::solve
