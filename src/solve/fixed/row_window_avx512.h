#pragma once

// Sums of products of rows whose digits all stand in eight neighbouring places, and their way into
// a term, in registers of AVX-512: for columns_avx512.cpp and rows_ahead.cpp only.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "solve/fixed/column_blocks_avx512.h"
#include "solve/fixed/columns.h"
#include "solve/fixed/split_products.h"

namespace varno::solve::avx512 {

inline constexpr int kWindow = 8;

/// From element kWindow - s on: l - s for the lanes l.
inline constexpr std::array<std::int64_t, std::size_t{2}* kWindow> kPlacesOfLanes = [] {
  std::array<std::int64_t, std::size_t{2} * kWindow> places{};
  for (int i = 0; i < 2 * kWindow; ++i) places[static_cast<std::size_t>(i)] = i - kWindow;
  return places;
}();

[[VARNO_AVX512, gnu::always_inline]] inline __m512i CarriesOf(__m512i digits)
{
  return _mm512_srai_epi64(_mm512_add_epi64(digits, _mm512_set1_epi64(wide::kHalfDigit)),
                           kWideDigitBits);
}

/// Stores digits of a sum as term k of a settled series of at most kWindow digits: that of lane l
/// at the place first + l. False, and nothing is stored, if WideTerms::SetSettled would not, or a
/// carry goes on and on.
[[VARNO_AVX512, gnu::always_inline]] inline bool StoreDigits(__m512i sums, int first,
                                                             WideTerms& terms, int k)
{
  const __m512i zero = _mm512_setzero_si512();
  const __m512i carries = CarriesOf(sums);
  const __m512i rests = _mm512_sub_epi64(sums, _mm512_slli_epi64(carries, kWideDigitBits));
  const __m512i digits = _mm512_add_epi64(rests, _mm512_alignr_epi64(zero, carries, 1));
  const __m512i more = CarriesOf(digits);
  constexpr __mmask8 kFirstLane = 1;
  const int carried = _mm512_test_epi64_mask(more, more) |
                      _mm512_mask_test_epi64_mask(kFirstLane, carries, carries);
  const unsigned there = _mm512_test_epi64_mask(digits, digits);
  if (carried != 0 || there == 0) return false;
  const int leading = first + std::countr_zero(there);
  if (leading < 0 || leading >= terms.n) return false;
  const __m512i lanes =
      _mm512_sub_epi64(_mm512_loadu_si512(&kPlacesOfLanes[kWindow]), _mm512_set1_epi64(first));
  const __mmask8 inside = _mm512_cmplt_epu64_mask(lanes, _mm512_set1_epi64(kWindow)) &
                          static_cast<__mmask8>((1U << static_cast<unsigned>(terms.n)) - 1);
  const __m512d row = _mm512_maskz_permutexvar_pd(inside, lanes, _mm512_cvtepi64_pd(digits));
  _mm512_storeu_pd(terms.BeginSettled(k, leading), row);
  terms.EndSettled(k);
  return true;
}

/// A sum of row products in columns before `columns`, of which lane l is the digit First() + l, as
/// ColumnKernel counts them.
class RowWindow {
 public:
  /// With the digit behind the last column, or with its carry only
  [[VARNO_AVX512, gnu::always_inline]] RowWindow(int columns, bool withLastDigit)
      : first(columns - kWindow + (withLastDigit ? 1 : 0)),
        asked(withLastDigit ? kAllButLast : kAll),
        highs(_mm512_setzero_si512()),
        lows(highs)
  {}

  int First() const { return first; }

  /// False, and nothing is added, if it stands in columns before, too.
  [[VARNO_AVX512, gnu::always_inline]] bool Add(const RowProduct& product)
  {
    const int shift = product.column - first;
    if (shift < 0) return false;
    if (shift >= kWindow) return true;
    const __m512d y = _mm512_maskz_loadu_pd(asked >> shift, product.y);
    const int rows = std::min(product.xCount, kWindow - shift);
    const std::int64_t* places = &kPlacesOfLanes[static_cast<std::size_t>(kWindow - shift)];
    for (int i = 0; i < rows; ++i, --places) AddRow(product.x[i], y, places);
    return true;
  }

  /// Doubles what there is.
  [[VARNO_AVX512, gnu::always_inline]] void Double()
  {
    highs = _mm512_add_epi64(highs, highs);
    lows = _mm512_add_epi64(lows, lows);
    count *= 2;
  }

  /// Digits of this sum and another one, which has that behind the last lane, too.
  [[VARNO_AVX512, gnu::always_inline]] __m512i Digits(__m512i others, std::int64_t behind) const
  {
    const __m512i high = _mm512_sub_epi64(highs, Patterns(kHighPattern));
    __m512i low = _mm512_sub_epi64(lows, Patterns(kLowPattern));
    low = _mm512_mask_add_epi64(low, kLast, low, _mm512_set1_epi64(behind));
    const __m512i carry = _mm512_maskz_mov_epi64(kLast, CarriesOf(low));
    const __m512i shifted = _mm512_alignr_epi64(low, _mm512_setzero_si512(), kWindow - 1);
    return _mm512_add_epi64(_mm512_add_epi64(high, shifted), _mm512_add_epi64(carry, others));
  }

 private:
  static constexpr __mmask8 kAll = 0xff, kAllButLast = 0x7f, kLast = 0x80;

  /// A digit times those of y, which move as the places tell.
  [[VARNO_AVX512, gnu::always_inline]] void AddRow(double digit, __m512d y,
                                                   const std::int64_t* places)
  {
    const __m512d x = _mm512_set1_pd(digit);
    const __m512d moved =
        _mm512_maskz_permutex2var_pd(asked, y, _mm512_loadu_si512(places), _mm512_setzero_pd());
    const __m512d high = _mm512_fmadd_pd(x, moved, _mm512_set1_pd(kHigh));
    const __m512d rest = _mm512_sub_pd(_mm512_set1_pd(kHigh + kLow), high);
    const __m512d low = _mm512_fmadd_pd(x, moved, rest);
    highs = _mm512_add_epi64(highs, _mm512_castpd_si512(high));
    lows = _mm512_add_epi64(lows, _mm512_castpd_si512(low));
    ++count;
  }

  /// What the constants have added
  [[VARNO_AVX512, gnu::always_inline]] __m512i Patterns(std::uint64_t pattern) const
  {
    const std::uint64_t patterns = count * pattern;
    return _mm512_set1_epi64(static_cast<long long>(patterns));
  }

  int first;
  __mmask8 asked;
  std::uint64_t count = 0;
  __m512i highs, lows;  // of the columns from that of the first digit on
};

}  // namespace varno::solve::avx512
