#include "solve/evaluation/evaluator.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/elementary.h"

namespace varno::solve {

namespace {

/// All nodes below the roots and the roots, each once, operands first.
std::vector<NodeId> Below(const Graph& graph, const std::vector<NodeId>& roots)
{
  std::vector<NodeId> found, open = roots;
  std::unordered_set<NodeId> seen;
  while (!open.empty()) {
    const NodeId id = open.back();
    open.pop_back();
    if (!seen.insert(id).second) continue;
    found.push_back(id);
    const Node& node = graph[id];
    for (int i = 0; i < node.operandCount; ++i) open.push_back(node.operands[i]);
  }
  std::ranges::sort(found);
  return found;
}

}  // namespace

Evaluator::Evaluator(const Graph& graph, std::vector<NodeId> roots, mpfr_prec_t bits)
{
  std::unordered_map<NodeId, std::uint32_t> places;
  for (const NodeId id : Below(graph, roots)) {
    const Node& node = graph[id];
    places[id] = static_cast<std::uint32_t>(values.size());
    steps.push_back({node.operation, id, node.operandCount > 0 ? places[node.operands[0]] : 0,
                     node.operandCount > 1 ? places[node.operands[1]] : 0, node.index});
    values.emplace_back(bits);
    if (node.operation == Operation::kNumber) {
      mpfr_set_q(values.back(), graph.Value(id).get_mpq_t(), MPFR_RNDN);
    } else if (node.operation == Operation::kPi) {
      mpfr_const_pi(values.back(), MPFR_RNDN);
    }
  }
  for (const NodeId root : roots) rootPlaces.push_back(places[root]);
}

void Evaluator::Compute(std::size_t place, mpfr_srcptr time, std::span<const Real> states)
{
  const Step& step = steps[place];
  switch (step.operation) {
    case Operation::kNumber:
    case Operation::kPi: return;
    case Operation::kTime: mpfr_set(values[place], time, MPFR_RNDN); return;
    case Operation::kState: mpfr_set(values[place], states[step.index], MPFR_RNDN); return;
    default: break;
  }
  const Outcome outcome = Apply(step.operation, values[place], values[step.a], values[step.b]);
  if (outcome == Outcome::kValue) return;
  const bool second = step.operation == Operation::kDivide;
  throw DomainError{outcome, step.node, values[second ? step.b : step.a]};
}

void Evaluator::Evaluate(mpfr_srcptr time, std::span<const Real> states)
{
  for (std::size_t place = 0; place < steps.size(); ++place) Compute(place, time, states);
}

Real EvaluateConstant(const Graph& graph, NodeId node, mpfr_prec_t bits)
{
  Evaluator evaluator(graph, {node}, bits);
  evaluator.Evaluate(nullptr, {});
  return evaluator[0];
}

}  // namespace varno::solve
