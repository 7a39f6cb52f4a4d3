#include "solve/fixed/digit_tiles.h"

#include <algorithm>

namespace varno::solve {

void DigitTiles::Reserve(int digitCount, int count)
{
  n = digitCount;
  const int tiles = (count + kTerms - 1) / kTerms + 2;
  Digits zeros;
  zeros.ofTerms.fill(kBias);
  digits.assign(static_cast<std::size_t>(tiles) * (std::size_t{1} + n), zeros);
  sumStride = n + 1;
  // They are read eight at a time.
  sums.assign(static_cast<std::size_t>((count + 1) * sumStride + kTerms), 0);
  leastLeading.assign(static_cast<std::size_t>(count) + kTerms, n);
}

void DigitTiles::Prefetch(int k) const
{
  const double* const place = Tile(k / kTerms, 0);
  for (std::ptrdiff_t i = 0; i < n; ++i) __builtin_prefetch(place + i * kTerms, 1);
  const std::uint64_t* const with = SumsBefore(k + 1);
  for (std::ptrdiff_t i = 0; i < sumStride; i += kTerms) __builtin_prefetch(with + i, 1);
  __builtin_prefetch(&leastLeading[static_cast<std::size_t>(k)], 1);
}

void DigitTiles::Set(int k, const double* newDigits, int leading)
{
  const std::size_t term = static_cast<std::size_t>(k) % kTerms;
  Digits* const place = &digits[(static_cast<std::size_t>(k) / kTerms + 1) * (std::size_t{1} + n)];
  const std::uint64_t* const before = SumsBefore(k);
  std::uint64_t* const with = sums.data() + (k + 1) * sumStride;
  for (int i = 0; i < n; ++i) {
    const double value = kBias + newDigits[i];
    place[i].ofTerms[term] = value;
    with[i] = before[i] + std::bit_cast<std::uint64_t>(value);
  }
  with[n] = before[n] + kBiasPattern;
  int* const windows = &leastLeading[static_cast<std::size_t>(k)];  // of k - 7
  for (int i = 0; i < kTerms - 1; ++i)
    windows[i] = k == 0 ? leading : std::min(windows[i], leading);
  windows[kTerms - 1] = leading;
}

}  // namespace varno::solve
