#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace varno::solve {

/// Reciprocals and logarithms near the middle of each of 32 parts of [1, 2), but of the first part
/// those of 1.
struct Log2Table {
  struct alignas(16) Entry {
    double reciprocal = 0, log = 0;
  };
  std::array<Entry, 32> entries{};

  constexpr Log2Table()
  {
    for (std::size_t i = 0; i < entries.size(); ++i) {
      auto& [reciprocal, log] = entries[i];
      const double middle = i == 0 ? 1 : 1 + (static_cast<double>(i) + 0.5) / 32;
      reciprocal = 1 / middle;
      // log2 m = 2/ln 2 artanh s with s = (m - 1)/(m + 1), for m = 1/reciprocal
      const double s = (1 - reciprocal) / (1 + reciprocal);
      double power = 2.885390081777926815 * s;
      for (int k = 1; k < 40; k += 2, power *= s * s) log += power / k;
    }
  }
};

inline constexpr Log2Table kLog2Table;

inline constexpr double kByLn2 = 1.442695040888963407;

/// log2 (x 2^shift) for a normal double x > 0, right to 1e-8, exact for powers of 2: several times
/// as fast as std::log2.
inline double FastLog2(double x, std::int64_t shift = 0)
{
  // x = m 2^e, and m = (1 + r)/c for the reciprocal c of a number near m: |r| <= 1/32, and log2 m =
  // -log2 c + (r - r^2/2 + r^3/3 - r^4/4)/ln 2
  const auto pattern = std::bit_cast<std::uint64_t>(x);
  const auto part = static_cast<std::size_t>(pattern >> 47) & 31;
  const double m = std::bit_cast<double>((pattern & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000);
  const auto& [reciprocal, log] = kLog2Table.entries[part];
  const double r = m * reciprocal - 1;
  const double rest = r * (kByLn2 - r * (kByLn2 / 2 - r * (kByLn2 / 3 - r * (kByLn2 / 4))));
  const auto exponent = static_cast<std::int64_t>(pattern >> 52) - 1023 + shift;
  return static_cast<double>(exponent) + (log + rest);
}

}  // namespace varno::solve
