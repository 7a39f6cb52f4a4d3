#pragma once

#include "solve/model/model.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The tape of a model whose parameters are bound (BindParameters).
Tape Compile(const Model& model);

}  // namespace varno::solve
