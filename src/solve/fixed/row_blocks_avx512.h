#pragma once

// Sums of columns of digits for eight rows at a time, for rows_ahead.cpp only.

#include <cstddef>

#include "solve/fixed/column_blocks_avx512.h"

namespace varno::solve::avx512 {

/// A number for each of eight rows
struct ByRow {
  __m512i numbers;
};

/// The products of eight terms j = 8 t..8 t + 7 of a with those of b that they meet in eight rows
/// k = k0..k0 + 7: the first digits that are asked for of the terms 8 t and k0 - 8 t; and by j - 8
/// t the rows in which it is asked for.
struct RowGroup {
  const double *a, *b;
  const __mmask8* asked;
};

struct RowGroups {
  const RowGroup* groups;
  std::ptrdiff_t count;
  std::ptrdiff_t aStride, bStride;  // from one digit to the next
};

/// Digits kFirst.. of b, by rows
template <int kSide, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void LoadRows(Digits<kSide>& digits, __mmask8 asked,
                                                          const double* b, std::ptrdiff_t stride)
{
  if constexpr (kFirst < kSide) {
    digits.vectors[kFirst] = _mm512_castpd_si512(_mm512_maskz_loadu_pd(asked, b + kFirst * stride));
    LoadRows<kSide, kFirst + 1>(digits, asked, b, stride);
  }
}

/// Digits kFirst.. of a, the same in all rows, times all of b
template <int kColumns, int kSide, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void AddTerm(BlockSums<kColumns>& sums,
                                                         const Digits<kSide>& b, const double* a,
                                                         std::ptrdiff_t stride)
{
  if constexpr (kFirst < kSide) {
    AddProducts<kColumns, kFirst>(sums, b, _mm512_castpd_si512(_mm512_set1_pd(a[kFirst * stride])));
    AddTerm<kColumns, kSide, kFirst + 1>(sums, b, a, stride);
  }
}

template <int kColumns, int kFirst = 0>
[[VARNO_AVX512, gnu::always_inline]] inline void AddTo(const BlockSums<kColumns>& sums, ByRow* lows,
                                                       ByRow* highs)
{
  if constexpr (kFirst < kColumns) {
    __m512i &low = lows[kFirst].numbers, &high = highs[kFirst].numbers;
    low = _mm512_add_epi64(low, sums.low[kFirst]);
    high = _mm512_add_epi64(high, sums.high[kFirst]);
    AddTo<kColumns, kFirst + 1>(sums, lows, highs);
  }
}

/// Adds the block of the digits i of b and m of a on of each group to the sums of its columns.
template <int kSide, int kColumns>
[[VARNO_AVX512]] void SumRowBlock(const RowGroups& all, int i, int m, ByRow* lows, ByRow* highs)
{
  BlockSums<kColumns> sums;
  Clear(sums);
  for (std::ptrdiff_t g = 0; g < all.count; ++g) {
    const RowGroup& group = all.groups[g];
    const double *a = group.a + m * all.aStride, *b = group.b + i * all.bStride;
    for (int term = 0; term < DigitTiles::kTerms; ++term) {
      Digits<kSide> digits;
      LoadRows(digits, group.asked[term], b - term, all.bStride);
      AddTerm<kColumns>(sums, digits, a + term, all.aStride);
    }
  }
  AddTo(sums, lows, highs);
}

}  // namespace varno::solve::avx512
