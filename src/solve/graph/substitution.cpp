#include "solve/graph/substitution.h"

#include <algorithm>

#include "solve/graph/copy.h"

namespace varno::solve {

namespace {

bool IsWholeNumber(const Graph& graph, NodeId id)
{
  return graph.IsNumber(id) && graph.Value(id).get_den() == 1;
}

/// Whether an operation has a value, and is the same one, for all constants but 0.
bool TakesAnyConstant(const Graph& graph, const Node& node)
{
  // What is decided on the way of a run is read from the graph with the values in it.
  if (IsPiecewise(node.operation)) return node.dependence != Dependence::kNothing;
  switch (node.operation) {
    case Operation::kNegate:
    case Operation::kAdd:
    case Operation::kSubtract:
    case Operation::kMultiply:
    case Operation::kDivide:
    case Operation::kExp:
    case Operation::kSin:
    case Operation::kCos:
    case Operation::kSinh:
    case Operation::kCosh:
    case Operation::kTanh:
    case Operation::kAtan:
    case Operation::kAsinh:
    case Operation::kErf:
      return true;
    case Operation::kPower:
      return IsWholeNumber(graph, node.operands[1]);
    default:
      return false;
  }
}

}  // namespace

Substitution::Substitution(const Graph& graph, const std::vector<NodeId>& others)
{
  std::vector<bool> varies(graph.Size(), false), decides(graph.Size(), false);
  const auto operands = [&](const Node& node) {
    return std::span(node.operands).first(node.operandCount);
  };
  for (NodeId id = 0; id < graph.Size(); ++id) {
    const Node& node = graph[id];
    if (node.dependence != Dependence::kNothing) continue;
    varies[id] =
        node.operation == Operation::kParameter ||
        std::ranges::any_of(operands(node), [&](NodeId operand) { return varies[operand]; });
    if (varies[id]) varying.push_back(id);
  }
  for (const NodeId id : others) decides[id] = varies[id];
  for (NodeId id = static_cast<NodeId>(graph.Size()); id-- > 0;) {
    const Node& node = graph[id];
    const bool all = decides[id] || !TakesAnyConstant(graph, node);
    if (!all) continue;
    for (const NodeId operand : operands(node)) decides[operand] = varies[operand];
    if (decides[id] && node.operation == Operation::kParameter) structural.push_back(node.index);
  }
  std::ranges::sort(structural);
}

bool Substitution::IsStructural(std::uint32_t parameter) const
{
  return std::ranges::binary_search(structural, parameter);
}

std::optional<SubstitutedGraph> Substitution::Apply(const Graph& graph,
                                                    std::span<const Rational> values,
                                                    std::uint32_t firstFree) const
{
  SubstitutedGraph result;
  result.copies.reserve(graph.Size());
  auto next = varying.begin();
  for (NodeId id = 0; id < graph.Size(); ++id) {
    const Node& node = graph[id];
    const NodeId copy = node.operation == Operation::kParameter
                            ? result.graph.Number(values[node.index], node.place)
                            : CopyNode(graph, id, result.copies, result.graph);
    result.copies.push_back(copy);
    if (next == varying.end() || *next != id) continue;
    ++next;
    const bool mayBeZero = node.operation == Operation::kParameter && node.index >= firstFree;
    if (!mayBeZero && result.graph.IsNumber(copy) && sgn(result.graph.Value(copy)) == 0)
      return std::nullopt;
  }
  return result;
}

}  // namespace varno::solve
