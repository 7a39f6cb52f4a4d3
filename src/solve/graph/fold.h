#pragma once

#include <cstddef>
#include <optional>

#include "solve/graph/operation.h"
#include "solve/number/rational.h"

namespace varno::solve {

/// Exact arithmetic goes on while numerator and denominator have no more bits than this.
inline constexpr std::size_t kMaxExactBits = 4096;

/// True where numerator and denominator have at most kMaxExactBits.
bool IsSmall(const Rational& number);

/// Addition, subtraction, multiplication, division and powers with integer exponents of exact
/// numbers (0^0 is 1), and what gives no longer numbers than it takes: negation, functions with
/// kinks and jumps, conditions (1 where they hold, else 0). None for other operations, where there
/// is no value, and where an operand or the result of the first ones is not small.
std::optional<Rational> FoldExactly(Operation operation, const Rational& a);
std::optional<Rational> FoldExactly(Operation operation, const Rational& a, const Rational& b);

}  // namespace varno::solve
