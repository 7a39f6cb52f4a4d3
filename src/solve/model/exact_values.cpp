#include "solve/model/exact_values.h"

#include "solve/graph/fold.h"

namespace varno::solve {

const std::optional<Rational>& ExactValues::Of(NodeId id)
{
  while (values.size() <= id) Evaluate(static_cast<NodeId>(values.size()));
  return values[id];
}

void ExactValues::Evaluate(NodeId id)
{
  const Node& node = graph[id];
  std::optional<Rational> value;
  if (node.operation == Operation::kNumber) {
    value = graph.Value(id);
  } else if (node.operation == Operation::kParameter) {
    value = values[parameters[node.index].value];
  } else if (node.dependence == Dependence::kNothing) {
    const auto operand = [this, &node](int i) -> const std::optional<Rational>& {
      return values[node.operands[i]];
    };
    if (node.operandCount == 1 && operand(0)) value = FoldExactly(node.operation, *operand(0));
    if (node.operandCount == 2 && operand(0) && operand(1)) {
      value = FoldExactly(node.operation, *operand(0), *operand(1));
    }
    if (node.operation == Operation::kIf && operand(0)) value = operand(*operand(0) != 0 ? 1 : 2);
    if (node.operation == Operation::kAnd && operand(0) == Rational(0)) value = 0;
    if (node.operation == Operation::kOr && operand(0) == Rational(1)) value = 1;
  }
  values.push_back(std::move(value));
}

}  // namespace varno::solve
