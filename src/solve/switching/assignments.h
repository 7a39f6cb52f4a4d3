#pragma once

#include <vector>

#include "solve/model/model.h"
#include "solve/switching/switch_point.h"

namespace varno::solve {

/// The states behind an event: those that it assigns to have new values, all of them made of the
/// old ones. Throws DomainError where a value is undefined.
SwitchPoint Assigned(const Model& model, const Event& event, const SwitchPoint& point,
                     bool disturbed);

/// Whether an expression depends on a state that one of these events assigns to.
bool DependsOnAssigned(const Graph& graph, NodeId expression,
                       const std::vector<const Event*>& events);

}  // namespace varno::solve
