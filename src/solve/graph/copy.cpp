#include "solve/graph/copy.h"

namespace varno::solve {

NodeId CopyNode(const Graph& from, NodeId id, std::span<const NodeId> copies, Graph& to)
{
  const Node& node = from[id];
  const auto operand = [&](int i) { return copies[node.operands[i]]; };
  switch (node.operation) {
    case Operation::kNumber:
      return to.Number(from.Value(id), node.place);
    case Operation::kPi:
    case Operation::kTime:
      return to.Leaf(node.operation, node.place);
    case Operation::kState:
      return to.State(node.index, node.place);
    case Operation::kParameter:
      return to.Parameter(node.index, node.place);
    default:
      break;
  }
  switch (node.operandCount) {
    case 1:
      return to.Make(node.operation, operand(0), node.place);
    case 2:
      return to.Make(node.operation, operand(0), operand(1), node.place);
    default:
      return to.Make(node.operation, operand(0), operand(1), operand(2), node.place);
  }
}

}  // namespace varno::solve
