#pragma once

#include <cstdint>
#include <vector>

#include "solve/fixed/int128.h"

namespace varno::solve {

inline constexpr int kWideDigitBits = 51;

/// The terms of one series as balanced 51-bit digits: term k is the sum over i = 0..n-1 of
/// digit i times 2^(51 (exponent - 1 - i)).
///
/// Each digit stands three times: in the row of its term, and as a double in two planes, one for
/// each i, of which one counts k up and the other down.
struct WideTerms {
  int n = 0;
  int capacity = 0;
  std::vector<std::int64_t> digits;     // k n + i
  std::vector<double> upwards;          // i capacity + k; a plane of 0 makes their number even
  std::vector<double> downwards;        // i capacity + capacity - 1 - k
  std::vector<int> leading;             // by k: the first digit that is not 0, n where all are
  std::vector<int> last;                // by i: the last k where digit i is not 0, -1 where none is
  std::vector<std::uint8_t> exactZero;  // by k: 0, not merely too small to be seen
  long exponent = 0;
  long leastExponent = 0;  ///< where the exponent begins at least
  bool started = false;
  bool inexact = false;

  int PlaneCount() const { return n + n % 2; }
  void Reserve(int digitCount, int count);
  void Reset(long newLeastExponent);
  /// Sets term k to n digits.
  void Set(int k, const std::int64_t* row);
  void SetZero(int k);
  /// Makes room for larger terms among the first `count`: all move down by whole digits.
  void Raise(long newExponent, int count);
};

/// Sets columns[c], c = 0..n, to the sum over j = first..last and i of digit i of a[j] times digit
/// c - i of b[k-j], both below n. The sums are exact.
using ColumnKernel = void (*)(const WideTerms& a, const WideTerms& b, int first, int last, int k,
                              Int128* columns);

void SumColumns(const WideTerms& a, const WideTerms& b, int first, int last, int k,
                Int128* columns);
/// The fastest kernel for this processor. All give the same sums.
ColumnKernel BestColumnKernel();
/// One for processors with AVX2 and FMA; null on others.
ColumnKernel VectorColumnKernel();

}  // namespace varno::solve
