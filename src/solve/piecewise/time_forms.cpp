#include "solve/piecewise/time_forms.h"

#include "solve/graph/fold.h"

namespace varno::solve {

std::optional<Rational> TimeForm::Root() const
{
  if (slope == 0) return std::nullopt;
  return Rational(-constant / slope);
}

const std::optional<TimeForm>& TimeForms::Of(NodeId id)
{
  while (forms.size() <= id) forms.push_back(Form(static_cast<NodeId>(forms.size())));
  return forms[id];
}

std::optional<TimeForm> TimeForms::Form(NodeId id) const
{
  const Node& node = graph[id];
  if (node.operation == Operation::kTime) return TimeForm{1, 0};
  if (node.operation == Operation::kNumber) return TimeForm{0, graph.Value(id)};
  if (node.operandCount == 0 || !forms[node.operands[0]]) return std::nullopt;
  const TimeForm& a = *forms[node.operands[0]];
  if (node.operation == Operation::kNegate) return TimeForm{-a.slope, -a.constant};
  if (node.operandCount != 2 || !forms[node.operands[1]]) return std::nullopt;
  const TimeForm& b = *forms[node.operands[1]];

  std::optional<Rational> slope, constant;
  switch (node.operation) {
    case Operation::kAdd:
    case Operation::kSubtract:
      slope = FoldExactly(node.operation, a.slope, b.slope);
      constant = FoldExactly(node.operation, a.constant, b.constant);
      break;
    case Operation::kMultiply: {
      if (a.slope != 0 && b.slope != 0) return std::nullopt;
      const TimeForm &factor = a.slope == 0 ? a : b, &form = a.slope == 0 ? b : a;
      slope = FoldExactly(node.operation, factor.constant, form.slope);
      constant = FoldExactly(node.operation, factor.constant, form.constant);
      break;
    }
    case Operation::kDivide:
      if (b.slope != 0) return std::nullopt;
      slope = FoldExactly(node.operation, a.slope, b.constant);
      constant = FoldExactly(node.operation, a.constant, b.constant);
      break;
    default:
      break;
  }
  if (!slope || !constant) return std::nullopt;
  return TimeForm{*slope, *constant};
}

}  // namespace varno::solve
