#include "solve/library/not_yet.h"

#include <vector>

#include "solve/source/diagnostics.h"

namespace varno::solve {

void RequireSmoothEquations(const Model& model, const Sources& sources)
{
  Diagnostics diagnostics;
  std::vector<bool> isNeeded(model.graph.Size(), false);
  for (const State& state : model.states) isNeeded[state.rightHandSide] = true;
  for (auto id = static_cast<NodeId>(model.graph.Size()); id-- > 0;) {
    const Node& node = model.graph[id];
    if (!isNeeded[id] || node.dependence == Dependence::kNothing) continue;
    if (IsPiecewise(node.operation)) {
      diagnostics.Error(node.place, "not yet: kinks and jumps in equations",
                        "in definitions that are columns only they work");
    }
    for (int i = 0; i < node.operandCount; ++i) isNeeded[node.operands[i]] = true;
  }
  for (const Event& event : model.events) diagnostics.Error(event.place, "not yet: events");
  if (diagnostics.HasErrors()) throw ProblemError(diagnostics, sources);
}

}  // namespace varno::solve
