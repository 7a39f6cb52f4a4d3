#include "solve/model/binding.h"

#include <algorithm>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/graph/copy.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kDecisionBits = 64;
/// No longer integer is made of a constant that is not rational.
constexpr mpfr_exp_t kMostIntegerBits = 1L << 20;

/// The copy of a node over operands that are copied already, with the value of a parameter in its
/// place.
NodeId Copy(const Model& from, NodeId id, const std::vector<NodeId>& copies,
            const std::vector<std::uint32_t>& open, Graph& to)
{
  const Node& node = from.graph[id];
  const bool isBound =
      node.operation == Operation::kParameter && std::ranges::find(open, node.index) == open.end();
  return isBound ? copies[from.parameters[node.index].value] : CopyNode(from.graph, id, copies, to);
}

/// The value of floor, sign, a comparison and the like, a whole number; the operation itself where
/// it is too long.
NodeId WholeValue(Graph& graph, NodeId id)
{
  Real value = EvaluateConstant(graph, id, kDecisionBits);
  const mpfr_exp_t bits = value.IsZero() ? 0 : mpfr_get_exp(static_cast<mpfr_srcptr>(value));
  if (bits > kMostIntegerBits) return id;
  if (bits > kDecisionBits) value = EvaluateConstant(graph, id, bits);
  Integer whole;
  mpfr_get_z(whole.get_mpz_t(), value, MPFR_RNDN);
  return graph.Number(whole, graph[id].place);
}

/// What a constant operation with a kink or a jump, or a comparison, comes to: a number, or one of
/// its operands.
NodeId Decide(Graph& graph, NodeId id)
{
  const Node node = graph[id];  // a copy: the graph grows
  const NodeId a = node.operands[0], b = node.operands[1];
  const auto isBelow = [&](NodeId left, NodeId right) {
    const NodeId less = graph.Make(Operation::kLess, left, right, node.place);
    return !EvaluateConstant(graph, less, kDecisionBits).IsZero();
  };
  switch (node.operation) {
    case Operation::kAbs:
      return isBelow(a, graph.Number(0, node.place)) ? graph.Make(Operation::kNegate, a, node.place)
                                                     : a;
    case Operation::kMin:
      return isBelow(a, b) ? a : b;
    case Operation::kMax:
      return isBelow(a, b) ? b : a;
    default:
      return WholeValue(graph, id);
  }
}

/// The node itself, or what it comes to where constants decide it. What has no value stays.
NodeId DecidedOr(Graph& graph, NodeId id)
{
  const Node& node = graph[id];
  const bool isOpen = IsPiecewise(node.operation) && !IsChoice(node.operation) &&
                      node.dependence == Dependence::kNothing;
  if (!isOpen) return id;
  try {
    return Decide(graph, id);
  } catch (const DomainError&) {
    return id;
  }
}

/// Which nodes of a growing graph depend on parameters whose values are still to come.
class OpenNodes {
 public:
  explicit OpenNodes(const Graph& graph) : graph(graph) {}

  /// Looks at what has been added.
  void Extend()
  {
    for (auto id = static_cast<NodeId>(isOpen.size()); id < graph.Size(); ++id) {
      const Node& node = graph[id];
      bool open = node.operation == Operation::kParameter;
      for (int i = 0; i < node.operandCount; ++i) open = open || isOpen[node.operands[i]];
      isOpen.push_back(open);
    }
  }
  bool Contains(NodeId id) const { return isOpen[id]; }

 private:
  const Graph& graph;
  std::vector<bool> isOpen;
};

}  // namespace

Model BindParameters(const Model& model, const std::vector<NodeId*>& others,
                     const std::vector<std::uint32_t>& open)
{
  Model bound;
  bound.startPoint = model.startPoint;
  std::vector<NodeId> copies(model.graph.Size());
  OpenNodes openNodes(bound.graph);
  for (NodeId id = 0; id < model.graph.Size(); ++id) {
    copies[id] = Copy(model, id, copies, open, bound.graph);
    openNodes.Extend();
    if (!openNodes.Contains(copies[id])) copies[id] = DecidedOr(bound.graph, copies[id]);
  }

  bound.states = model.states;
  bound.columns = model.columns;
  bound.events = model.events;
  for (NodeId* const node : bound.Nodes()) *node = copies[*node];
  for (NodeId* const node : others) *node = copies[*node];
  return bound;
}

}  // namespace varno::solve
