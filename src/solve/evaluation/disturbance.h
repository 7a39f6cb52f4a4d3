#pragma once

#include <cstdint>

#include <mpfr.h>

#include "solve/graph/graph.h"

namespace varno::solve {

/// Moves a number by up to 2^kDisturbanceBits units of its last bit, by an amount that depends on
/// the key only; 0 stays 0.
///
/// Two runs that round the same number in the same way make the same mistake: an unstable rest,
/// left by less than either can hold, would look like rest to both. One run is therefore disturbed
/// wherever it rounds, and what depends on it shows as a difference.
void Disturb(mpfr_ptr number, std::uint64_t key);

/// A key for a constant, the same for equal fractions whatever their sign: what cancels exactly
/// still does so when it is disturbed.
std::uint64_t DisturbanceKey(const Graph& graph, NodeId constant);

/// Whether a constant is a fraction that so many bits hold exactly.
bool IsExact(const Graph& graph, NodeId constant, mpfr_prec_t bits);

inline constexpr int kDisturbanceBits = 12;

}  // namespace varno::solve
