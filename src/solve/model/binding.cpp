#include "solve/model/binding.h"

#include <vector>

namespace varno::solve {

namespace {

/// The copy of a node over operands that are copied already.
NodeId Copy(const Model& from, NodeId id, const std::vector<NodeId>& copies, Graph& to)
{
  const Graph& graph = from.graph;
  const Node& node = graph[id];
  const auto operand = [&](int i) { return copies[node.operands[i]]; };
  switch (node.operation) {
    case Operation::kNumber:
      return to.Number(graph.Value(id), node.place);
    case Operation::kPi:
    case Operation::kTime:
      return to.Leaf(node.operation, node.place);
    case Operation::kState:
      return to.State(node.index, node.place);
    case Operation::kParameter:
      return copies[from.parameters[node.index].value];
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

}  // namespace

Model BindParameters(const Model& model, const std::vector<NodeId*>& others)
{
  Model bound;
  bound.startPoint = model.startPoint;
  std::vector<NodeId> copies(model.graph.Size());
  for (NodeId id = 0; id < model.graph.Size(); ++id)
    copies[id] = Copy(model, id, copies, bound.graph);

  bound.states = model.states;
  for (State& state : bound.states) {
    state.rightHandSide = copies[state.rightHandSide];
    state.start = copies[state.start];
  }
  bound.columns = model.columns;
  for (Column& column : bound.columns) column.value = copies[column.value];
  bound.events = model.events;
  for (Event& event : bound.events) {
    event.expression = copies[event.expression];
    for (EventAssignment& assignment : event.assignments)
      assignment.value = copies[assignment.value];
  }
  if (bound.startPoint) bound.startPoint = copies[*bound.startPoint];
  for (NodeId* const node : others) *node = copies[*node];
  return bound;
}

}  // namespace varno::solve
