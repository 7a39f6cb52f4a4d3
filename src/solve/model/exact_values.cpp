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
  }
  values.push_back(std::move(value));
}

std::string ExactValues::FaultOf(NodeId id)
{
  const Node& node = graph[id];
  if (node.operandCount == 0) return {};
  Of(id);  // evaluates all before it: from here on references into the values stay valid
  const std::optional<Rational>& first = Of(node.operands[0]);
  switch (node.operation) {
    case Operation::kDivide:
      return Of(node.operands[1]) == 0 ? "division by zero" : "";
    case Operation::kPower: {
      const std::optional<Rational>& exponent = Of(node.operands[1]);
      if (!exponent || !first) return {};
      if (*first == 0 && *exponent < 0) return "division by zero";
      return *first < 0 && exponent->get_den() != 1
                 ? "a power of a negative number whose exponent is no integer"
                 : "";
    }
    default:
      break;
  }
  if (!first) return {};
  switch (node.operation) {
    case Operation::kSqrt:
      return *first < 0 ? "the square root of a negative number" : "";
    case Operation::kLn:
      return *first <= 0 ? "the logarithm of a number that is not positive" : "";
    case Operation::kAsin:
      return abs(*first) > 1 ? "the arcus sine of a number outside of -1 to 1" : "";
    case Operation::kAcos:
      return abs(*first) > 1 ? "the arcus cosine of a number outside of -1 to 1" : "";
    case Operation::kAcosh:
      return *first < 1 ? "the inverse hyperbolic cosine of a number below 1" : "";
    case Operation::kAtanh:
      return abs(*first) >= 1 ? "the inverse hyperbolic tangent of a number not between -1 and 1"
                              : "";
    case Operation::kAcoth:
      return abs(*first) <= 1 ? "the inverse hyperbolic cotangent of a number from -1 to 1" : "";
    case Operation::kCot:
    case Operation::kCoth:
      return *first == 0 ? "the cotangent of zero" : "";
    default:
      return {};
  }
}

}  // namespace varno::solve
