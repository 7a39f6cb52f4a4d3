#pragma once

#include <string_view>

#include "solve/model/operation.h"

namespace varno::solve {

/// How an operation is written: "sin", "+", "^"; for a leaf a word that says what it is.
std::string_view OperationName(Operation operation);

}  // namespace varno::solve
