#pragma once

#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// Numbers by which the lines of a tape stand in a row, each near to those that it is made of:
/// terms that are far away, or that another processor has just written, cost more than arithmetic.
///
/// The states begin in their order. That each goes to the middle of its neighbours, again and
/// again, leaves of this what varies most slowly from neighbour to neighbour.
std::vector<double> LinePlaces(const Tape& tape);

}  // namespace varno::solve
