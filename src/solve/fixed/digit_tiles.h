#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace varno::solve {

/// The digits of the terms of a series once more, in tiles of eight terms, for kernels that
/// multiply digits of eight terms at a time: digit 0 of all eight, then digit 1, and so on.
///
/// Such kernels multiply natural numbers, so a digit d stands as the double kBias + d, whose lowest
/// 52 bits are d + 2^50. Of a sum of products over terms j and places i + m = c,
/// sum (x + 2^50) (y + 2^50) = sum x y + 2^50 sum (x + y) + 2^100 count, which takes sums of digits
/// over terms: differences of the sums up to a term, that are here, too.
class DigitTiles {
 public:
  static constexpr double kBias = 0x1p52 + 0x1p50;
  static constexpr auto kBiasPattern = std::bit_cast<std::uint64_t>(kBias);
  static constexpr int kTerms = 8;
  /// Those of one place of the terms of a tile, in one line of the cache
  struct alignas(64) Digits {
    std::array<double, kTerms> ofTerms;
  };

  static constexpr std::size_t BytesOfTile(int n) { return (std::size_t{1} + n) * sizeof(Digits); }

  /// For `count` terms of n digits; what was there is lost. Behind the others stands a digit n that
  /// is 0 in all terms.
  void Reserve(int n, int count);
  /// Term k has these digits, of which the first `leading` are 0. Terms come in their order; one
  /// that is set again is as if those behind it had not come yet.
  void Set(int k, const double* newDigits, int leading);

  /// Brings to the cache what will be set of term k.
  void Prefetch(int k) const;

  /// kBias + digit i of the terms 8 tile..8 tile + 7; tile -1 and that behind the last one can be
  /// read, too, but have no terms.
  const double* Tile(std::ptrdiff_t tile, int i) const
  {
    return digits[static_cast<std::size_t>((tile + 1) * (n + 1) + i)].ofTerms.data();
  }
  /// From one tile to the next
  std::ptrdiff_t Stride() const { return std::ptrdiff_t{n + 1} * kTerms; }
  /// By place i: the sum of the patterns of kBias + digit i of the terms before k, modulo 2^64.
  const std::uint64_t* SumsBefore(int k) const { return sums.data() + k * sumStride; }
  /// The least number of zeros before the digits of those of the terms k..k+7 that are there. k may
  /// be as low as -7: terms before 0 have none.
  int LeastLeading(int k) const { return leastLeading[static_cast<std::size_t>(k + kTerms - 1)]; }

 private:
  int n = 0;
  std::ptrdiff_t sumStride = 0;
  std::vector<Digits> digits;  // by tile and place
  std::vector<std::uint64_t> sums;
  std::vector<int> leastLeading;  // from term -7 on
};

}  // namespace varno::solve
