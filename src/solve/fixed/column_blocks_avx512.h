#pragma once

// Sums of columns of digits of eight terms at a time, for columns_avx512.cpp only.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#define VARNO_AVX512 gnu::target("avx512f,avx512dq,avx512ifma")

namespace varno::solve::avx512 {

/// Eight products a[j] b[k-j]: where the first digits of a[j] and b[k-j-7] stand in their first
/// planes, and which of the eight are asked for.
struct Group {
  const double *a, *b;
  __mmask8 asked;
};

/// Groups whose products are summed, from one plane of a factor to the next.
struct Groups {
  const Group* groups;
  std::ptrdiff_t count;
  std::ptrdiff_t doubled;  // so many of the first count twice
  std::ptrdiff_t aStride, bStride;
};

/// Low 52 bits and the bits above of each product are summed by themselves.
inline constexpr int kLowBits = 52;

/// A block is a square of digits i and m of the factors, less the pairs with i + m >= kColumns.
/// Where there are few columns, one block has all.
inline constexpr int kMostSide = 6, kMostColumnsOfOne = 9, kMostColumnsOfSquare = 2 * kMostSide - 1;

// Vectors are named by constants only, or they would not stay in registers.

template <int kColumns>
struct BlockSums {
  __m512i low[kColumns], high[kColumns];
};

template <int kColumns, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void Clear(BlockSums<kColumns>& sums)
{
  if constexpr (kFirst < kColumns) {
    sums.low[kFirst] = sums.high[kFirst] = _mm512_setzero_si512();
    Clear<kColumns, kFirst + 1>(sums);
  }
}

template <int kColumns, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void Double(BlockSums<kColumns>& sums)
{
  if constexpr (kFirst < kColumns) {
    sums.low[kFirst] = _mm512_add_epi64(sums.low[kFirst], sums.low[kFirst]);
    sums.high[kFirst] = _mm512_add_epi64(sums.high[kFirst], sums.high[kFirst]);
    Double<kColumns, kFirst + 1>(sums);
  }
}

template <int kSide>
struct Digits {
  __m512i vectors[kSide];
};

template <int kSide, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void Load(Digits<kSide>& digits, __mmask8 asked,
                                                      const double* place, std::ptrdiff_t stride)
{
  if constexpr (kFirst < kSide) {
    digits.vectors[kFirst] = _mm512_castpd_si512(_mm512_maskz_loadu_pd(asked, place));
    Load<kSide, kFirst + 1>(digits, asked, place + stride, stride);
  }
}

/// The digit m of b times the digits i = kFirst.. of a.
template <int kColumns, int m, int kSide, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void AddProducts(BlockSums<kColumns>& sums,
                                                             const Digits<kSide>& a, __m512i b)
{
  if constexpr (kFirst < kSide && kFirst + m < kColumns) {
    __m512i &low = sums.low[kFirst + m], &high = sums.high[kFirst + m];
    low = _mm512_madd52lo_epu64(low, a.vectors[kFirst], b);
    high = _mm512_madd52hi_epu64(high, a.vectors[kFirst], b);
    AddProducts<kColumns, m, kSide, kFirst + 1>(sums, a, b);
  }
}

/// The digits m = kFirst.. of b, whose terms come backwards, times all of a.
template <int kColumns, int kSide, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void AddDigits(BlockSums<kColumns>& sums,
                                                           const Digits<kSide>& a, const double* b,
                                                           std::ptrdiff_t stride)
{
  if constexpr (kFirst < kSide) {
    const __m512i backwards = _mm512_setr_epi64(7, 6, 5, 4, 3, 2, 1, 0);
    const __m512i digits =
        _mm512_permutexvar_epi64(backwards, _mm512_castpd_si512(_mm512_loadu_pd(b)));
    AddProducts<kColumns, kFirst>(sums, a, digits);
    AddDigits<kColumns, kSide, kFirst + 1>(sums, a, b + stride, stride);
  }
}

template <int kSide, int kColumns>
[[VARNO_AVX512, gnu::always_inline]] inline void AddGroups(BlockSums<kColumns>& sums,
                                                           const Groups& all, std::ptrdiff_t first,
                                                           std::ptrdiff_t end, std::ptrdiff_t aSkip,
                                                           std::ptrdiff_t bSkip)
{
  for (std::ptrdiff_t g = first; g < end; ++g) {
    const Group& group = all.groups[g];
    Digits<kSide> a;
    Load(a, group.asked, group.a + aSkip, all.aStride);
    AddDigits<kColumns>(sums, a, group.b + bSkip, all.bStride);
  }
}

/// The sums of pairs of neighbouring lanes, by turns of x and y.
[[VARNO_AVX512, gnu::always_inline]] inline __m512i SumsOfPairs(__m512i x, __m512i y)
{
  return _mm512_add_epi64(_mm512_unpacklo_epi64(x, y), _mm512_unpackhi_epi64(x, y));
}

/// The same of neighbouring pairs of lanes, those of x first.
[[VARNO_AVX512, gnu::always_inline]] inline __m512i SumsOfQuarters(__m512i x, __m512i y)
{
  return _mm512_add_epi64(_mm512_shuffle_i64x2(x, y, 0x88), _mm512_shuffle_i64x2(x, y, 0xdd));
}

/// The same of up to four vectors: the first two numbers are those of the lower halves.
template <int kCount>
[[VARNO_AVX512, gnu::always_inline]] inline __m512i SumsOfLanesInHalf(const __m512i* v)
{
  const __m512i zero = _mm512_setzero_si512();
  const __m512i first = SumsOfPairs(v[0], kCount > 1 ? v[kCount > 1 ? 1 : 0] : zero);
  if constexpr (kCount <= 2) return SumsOfQuarters(first, zero);
  return SumsOfQuarters(
      first, SumsOfPairs(v[kCount > 2 ? 2 : 0], kCount > 3 ? v[kCount > 3 ? 3 : 0] : zero));
}

/// The sums of the lanes of each of up to eight vectors.
template <int kCount>
[[VARNO_AVX512, gnu::always_inline]] inline __m512i SumsOfLanes(const __m512i* v)
{
  const __m512i zero = _mm512_setzero_si512();
  if constexpr (kCount > 4)
    return SumsOfQuarters(SumsOfLanesInHalf<4>(v), SumsOfLanesInHalf<kCount - 4>(v + 4));
  return SumsOfQuarters(SumsOfLanesInHalf<kCount>(v), zero);
}

/// Adds the sums of the lanes of vectors to as many numbers, and 0 to some behind these.
template <int kCount>
[[VARNO_AVX512, gnu::always_inline]] inline void AddSumsOfLanes(const __m512i* v,
                                                                std::uint64_t* sums)
{
  constexpr int kAtOnce = std::min(kCount, 8);
  _mm512_storeu_si512(sums, _mm512_add_epi64(_mm512_loadu_si512(sums), SumsOfLanes<kAtOnce>(v)));
  if constexpr (kCount > 8) AddSumsOfLanes<kCount - 8>(v + 8, sums + 8);
}

/// Adds a block that begins so many values behind the first digits of each group to the sums of
/// its columns.
template <int kSide, int kColumns>
[[VARNO_AVX512]] void SumBlock(const Groups& all, std::ptrdiff_t aSkip, std::ptrdiff_t bSkip,
                               std::uint64_t* lows, std::uint64_t* highs)
{
  BlockSums<kColumns> sums;
  Clear(sums);
  AddGroups<kSide>(sums, all, 0, all.doubled, aSkip, bSkip);
  if (all.doubled > 0) Double(sums);
  AddGroups<kSide>(sums, all, all.doubled, all.count, aSkip, bSkip);
  AddSumsOfLanes<kColumns>(sums.low, lows);
  AddSumsOfLanes<kColumns>(sums.high, highs);
}

}  // namespace varno::solve::avx512
