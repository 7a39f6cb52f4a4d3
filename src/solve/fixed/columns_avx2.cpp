#include <algorithm>
#include <array>
#include <bit>

#include "solve/fixed/columns.h"

#if defined(__x86_64__)

#include <immintrin.h>

namespace varno::solve {

namespace {

// A product of two digits has 100 bits. Added to kHigh, it is rounded to a multiple of 2^51, and
// the bit pattern of the sum is that of kHigh plus this multiple; the rest, added to kLow, is an
// integer in the bit pattern of that sum. Patterns are added as integers, and those of the
// constants subtracted once, for each product.
constexpr double kHigh = 0x1.8p103;
constexpr double kLow = 0x1.8p52;
constexpr auto kHighPattern = std::bit_cast<std::uint64_t>(kHigh);
constexpr auto kLowPattern = std::bit_cast<std::uint64_t>(kLow);
/// High and low parts are at most 2^50: so many of them may be added as 64-bit integers.
constexpr int kMostProducts = 8000;

constexpr int kLanes = 4;

[[gnu::target("avx2,fma")]] std::int64_t SumOfLanes(__m256i sums)
{
  alignas(32) std::array<std::uint64_t, kLanes> lanes;
  _mm256_store_si256(reinterpret_cast<__m256i*>(lanes.data()), sums);
  return static_cast<std::int64_t>(lanes[0] + lanes[1] + lanes[2] + lanes[3]);
}

[[gnu::target("avx2,fma")]] __m256i MaskOf(int count)
{
  return _mm256_cmpgt_epi64(_mm256_set1_epi64x(count), _mm256_setr_epi64x(0, 1, 2, 3));
}

constexpr int kMostColumns = 68;
/// So many terms at a time: their digits stay in the first cache.
constexpr int kTileTerms = 64;

/// The running sums of all columns, high parts apart, and how many products each has, with those of
/// empty lanes.
struct Sums {
  __m256i high[kMostColumns], low[kMostColumns];
  int products[kMostColumns];
};

[[gnu::target("avx2,fma")]] inline void AddProducts(__m256i& highs, __m256i& lows, __m256d x,
                                                    __m256d y)
{
  const __m256d high = _mm256_fmadd_pd(x, y, _mm256_set1_pd(kHigh));
  const __m256d rest = _mm256_sub_pd(_mm256_set1_pd(kHigh + kLow), high);
  const __m256d low = _mm256_fmadd_pd(x, y, rest);
  highs = _mm256_add_epi64(highs, _mm256_castpd_si256(high));
  lows = _mm256_add_epi64(lows, _mm256_castpd_si256(low));
}

/// Two neighbouring planes of digits, from the term looked at first.
struct PlanePair {
  const double *first, *second;
};

/// Adds the products of digits i, i + 1 by m, m + 1 of `count` terms to the columns c = i + m,
/// c + 1, c + 2: each digit loaded takes part in two products.
[[gnu::target("avx2,fma")]] inline void AddBlock(Sums& sums, int c, PlanePair x, PlanePair y,
                                                 int count)
{
  __m256i high0 = sums.high[c], high1 = sums.high[c + 1], high2 = sums.high[c + 2];
  __m256i low0 = sums.low[c], low1 = sums.low[c + 1], low2 = sums.low[c + 2];
  int j = 0;
  for (; j + kLanes <= count; j += kLanes) {
    const __m256d x0 = _mm256_loadu_pd(x.first + j), x1 = _mm256_loadu_pd(x.second + j);
    const __m256d y0 = _mm256_loadu_pd(y.first + j), y1 = _mm256_loadu_pd(y.second + j);
    AddProducts(high0, low0, x0, y0);
    AddProducts(high1, low1, x0, y1);
    AddProducts(high1, low1, x1, y0);
    AddProducts(high2, low2, x1, y1);
  }
  if (j < count) {
    const __m256i mask = MaskOf(count - j);
    const __m256d x0 = _mm256_maskload_pd(x.first + j, mask);
    const __m256d x1 = _mm256_maskload_pd(x.second + j, mask);
    const __m256d y0 = _mm256_maskload_pd(y.first + j, mask);
    const __m256d y1 = _mm256_maskload_pd(y.second + j, mask);
    AddProducts(high0, low0, x0, y0);
    AddProducts(high1, low1, x0, y1);
    AddProducts(high1, low1, x1, y0);
    AddProducts(high2, low2, x1, y1);
    j += kLanes;
  }
  sums.high[c] = high0;
  sums.high[c + 1] = high1;
  sums.high[c + 2] = high2;
  sums.low[c] = low0;
  sums.low[c + 1] = low1;
  sums.low[c + 2] = low2;
  sums.products[c] += j;
  sums.products[c + 1] += 2 * j;
  sums.products[c + 2] += j;
}

[[gnu::target("avx2,fma")]] void Clear(Sums& sums, int n)
{
  for (int c = 0; c <= n + 2; ++c) {
    sums.high[c] = sums.low[c] = _mm256_setzero_si256();
    sums.products[c] = 0;
  }
}

[[gnu::target("avx2,fma")]] void Flush(Sums& sums, int n, Int128* columns)
{
  for (int c = 0; c <= n; ++c) {
    if (sums.products[c] == 0) continue;
    const auto count = static_cast<std::uint64_t>(sums.products[c]);
    const auto high = static_cast<std::int64_t>(
        static_cast<std::uint64_t>(SumOfLanes(sums.high[c])) - count * kHighPattern);
    const auto low = static_cast<std::int64_t>(static_cast<std::uint64_t>(SumOfLanes(sums.low[c])) -
                                               count * kLowPattern);
    columns[c] += (static_cast<Int128>(high) << kWideDigitBits) + low;
  }
}

/// Adds the products of the terms begin..end of a.
[[gnu::target("avx2,fma")]] void AddTile(Sums& sums, const WideTerms& a, const WideTerms& b,
                                         int begin, int end, int k)
{
  const int planes = a.PlaneCount();
  for (int i = 0; i < planes; i += 2) {
    // Digits that are 0 in all higher terms need not be multiplied: precision falls with the order
    // by itself.
    const int to = std::min(end, std::max(a.last[i], a.last[i + 1]));
    if (to < begin) continue;
    const double* const x = &a.upwards[static_cast<std::size_t>(i) * a.capacity];
    for (int m = 0; m < planes && i + m <= a.n; m += 2) {
      const int from = std::max(begin, k - std::max(b.last[m], b.last[m + 1]));
      if (from > to) continue;
      const double* const y =
          &b.downwards[static_cast<std::size_t>(m) * b.capacity] + (b.capacity - 1 - k);
      AddBlock(sums, i + m, {x + from, x + a.capacity + from}, {y + from, y + b.capacity + from},
               to - from + 1);
    }
  }
}

[[gnu::target("avx2,fma")]] void SumColumnsByVectors(const WideTerms& a, const WideTerms& b,
                                                     int first, int last, int k, Int128* columns)
{
  const int n = a.n;
  std::fill_n(columns, n + 1, 0);
  Sums sums;
  Clear(sums, n);
  const int mostOfTile = a.PlaneCount() * kTileTerms;
  int most = 0;  // products in any column
  for (int begin = first; begin <= last; begin += kTileTerms) {
    if (most + mostOfTile > kMostProducts) {
      Flush(sums, n, columns);
      Clear(sums, n);
      most = 0;
    }
    AddTile(sums, a, b, begin, std::min(last, begin + kTileTerms - 1), k);
    most += mostOfTile;
  }
  Flush(sums, n, columns);
}

}  // namespace

ColumnKernel VectorColumnKernel()
{
  const bool isThere = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
  return isThere ? SumColumnsByVectors : nullptr;
}

}  // namespace varno::solve

#else

namespace varno::solve {

ColumnKernel VectorColumnKernel()
{
  return nullptr;
}

}  // namespace varno::solve

#endif
