#pragma once

#include "solve/model/model.h"

namespace varno::solve {

/// The same model with each parameter replaced by its value, folded exactly where the value is a
/// fraction. `parameters` of the result is empty.
Model BindParameters(const Model& model);

}  // namespace varno::solve
