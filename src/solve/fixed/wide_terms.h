#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <vector>

#include "solve/fixed/digit_planes.h"
#include "solve/fixed/digit_tiles.h"
#include "solve/fixed/wide_digits.h"

namespace varno::solve {

/// The terms of one series as balanced 51-bit digits: term k is the sum over i = 0..n-1 of
/// digit i times 2^(51 (exponent - 1 - i)).
///
/// Digits are doubles, which hold them exactly. Those of a term stand in a row, with zeros before
/// and behind, so that kernels may read digits -3..n+2.
///
/// What is read of each series for each term comes first, on one line of a cache: where series are
/// many, none of it has stayed in the first cache when the next term is made.
struct alignas(64) WideTerms {
  static constexpr int kZeros = 3;
  /// Kernels may set as many digits of a row, those behind the last one to 0.
  static constexpr int kLeastStride = 8;
  /// Rows begin with lines of the cache, as far as strides let them.
  struct alignas(64) DigitLine {
    std::array<double, 8> digits;
    bool operator==(const DigitLine& other) const = default;
  };

  int n = 0;
  int stride = 0;
  std::pmr::vector<DigitLine> rows;
  std::unique_ptr<int[]> leading;  // by k: the first digit that is not 0, n where all are
  bool started = false;
  bool inexact = false;
  int used = 0;                         // digits from here on are 0 in all terms
  std::unique_ptr<DigitPlanes> planes;  ///< only of those that keep them
  std::unique_ptr<DigitTiles> tiles;    ///< the same
  long exponent = 0;
  long leastExponent = 0;  ///< where the exponent begins at least
  int capacity = 0;

  WideTerms() = default;
  /// With digits in this memory, which must outlive them.
  explicit WideTerms(std::pmr::memory_resource* memory) : rows(memory) {}

  /// The digits of term k.
  const double* Row(int k) const { return rows.data()->digits.data() + Place(k); }
  /// Whether term k is 0, not merely too small to be seen.
  bool IsExactZero(int k) const { return leading[k] == n && exactZero[k] != 0; }
  void Reserve(int digitCount, int count);
  /// From now on the digits stand in tiles, too. Terms must come in their order then.
  void KeepTiles();
  /// The same for planes.
  void KeepPlanes();
  void Reset(long newLeastExponent);
  /// Sets term k to n digits; where all are 0 it is too small to be seen.
  void Set(int k, const std::int64_t* digits);
  void SetZero(int k, bool isExact);
  /// Whether a term that follows is no more than its digits, as long as it is not 0 and fits: the
  /// series has its exponent, and has lost digits.
  bool IsSettled() const { return started && inexact; }
  /// Sets term k of a settled series to digits of which the first stands at the place `place`; all
  /// but that are balanced. False, and nothing is set, if they are 0, too small, or do not fit.
  bool SetSettled(int k, const std::int64_t* digits, int count, int place);
  /// The same in two parts: says where its first digit that is not 0 stands, and returns where to
  /// put all n of them, between zeros; what comes after.
  double* BeginSettled(int k, int firstDigit)
  {
    leading[k] = firstDigit;
    used = n;
    return MutableRow(k);
  }
  void EndSettled(int k) { SetAgain(k); }
  /// Brings to the cache what will be set of term k.
  void Prefetch(int k) const;
  /// Makes room for larger terms among the first `count`: all move down by whole digits.
  void Raise(long newExponent, int count);

 private:
  void FillTiles();
  void FillPlanes();
  /// Brings term k to tiles and planes.
  void SetAgain(int k)
  {
    if (tiles) tiles->Set(k, Row(k), leading[k]);
    constexpr int kTerms = DigitPlanes::kTerms;
    if (planes && k % kTerms == kTerms - 1) SetInPlanes(k / kTerms);
  }
  void SetInPlanes(int eighth);
  friend WideTerms CopyOf(const WideTerms& terms, int count);
  double* MutableRow(int k) { return rows.data()->digits.data() + Place(k); }
  /// Before the first row is a line of zeros.
  std::ptrdiff_t Place(int k) const { return std::ptrdiff_t{k} * stride + kDigitsOfLine; }
  static constexpr int kDigitsOfLine = sizeof(DigitLine) / sizeof(double);

  std::vector<std::uint8_t> exactZero;  // by k, of those whose digits are all 0
};

/// The first `count` terms of a series, without tiles and planes.
WideTerms CopyOf(const WideTerms& terms, int count);

/// How many digits a series has more than it needs, if units of 2^log2 are small enough for it.
inline double SpareDigits(const WideTerms& terms, double log2)
{
  const auto unit = static_cast<double>((terms.exponent - terms.n) * kWideDigitBits);
  return std::max(0.0, (log2 - unit) / kWideDigitBits);
}

}  // namespace varno::solve
