#pragma once

#include <cstddef>
#include <string>

namespace arith {

/// An integer that holds binary exponents and their differences: those of the largest numbers do
/// not fit into 64 bits.
__extension__ using WideInteger = __int128;

/// In decimal. The size must be below 10^36.
inline std::string ToText(WideInteger n)
{
  constexpr long kPart = 1'000'000'000'000'000'000;
  constexpr std::size_t kPartDigits = 18;
  if (n < 0) return '-' + ToText(-n);
  std::string lower = std::to_string(static_cast<long>(n % kPart));
  if (n < kPart) return lower;
  const std::string upper = std::to_string(static_cast<long>(n / kPart));
  return upper + std::string(kPartDigits - lower.size(), '0') + lower;
}

}  // namespace arith
