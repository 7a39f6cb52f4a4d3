#pragma once

#include <cstdint>
#include <vector>

#include "solve/model/model.h"

namespace varno::solve {

/// The same model with each parameter replaced by its value, folded exactly where the value is a
/// fraction. `parameters` of the result is empty. `others` are further nodes that are wanted: they
/// are changed to those of the result. The parameters with the numbers `open` stay leaves whose
/// values are still to come.
Model BindParameters(const Model& model, const std::vector<NodeId*>& others,
                     const std::vector<std::uint32_t>& open = {});

}  // namespace varno::solve
