#pragma once

#include <span>

#include "solve/graph/graph.h"

namespace varno::solve {

/// The copy of a node in another graph. `copies` has, by number, those of its operands.
NodeId CopyNode(const Graph& from, NodeId id, std::span<const NodeId> copies, Graph& to);

}  // namespace varno::solve
