#include "solve/switching/assignments.h"

#include <algorithm>

#include "solve/evaluation/disturbance.h"
#include "solve/evaluation/evaluator.h"

namespace varno::solve {

namespace {

/// Values are computed with so many bits more than the states have.
constexpr mpfr_prec_t kGuardBits = 64;

bool IsAssigned(std::uint32_t state, const std::vector<const Event*>& events)
{
  return std::ranges::any_of(events, [&](const Event* event) {
    return std::ranges::find(event->assignments, state, &EventAssignment::state) !=
           event->assignments.end();
  });
}

}  // namespace

SwitchPoint Assigned(const Model& model, const Event& event, const SwitchPoint& point,
                     bool disturbed)
{
  SwitchPoint result = point;
  if (event.assignments.empty()) return result;
  std::vector<NodeId> values;
  for (const EventAssignment& assignment : event.assignments) values.push_back(assignment.value);
  const mpfr_prec_t bits = point.states.front().Bits();
  Real time(bits + kGuardBits);
  point.time.Evaluate(time);
  Evaluator evaluator(model.graph, values, bits + kGuardBits);
  evaluator.Evaluate(time, point.states);
  evaluator.EvaluateSizes(point.sizes);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::uint32_t state = event.assignments[i].state;
    Real& value = result.states[state];
    const bool isRounded = mpfr_set(value, evaluator[i], MPFR_RNDN) != 0;
    if (isRounded && disturbed) Disturb(value, state);
    result.sizes[state] = evaluator.Size(i);
  }
  return result;
}

bool DependsOnAssigned(const Graph& graph, NodeId expression,
                       const std::vector<const Event*>& events)
{
  std::vector<bool> met(expression + 1, false);
  std::vector<NodeId> open{expression};
  while (!open.empty()) {
    const NodeId id = open.back();
    open.pop_back();
    if (met[id]) continue;
    met[id] = true;
    const Node& node = graph[id];
    if (node.operation == Operation::kState && IsAssigned(node.index, events)) return true;
    for (int i = 0; i < node.operandCount; ++i) open.push_back(node.operands[i]);
  }
  return false;
}

}  // namespace varno::solve
