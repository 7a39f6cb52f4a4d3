#pragma once

#include <optional>
#include <string_view>

#include "solve/graph/graph.h"

namespace varno::solve {

/// The largest decimal exponent of a number, by absolute value: 10^18.
inline constexpr long kMaxDecimalExponent = 1'000'000'000'000'000'000;

/// A number as it is written ("12", "0.1", ".5e-3"), exactly; none where its exponent is beyond
/// kMaxDecimalExponent.
///
/// A number is a fraction as long as that takes memory in proportion to its digits: with exponents
/// up to 1000 and four times the digits. Beyond, it is the product of its digits and a power of ten
/// that is not multiplied out, so that 1e999999999 takes a few bytes and is as exact.
std::optional<NodeId> AddNumber(Graph& graph, std::string_view text, Place place);

}  // namespace varno::solve
