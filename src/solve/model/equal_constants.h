#pragma once

#include <vector>

#include "solve/graph/graph.h"
#include "solve/model/model.h"

namespace varno::solve {

/// True when two constants are equal: by their exact values, or, where they have none, when they
/// agree to 1000 of 2000 bits. A constant without a value equals none.
bool AreEqualConstants(const Graph& graph, const std::vector<Parameter>& parameters, NodeId a, NodeId b);

}  // namespace varno::solve
