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

/// Negation, addition, subtraction, multiplication, division and powers with integer exponents of
/// exact numbers (0^0 is 1). None for other operations, where there is no value, and where an
/// operand or the result is not small; negation has no such limit.
std::optional<Rational> FoldExactly(Operation operation, const Rational& a);
std::optional<Rational> FoldExactly(Operation operation, const Rational& a, const Rational& b);

}  // namespace varno::solve
