#pragma once

#include <bit>
#include <cstdint>

namespace varno::solve {

/// log2 x for a normal double x > 0, right to 3e-11: several times as fast as std::log2.
inline double FastLog2(double x)
{
  // x = m 2^e with m between sqrt(1/2) and sqrt(2), and log2 m = 2/ln 2 artanh s with
  // s = (m - 1)/(m + 1), |s| < 0.172: s + s^3/3 + ... + s^11/11
  constexpr std::uint64_t kRootOfHalf = 0x3FE6A09E667F3BCD;  // the pattern of sqrt(1/2)
  const auto pattern = std::bit_cast<std::uint64_t>(x);
  const std::int64_t exponent = static_cast<std::int64_t>(pattern - kRootOfHalf) >> 52;
  const double m = std::bit_cast<double>(pattern - (static_cast<std::uint64_t>(exponent) << 52));
  const double s = (m - 1) / (m + 1), q = s * s;
  const double odd =
      1 + q * (1.0 / 3 + q * (1.0 / 5 + q * (1.0 / 7 + q * (1.0 / 9 + q * (1.0 / 11)))));
  constexpr double kTwoByLn2 = 2.885390081777926815;
  return static_cast<double>(exponent) + kTwoByLn2 * s * odd;
}

}  // namespace varno::solve
