#pragma once

#include <bit>
#include <cstdint>

namespace varno::solve {

// A product of two digits has 100 bits. Added to kHigh, it is rounded to a multiple of 2^51, and
// the bit pattern of the sum is that of kHigh plus this multiple; the rest, added to kLow, is an
// integer in the bit pattern of that sum. Patterns are added as integers, and those of the
// constants subtracted once, for each product.

inline constexpr double kHigh = 0x1.8p103;
inline constexpr double kLow = 0x1.8p52;
inline constexpr auto kHighPattern = std::bit_cast<std::uint64_t>(kHigh);
inline constexpr auto kLowPattern = std::bit_cast<std::uint64_t>(kLow);

}  // namespace varno::solve
