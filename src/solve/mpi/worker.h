#pragma once

#include "solve/mpi/ranks.h"

namespace varno::solve {

/// A rank that is not the first: makes the runs of a sweep that the first one hands out, if there
/// is a sweep.
void Work(Ranks& ranks);

}  // namespace varno::solve
