#pragma once

#include <cstdint>

namespace varno::solve {

inline constexpr int kWideDigitBits = 51;

namespace wide {

inline constexpr std::int64_t kHalfDigit = std::int64_t{1} << (kWideDigitBits - 1);

/// The digit next to x / 2^51, so that what remains of x is a balanced digit: at most 2^50 in size.
inline std::int64_t CarryOf(std::int64_t x)
{
  return (x + kHalfDigit) >> kWideDigitBits;
}

inline std::int64_t Rest(std::int64_t x, std::int64_t carry)
{
  return x - carry * (std::int64_t{1} << kWideDigitBits);
}

/// The balanced digit of number + carry, which becomes the next carry: that waits for an addition
/// and a shift only.
inline std::int64_t Balanced(std::int64_t number, std::int64_t& carry)
{
  const std::int64_t sum = (number + kHalfDigit) + carry;
  carry = sum >> kWideDigitBits;
  return (sum & ((std::int64_t{1} << kWideDigitBits) - 1)) - kHalfDigit;
}

/// Makes digits 1..last balanced, which may be up to 2^63 - 2^52 before; digit 0 takes the carry.
inline void CarryUp(std::int64_t* digits, int last)
{
  std::int64_t carry = 0;
  for (int i = last; i > 0; --i) digits[i] = Balanced(digits[i], carry);
  digits[0] += carry;
}

}  // namespace wide

}  // namespace varno::solve
