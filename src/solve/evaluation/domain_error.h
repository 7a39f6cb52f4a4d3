#pragma once

#include "solve/evaluation/elementary.h"
#include "solve/graph/graph.h"
#include "solve/number/real.h"

namespace varno::solve {

/// An operation that has no value where it was asked for.
struct DomainError {
  Outcome outcome;
  NodeId node;    ///< in the graph that is evaluated
  Real argument;  ///< the operand that decides: the divisor, the radicand, the base of a power
  /// Whether the node is one of the whole model, and not of a piece of it.
  bool isOfModel = false;
};

}  // namespace varno::solve
