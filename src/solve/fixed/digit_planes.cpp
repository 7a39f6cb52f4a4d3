#include "solve/fixed/digit_planes.h"

#include <algorithm>
#include <bit>

namespace varno::solve {

void DigitPlanes::Reserve(int digitCount, int count)
{
  n = digitCount;
  const std::ptrdiff_t eights = (count + kTerms - 1) / kTerms;
  // An odd number of lines of a cache: planes do not fall on the same ones.
  stride = ((eights + 2) | 1) * kTerms;
  digits.assign(static_cast<std::size_t>((n + 1) * stride + kTerms), DigitTiles::kBias);
  const auto place = std::bit_cast<std::uintptr_t>(digits.data()) / sizeof(double);
  begin = (kTerms - static_cast<std::ptrdiff_t>(place % kTerms)) % kTerms;
  sums.assign(static_cast<std::size_t>((n + 1) * (eights + 1)), 0);
  for (std::ptrdiff_t eighth = 0; eighth <= eights; ++eighth)
    sums[static_cast<std::size_t>(eighth * (n + 1) + n)] =
        static_cast<std::uint64_t>(eighth) * kTerms * DigitTiles::kBiasPattern;
  leastLeading.assign(static_cast<std::size_t>(eights), n);
}

void DigitPlanes::Set(int eighth, const double* rows, std::ptrdiff_t rowStride, const int* leading)
{
  const std::ptrdiff_t first = std::ptrdiff_t{eighth} * kTerms;
  std::uint64_t* const before = &sums[static_cast<std::size_t>(eighth) * (n + std::size_t{1})];
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    double* const place = digits.data() + begin + i * stride + kTerms + first;
    std::uint64_t sum = 0;
    for (std::ptrdiff_t term = 0; term < kTerms; ++term) {
      place[term] = DigitTiles::kBias + rows[term * rowStride + i];
      sum += std::bit_cast<std::uint64_t>(place[term]);
    }
    before[n + 1 + i] = before[i] + sum;
  }
  leastLeading[static_cast<std::size_t>(eighth)] = *std::min_element(leading, leading + kTerms);
}

void DigitPlanes::Prefetch(int eighth) const
{
  for (std::ptrdiff_t i = 0; i < n; ++i)
    __builtin_prefetch(Plane(static_cast<int>(i)) + std::ptrdiff_t{eighth} * kTerms, 1);
}

}  // namespace varno::solve
