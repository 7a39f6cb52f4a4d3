#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

#include "solve/fixed/digit_tiles.h"

namespace varno::solve {

/// The digits of the terms of a series once more, by place: digit 0 of all terms, then digit 1, and
/// so on, each as the natural number of DigitTiles. They are set eight terms at a time, when all
/// eight are there, and so take less of the time of large systems than tiles do, but nothing is
/// there of the last terms.
class DigitPlanes {
 public:
  static constexpr int kTerms = DigitTiles::kTerms;

  /// In this memory, which must outlive them.
  explicit DigitPlanes(std::pmr::memory_resource* memory = std::pmr::get_default_resource())
      : digits(memory), sums(memory)
  {}

  /// For `count` terms of n digits; what was there is lost. Behind the others stands a digit n that
  /// is 0 in all terms.
  void Reserve(int n, int count);
  /// Sets the terms 8 eighth..8 eighth + 7: of the first of them these digits, of each further one
  /// those `stride` behind; and how many of each are 0 before the first other. Those before have
  /// been set.
  void Set(int eighth, const double* rows, std::ptrdiff_t stride, const int* leading);
  /// Brings to the cache what will be set of them.
  void Prefetch(int eighth) const;

  /// kBias + digit i of term 0; those of the other terms follow. Terms -8..-1 and eight behind the
  /// last one can be read, too, but hold nothing.
  const double* Plane(int i) const { return digits.data() + begin + i * stride + kTerms; }
  /// From one place to the next
  std::ptrdiff_t Stride() const { return stride; }
  /// The sum of the patterns of kBias + digit i of the terms before 8 eighth, modulo 2^64
  std::uint64_t SumBefore(int eighth, int i) const
  {
    return sums[static_cast<std::size_t>(eighth * (n + std::ptrdiff_t{1}) + i)];
  }
  /// The least number of zeros before the digits of those eight terms
  int LeastLeading(int eighth) const { return leastLeading[static_cast<std::size_t>(eighth)]; }

 private:
  int n = 0;
  std::ptrdiff_t stride = 0;
  std::ptrdiff_t begin = 0;              // of the planes: eight terms are one line of a cache
  std::pmr::vector<double> digits;       // by place and term
  std::pmr::vector<std::uint64_t> sums;  // by eighth and place
  std::vector<int> leastLeading;
};

}  // namespace varno::solve
