#include "solve/graph/same_node.h"

#include <optional>

namespace varno::solve {

NodeId SameNode(const Graph& graph, const Node& node)
{
  std::optional<NodeId> same;
  for (NodeId id = 0; id < graph.Size(); ++id) {
    if (!(graph[id].place == node.place)) continue;
    if (graph[id].operation == node.operation) return id;
    same = id;
  }
  return same.value_or(0);
}

}  // namespace varno::solve
