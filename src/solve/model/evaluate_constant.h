#pragma once

#include <vector>

#include "solve/model/graph.h"
#include "solve/model/model.h"
#include "solve/number/real.h"

namespace varno::solve {

/// Sets result to the value of a constant node, with the parameters put in, by MPFR's functions at
/// the precision of the result plus 64 bits, operation by operation: what cancels is lost. NaN
/// where there is no value, and for the sine and its like of arguments beyond 2^65536, whose
/// reduction would take all memory.
void EvaluateConstant(mpfr_ptr result, const Graph& graph, const std::vector<Parameter>& parameters,
                      NodeId id);

/// True when two constants are equal: by their exact values, or, where they have none, when they
/// agree to 1000 of 2000 bits.
bool AreEqualConstants(const Graph& graph, const std::vector<Parameter>& parameters, NodeId a,
                       NodeId b);

}  // namespace varno::solve
