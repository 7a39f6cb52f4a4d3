#pragma once

#include "solve/model/model.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// Throws ProblemError where an equation has kinks or jumps, or there are events: runs do not know
/// them yet, only columns may have them.
void RequireSmoothEquations(const Model& model, const Sources& sources);

}  // namespace varno::solve
