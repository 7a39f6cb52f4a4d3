#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace varno::solve {

/// The digits of the terms of a series once more, by place: digit i of all terms stands in one row,
/// the plane i, for kernels that multiply digits of several terms at a time.
///
/// Such kernels multiply natural numbers, so a digit d stands as the double kBias + d, whose lowest
/// 52 bits are d + 2^50. Of a sum of products over terms j and places i + m = c,
/// sum (x + 2^50) (y + 2^50) = sum x y + 2^50 sum (x + y) + 2^100 count, which takes sums of digits
/// over terms: differences of the sums up to a term, that are here, too.
class DigitPlanes {
 public:
  static constexpr double kBias = 0x1p52 + 0x1p50;
  static constexpr auto kBiasPattern = std::bit_cast<std::uint64_t>(kBias);
  /// So many terms are read at a time: planes have as many values before and behind.
  static constexpr int kAtOnce = 8;

  /// For `count` terms of n digits; what was there is lost. A plane n of digits that are all 0
  /// stands behind the others.
  void Reserve(int n, int count);
  /// Term k has these digits, of which the first `leading` are 0. Terms come in their order; one
  /// that is set again is as if those behind it had not come yet.
  void Set(int k, const double* digits, int leading);

  /// Values kBias + digit i by term, from term 0 on.
  const double* Plane(int i) const { return planes.data() + i * stride + kAtOnce; }
  /// From one plane to the next.
  std::ptrdiff_t Stride() const { return stride; }
  /// By place i: the sum of the patterns of kBias + digit i of the terms before k, modulo 2^64.
  const std::uint64_t* SumsBefore(int k) const { return sums.data() + k * sumStride; }
  /// The least number of zeros before the digits of those of the terms k..k+7 that are there. k may
  /// be as low as -7: terms before 0 have none.
  int LeastLeading(int k) const { return leastLeading[static_cast<std::size_t>(k + kAtOnce - 1)]; }

 private:
  int n = 0;
  std::ptrdiff_t stride = 0, sumStride = 0;
  std::vector<double> planes;
  std::vector<std::uint64_t> sums;
  std::vector<int> leastLeading;  // from term -7 on
};

}  // namespace varno::solve
