#include "solve/model/model.h"

namespace varno::solve {

std::vector<NodeId*> Model::Nodes()
{
  std::vector<NodeId*> nodes;
  for (State& state : states) nodes.insert(nodes.end(), {&state.rightHandSide, &state.start});
  for (Column& column : columns) nodes.push_back(&column.value);
  for (Event& event : events) {
    nodes.push_back(&event.expression);
    for (EventAssignment& assignment : event.assignments) nodes.push_back(&assignment.value);
  }
  if (startPoint) nodes.push_back(&*startPoint);
  return nodes;
}

}  // namespace varno::solve
