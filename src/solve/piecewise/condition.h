#pragma once

#include <cstdint>
#include <map>

#include "solve/graph/graph.h"
#include "solve/number/rational.h"
#include "solve/source/place.h"

namespace varno::solve {

/// The number of a condition: the same in every piece of a model.
using ConditionId = std::uint32_t;

enum class ConditionKind : std::uint8_t {
  kSign,     ///< which sign the expression has
  kInteger,  ///< which integer it is, or between which it lies
};

/// What operations with kinks or jumps ask of an expression. abs(u), sign(u), u < 0, not 0 <= u and
/// min(u, 0) ask the same, so do floor(u) and ceil(u).
struct Condition {
  ConditionKind kind;
  NodeId expression;  ///< in the graph of Pieces; it may contain such operations itself
  Place place;        ///< of the operation that asks
};

/// The answer to a condition. Of a sign: -1, 0, 1; of an integer: 2n for the integer n itself, 2n+1
/// between n and n+1. So odd decisions belong to open regions, and an even one to the boundary
/// between its two neighbours.
using Decision = Integer;

inline bool IsOnBoundary(const Decision& decision)
{
  return mpz_even_p(decision.get_mpz_t()) != 0;
}

/// The decisions that make a piece: one for each condition whose answer counts there. Conditions in
/// a branch that is not chosen do not count, nor do those that are constant.
using Mode = std::map<ConditionId, Decision>;

}  // namespace varno::solve
