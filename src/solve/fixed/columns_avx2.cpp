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

/// The running sums of one column, high parts apart.
struct Sums {
  __m256i high, low;
  int products = 0;  ///< in each sum, with those of empty lanes
};

[[gnu::target("avx2,fma")]] inline void AddProducts(Sums& sums, __m256d x, __m256d y)
{
  const __m256d high = _mm256_fmadd_pd(x, y, _mm256_set1_pd(kHigh));
  const __m256d rest = _mm256_sub_pd(_mm256_set1_pd(kHigh + kLow), high);
  const __m256d low = _mm256_fmadd_pd(x, y, rest);
  sums.high = _mm256_add_epi64(sums.high, _mm256_castpd_si256(high));
  sums.low = _mm256_add_epi64(sums.low, _mm256_castpd_si256(low));
}

[[gnu::target("avx2,fma")]] inline void AddPlanes(Sums& sums, const double* x, const double* y,
                                                  int count)
{
  int j = 0;
  for (; j + kLanes <= count; j += kLanes)
    AddProducts(sums, _mm256_loadu_pd(x + j), _mm256_loadu_pd(y + j));
  if (j < count) {
    const __m256i mask = MaskOf(count - j);
    AddProducts(sums, _mm256_maskload_pd(x + j, mask), _mm256_maskload_pd(y + j, mask));
    j += kLanes;
  }
  sums.products += j;
}

[[gnu::target("avx2,fma")]] inline void Flush(Sums& sums, Int128* columns, int c)
{
  const auto count = static_cast<std::uint64_t>(sums.products);
  const auto high = static_cast<std::int64_t>(static_cast<std::uint64_t>(SumOfLanes(sums.high)) -
                                              count * kHighPattern);
  const auto low = static_cast<std::int64_t>(static_cast<std::uint64_t>(SumOfLanes(sums.low)) -
                                             count * kLowPattern);
  columns[c] += (static_cast<Int128>(high) << kWideDigitBits) + low;
  sums.high = sums.low = _mm256_setzero_si256();
  sums.products = 0;
}

[[gnu::target("avx2,fma")]] void SumColumnsByVectors(const WideTerms& a, const WideTerms& b,
                                                     int first, int last, int k, Int128* columns)
{
  const int n = a.n;
  Sums sums;
  sums.high = sums.low = _mm256_setzero_si256();
  for (int c = 0; c <= n; ++c) {
    columns[c] = 0;
    for (int i = std::max(0, c - n + 1); i <= std::min(c, n - 1); ++i) {
      // Digits that are 0 in all higher terms need not be multiplied: precision falls with the
      // order by itself.
      const int from = std::max(first, k - b.last[c - i]), to = std::min(last, a.last[i]);
      const int count = to - from + 1;
      if (count <= 0) continue;
      if (sums.products + count + kLanes > kMostProducts) Flush(sums, columns, c);
      const double* const x = &a.upwards[static_cast<std::size_t>(i) * a.capacity];
      const double* const y =
          &b.downwards[static_cast<std::size_t>(c - i) * b.capacity] + (b.capacity - 1 - k);
      AddPlanes(sums, x + from, y + from, count);
    }
    if (sums.products > 0) Flush(sums, columns, c);
  }
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
