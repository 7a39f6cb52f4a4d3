#pragma once

#include <vector>

#include "solve/model/model.h"

namespace varno::solve {

/// The same model with each parameter replaced by its value, folded exactly where the value is a
/// fraction. `parameters` of the result is empty. `others` are further nodes that are wanted: they
/// are changed to those of the result.
Model BindParameters(const Model& model, const std::vector<NodeId*>& others);

}  // namespace varno::solve
