#pragma once

#include <string>

#include "solve/model/model.h"

namespace varno::solve {

/// One expression, readable by the language itself: "10*(y - x)". Its text has a limited length:
/// what is longer ends in "...".
std::string PrintExpression(const Model& model, NodeId id);

/// A model for readers: equations, definitions that are columns, start values, parameters. Parts
/// that are used again, or would make an expression too long, are named "$1", "$2", ... and printed
/// once; so the text grows with the graph, however much is shared.
std::string PrintModel(const Model& model);

}  // namespace varno::solve
