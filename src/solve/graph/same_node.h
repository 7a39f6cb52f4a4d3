#pragma once

#include "solve/graph/graph.h"

namespace varno::solve {

/// The node of a graph that was written in the same place as a node of another one, which was made
/// of it, and does the same if there is one that does; else the node 0. For messages.
NodeId SameNode(const Graph& graph, const Node& node);

}  // namespace varno::solve
