#pragma once

#include <span>
#include <unordered_map>
#include <vector>

#include <mpfr.h>

#include "solve/graph/graph.h"
#include "solve/number/real.h"

namespace varno::solve {

/// The value of an expression that depends neither on t nor on states, right to about its precision
/// however much cancels inside it: it is computed with more and more bits until enough of them
/// remain.
///
/// What is 0, as sin(pi), can only be told by bits that show nothing else: thousands of them, and
/// four times as many as the largest and the smallest number in it take before or after the point,
/// so that 1e5000*(exp(1e-5000) - 1) is 1. The same counts for arguments on the edge of a domain.
/// Throws DomainError, with Outcome::kInDoubt where that would take more than 2^18 bits.
Real EvaluateConstant(const Graph& graph, NodeId node, mpfr_prec_t bits,
                      std::span<const NodeId> parameters = {});

/// The values, each by itself, of the largest constants in some expressions; not of numbers and
/// pi, and not of those that have no value.
std::unordered_map<NodeId, Real> ConstantsIn(const Graph& graph, const std::vector<NodeId>& roots,
                                             mpfr_prec_t bits);

}  // namespace varno::solve
