#pragma once

// Sums of columns of digits of eight terms at a time, for what is compiled for AVX-512 only.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

// g++ 12 warns of its own header, whose _mm512_undefined_epi32 has no value on purpose.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#include "solve/fixed/digit_tiles.h"

#define VARNO_AVX512 gnu::target("avx512f,avx512dq,avx512ifma")

namespace varno::solve::avx512 {

/// Eight products a[j] b[k-j], j = 8 t..8 t + 7: the first digits that are asked for of these terms
/// of a, and of the terms of b from the tile on which that of k - 8 t - 7 stands in; and which of
/// the eight are asked for.
struct Group {
  const double *a, *b;
  __mmask8 asked;
};

/// Groups whose products are summed.
struct Groups {
  const Group* groups;
  std::ptrdiff_t count;
  std::ptrdiff_t doubled;  // so many of the first count twice
  std::ptrdiff_t bStride;  // from one tile of b to the next
  int bPlace;              // of the term k - 8 t - 7 in its tile
};

/// A block is a square of digits i and m of the factors, less the pairs with i + m >= kColumns.
/// Where there are few columns, one block has all.
inline constexpr int kMostSide = 6, kMostColumnsOfOne = 9, kMostColumnsOfSquare = 2 * kMostSide - 1;

/// Functions that sum a block of each group, by the number of columns: all of them, and those of a
/// square.
template <class SumBlockFunction>
struct BlockFunctions {
  std::array<SumBlockFunction, kMostColumnsOfOne> ofAll;
  std::array<SumBlockFunction, kMostColumnsOfSquare> ofSquare;
};

/// Adds the products of all groups to the sums of so many columns, block by block.
template <class SumBlockFunction, class AllGroups, class Number>
void SumBlocks(const BlockFunctions<SumBlockFunction>& functions, const AllGroups& all, int columns,
               Number* lows, Number* highs)
{
  if (columns <= kMostColumnsOfOne) {
    functions.ofAll[columns - 1](all, 0, 0, lows, highs);
    return;
  }
  for (int i = 0; i < columns; i += kMostSide) {
    for (int m = 0; i + m < columns; m += kMostSide) {
      const int count = std::min(columns - i - m, kMostColumnsOfSquare);
      functions.ofSquare[count - 1](all, i, m, lows + i + m, highs + i + m);
    }
  }
}

// Vectors are named by constants only, or they would not stay in registers.

/// The low 52 bits and the bits above of each product are summed by themselves.
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

inline constexpr std::ptrdiff_t kDigitStride = DigitTiles::kTerms;

template <int kSide, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void Load(Digits<kSide>& digits, __mmask8 asked,
                                                      const double* a)
{
  if constexpr (kFirst < kSide) {
    digits.vectors[kFirst] =
        _mm512_castpd_si512(_mm512_maskz_loadu_pd(asked, a + kFirst * kDigitStride));
    Load<kSide, kFirst + 1>(digits, asked, a);
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

/// The digits m = kFirst.. of b times all of a. Terms of b are picked backwards from two tiles.
template <int kColumns, int kSide, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void AddDigits(BlockSums<kColumns>& sums,
                                                           const Digits<kSide>& a, const double* b,
                                                           std::ptrdiff_t stride, __m512i picked)
{
  if constexpr (kFirst < kSide) {
    const double* const place = b + kFirst * kDigitStride;
    const __m512i digits = _mm512_castpd_si512(
        _mm512_permutex2var_pd(_mm512_loadu_pd(place), picked, _mm512_loadu_pd(place + stride)));
    AddProducts<kColumns, kFirst>(sums, a, digits);
    AddDigits<kColumns, kSide, kFirst + 1>(sums, a, b, stride, picked);
  }
}

template <int kSide, int kColumns>
[[VARNO_AVX512, gnu::always_inline]] inline void AddGroups(BlockSums<kColumns>& sums,
                                                           const Groups& all, std::ptrdiff_t first,
                                                           std::ptrdiff_t end, int i, int m)
{
  const __m512i picked = _mm512_sub_epi64(_mm512_set1_epi64(all.bPlace + DigitTiles::kTerms - 1),
                                          _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 6, 7));
  for (std::ptrdiff_t g = first; g < end; ++g) {
    const Group& group = all.groups[g];
    Digits<kSide> a;
    Load(a, group.asked, group.a + i * kDigitStride);
    AddDigits<kColumns>(sums, a, group.b + m * kDigitStride, all.bStride, picked);
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

/// Adds the block of the digits i and m on of each group to the sums of its columns.
template <int kSide, int kColumns>
[[VARNO_AVX512]] void SumBlock(const Groups& all, int i, int m, std::uint64_t* lows,
                               std::uint64_t* highs)
{
  BlockSums<kColumns> sums;
  Clear(sums);
  AddGroups<kSide>(sums, all, 0, all.doubled, i, m);
  if (all.doubled > 0) Double(sums);
  AddGroups<kSide>(sums, all, all.doubled, all.count, i, m);
  AddSumsOfLanes<kColumns>(sums.low, lows);
  AddSumsOfLanes<kColumns>(sums.high, highs);
}

}  // namespace varno::solve::avx512
