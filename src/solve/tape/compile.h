#pragma once

#include <vector>

#include "solve/model/model.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The tape of a model whose parameters are bound (BindParameters), and whose right-hand sides are
/// smooth: without kinks, jumps and conditions but in constants. `watched` are further such
/// expressions of its graph whose series are wanted: Tape::watched.
Tape Compile(const Model& model, const std::vector<NodeId>& watched = {});

}  // namespace varno::solve
