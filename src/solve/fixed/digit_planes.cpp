#include "solve/fixed/digit_planes.h"

#include <algorithm>

namespace varno::solve {

void DigitPlanes::Reserve(int digitCount, int count)
{
  n = digitCount;
  // An odd number of lines of the cache, so that planes do not meet in the same places of it.
  constexpr int kLine = 8;
  stride = ((count + 2 * kAtOnce + kLine - 1) / kLine | 1) * kLine;
  planes.assign(static_cast<std::size_t>((n + 1) * stride), kBias);
  sumStride = (n + 1 + kAtOnce - 1) / kAtOnce * kAtOnce + kAtOnce;
  sums.assign(static_cast<std::size_t>((count + 1) * sumStride), 0);
  leastLeading.assign(static_cast<std::size_t>(count + kAtOnce), n);
}

void DigitPlanes::Set(int k, const double* digits, int leading)
{
  double* place = planes.data() + kAtOnce + k;
  const std::uint64_t* const before = SumsBefore(k);
  std::uint64_t* const with = sums.data() + (k + 1) * sumStride;
  for (int i = 0; i < n; ++i, place += stride) {
    const double value = kBias + digits[i];
    *place = value;
    with[i] = before[i] + std::bit_cast<std::uint64_t>(value);
  }
  with[n] = before[n] + kBiasPattern;
  int* const windows = &leastLeading[static_cast<std::size_t>(k)];  // of k - 7
  for (int i = 0; i < kAtOnce - 1; ++i)
    windows[i] = k == 0 ? leading : std::min(windows[i], leading);
  windows[kAtOnce - 1] = leading;
}

}  // namespace varno::solve
