#pragma once

// Sums of products of rows of digits, and their way into a term, in registers of AVX-512: for
// columns_avx512.cpp and rows_ahead.cpp only.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "solve/fixed/column_blocks_avx512.h"
#include "solve/fixed/columns.h"
#include "solve/fixed/split_products.h"

namespace varno::solve::avx512 {

inline constexpr int kLanes = 8;
/// Registers hold the sums of 32 columns.
inline constexpr int kMostVectors = 4;

/// From element s on: l - 8 + s for the lanes l. Those below 0 stand for a 0 in permutations.
inline constexpr std::array<std::int64_t, std::size_t{2}* kLanes> kPlacesOfLanes = [] {
  std::array<std::int64_t, std::size_t{2} * kLanes> places{};
  for (int i = 0; i < 2 * kLanes; ++i) places[static_cast<std::size_t>(i)] = i - kLanes;
  return places;
}();

/// How many vectors these columns take.
inline int VectorsFor(int columns)
{
  return (std::max(1, columns) + kLanes - 1) / kLanes;
}

/// What a function template returns for so many vectors; false if they are more than registers
/// hold.
template <class Function>
bool ForVectors(int vectors, const Function& function)
{
  static_assert(kMostVectors == 4);
  switch (vectors) {
    case 1:
      return function.template operator()<1>();
    case 2:
      return function.template operator()<2>();
    case 3:
      return function.template operator()<3>();
    case 4:
      return function.template operator()<4>();
    default:
      return false;
  }
}

inline constexpr __mmask8 kFirstLane = 0x01, kLastLane = 0x80;

/// The lanes of which the places first + l are 0..count - 1
[[VARNO_AVX512, gnu::always_inline]] inline __mmask8 LanesWithin(int first, int count)
{
  const __m512i places =
      _mm512_add_epi64(_mm512_loadu_si512(&kPlacesOfLanes[kLanes]), _mm512_set1_epi64(first));
  return _mm512_cmplt_epu64_mask(places, _mm512_set1_epi64(count));
}

/// Digits of a sum, as ColumnKernel counts them: lane l of vector v, from the last one on, is digit
/// end - 8 (v + 1) + l. Behind these is the digit `end`, in the last lane of a vector.
template <int kVectors>
struct RowDigits {
  __m512i vectors[kVectors];
  __m512i behind;
  int end;

  /// The digit of the first lane
  int First(int v) const { return end - kLanes * (v + 1); }
};

[[VARNO_AVX512, gnu::always_inline]] inline __m512i CarriesOf(__m512i digits)
{
  return _mm512_srai_epi64(_mm512_add_epi64(digits, _mm512_set1_epi64(wide::kHalfDigit)),
                           kWideDigitBits);
}

/// Carries each digit to the one before. False if that does not do: one is not balanced then, or
/// there is a carry to a digit before the first.
template <int kVectors>
[[VARNO_AVX512, gnu::always_inline]] inline bool CarryOnce(RowDigits<kVectors>& digits)
{
  const __m512i carry = CarriesOf(digits.behind);
  digits.behind = _mm512_sub_epi64(digits.behind, _mm512_slli_epi64(carry, kWideDigitBits));
  digits.vectors[0] = _mm512_mask_add_epi64(digits.vectors[0], kLastLane, digits.vectors[0], carry);
  __m512i carriesBehind = _mm512_setzero_si512();
  int carried = 0;
  for (int v = 0; v < kVectors; ++v) {
    __m512i& vector = digits.vectors[v];
    const __m512i carries = CarriesOf(vector);
    const __m512i rests = _mm512_sub_epi64(vector, _mm512_slli_epi64(carries, kWideDigitBits));
    vector = _mm512_add_epi64(rests, _mm512_alignr_epi64(carriesBehind, carries, 1));
    const __m512i more = CarriesOf(vector);
    carried |= _mm512_test_epi64_mask(more, more);
    carriesBehind = carries;
  }
  return (carried | _mm512_mask_test_epi64_mask(kFirstLane, carriesBehind, carriesBehind)) == 0;
}

/// Stores digits of which that of lane 0 has the place `first` in a row of n, and zeros around
/// them.
[[VARNO_AVX512, gnu::always_inline]] inline void StoreShortRow(__m512i digits, int first,
                                                               double* row, int n)
{
  // A mask would keep the store from being read again soon.
  const __m512i lanes =
      _mm512_sub_epi64(_mm512_loadu_si512(&kPlacesOfLanes[kLanes]), _mm512_set1_epi64(first));
  const __mmask8 inside = _mm512_cmplt_epu64_mask(lanes, _mm512_set1_epi64(kLanes)) &
                          static_cast<__mmask8>((1U << static_cast<unsigned>(n)) - 1);
  _mm512_storeu_pd(row, _mm512_maskz_permutexvar_pd(inside, lanes, _mm512_cvtepi64_pd(digits)));
}

/// The same of any number, of which digit c has the place c + `place`.
template <int kVectors>
[[VARNO_AVX512, gnu::always_inline]] inline void StoreRow(const RowDigits<kVectors>& digits,
                                                          int place, double* row, int n)
{
  if (digits.First(kVectors - 1) + place > 0 || digits.end + place + 1 < n) {
    for (int i = 0; i < n; i += kLanes)
      _mm512_mask_storeu_pd(row + i, LanesWithin(i, n), _mm512_setzero_pd());
  }
  for (int v = 0; v < kVectors; ++v) {
    const int first = digits.First(v) + place;
    _mm512_mask_storeu_pd(row + first, LanesWithin(first, n),
                          _mm512_cvtepi64_pd(digits.vectors[v]));
  }
}

/// Stores a sum, whose digit c stands at the place c + `place`, as term k of a settled series.
/// False, and nothing is stored, if WideTerms::SetSettled would not, or a carry goes on and on.
template <int kVectors>
[[VARNO_AVX512, gnu::always_inline]] inline bool StoreDigits(RowDigits<kVectors> digits,
                                                             WideTerms& terms, int k, int place)
{
  if (!CarryOnce(digits)) return false;
  unsigned there = 0;
  for (int v = 0; v < kVectors; ++v) {
    const unsigned lanes = _mm512_test_epi64_mask(digits.vectors[v], digits.vectors[v]);
    there |= lanes << (kLanes * (kVectors - 1 - v));
  }
  const int leading = digits.First(kVectors - 1) + std::countr_zero(there) + place;
  if (there == 0 || leading < 0 || leading >= terms.n) return false;
  double* const row = terms.BeginSettled(k, leading);
  if (kVectors == 1 && terms.n <= kLanes) {
    StoreShortRow(digits.vectors[0], digits.First(0) + place, row, terms.n);
  } else {
    StoreRow(digits, place, row, terms.n);
  }
  const int behind = digits.end + place;
  if (behind < terms.n)
    _mm512_mask_storeu_pd(row + behind - (kLanes - 1), kLastLane,
                          _mm512_cvtepi64_pd(digits.behind));
  terms.EndSettled(k);
  return true;
}

/// Sums of row products in the last 8 kVectors columns before an end: as those of AVX2 are made, by
/// eight digits at a time.
template <int kVectors>
class RowSums {
 public:
  [[VARNO_AVX512, gnu::always_inline]] explicit RowSums(int end) : end(end)
  {
    for (int v = 0; v < kVectors; ++v) {
      highs[v] = lows[v] = _mm512_setzero_si512();
      counts[v] = 0;
    }
  }

  /// None of its columns may be before that of the first lane.
  [[VARNO_AVX512, gnu::always_inline]] void Add(const RowProduct& product)
  {
    const int reached = end - product.column, rows = std::min(product.xCount, reached);
    if (rows <= 0) return;
    if constexpr (kVectors == 1) {
      counts[0] += static_cast<unsigned>(rows);
      AddMovedRows(product.x, product.x + rows, product.y, reached);
    } else {
      for (int v = 0; v < kVectors; ++v)
        counts[v] += static_cast<unsigned>(std::clamp(reached - kLanes * v, 0, rows));
      AddRows<kVectors>(product.x, product.x + rows, product.y, reached);
    }
  }

  /// Doubles what there is.
  [[VARNO_AVX512, gnu::always_inline]] void Double()
  {
    for (int v = 0; v < kVectors; ++v) {
      highs[v] = _mm512_add_epi64(highs[v], highs[v]);
      lows[v] = _mm512_add_epi64(lows[v], lows[v]);
      counts[v] *= 2;
    }
  }

  /// The digits, not balanced yet: the high part of a column stands with the low part of the one
  /// before.
  [[VARNO_AVX512, gnu::always_inline]] RowDigits<kVectors> Digits() const
  {
    RowDigits<kVectors> digits;
    __m512i sumsOfLows[kVectors + 1];
    sumsOfLows[kVectors] = _mm512_setzero_si512();
    for (int v = 0; v < kVectors; ++v)
      sumsOfLows[v] = _mm512_sub_epi64(lows[v], Patterns(counts[v], kLowPattern));
    for (int v = 0; v < kVectors; ++v) {
      const __m512i ofHighs = _mm512_sub_epi64(highs[v], Patterns(counts[v], kHighPattern));
      digits.vectors[v] = _mm512_add_epi64(
          ofHighs, _mm512_alignr_epi64(sumsOfLows[v], sumsOfLows[v + 1], kLanes - 1));
    }
    digits.behind = sumsOfLows[0];
    digits.end = end;
    return digits;
  }

 private:
  /// The digits from x on times those from y on: the first meets `reached` of these, each further
  /// one a digit less. Of one vector these are in a register, and move there: that is faster than
  /// to read them again.
  [[VARNO_AVX512, gnu::always_inline]] void AddMovedRows(const double* x, const double* xEnd,
                                                         const double* y, int reached)
  {
    const auto asked = static_cast<__mmask8>((1U << static_cast<unsigned>(reached)) - 1);
    const __m512d digits = _mm512_maskz_loadu_pd(asked, y);
    for (; x != xEnd; ++x, --reached) {
      const __m512i places = _mm512_loadu_si512(&kPlacesOfLanes[static_cast<std::size_t>(reached)]);
      const __m512d moved = _mm512_permutex2var_pd(digits, places, _mm512_setzero_pd());
      AddDigit<1>(_mm512_set1_pd(*x), moved, nullptr);
    }
  }

  /// The same in kCount vectors and fewer.
  template <int kCount>
  [[VARNO_AVX512, gnu::always_inline]] void AddRows(const double* x, const double* xEnd,
                                                    const double* y, int reached)
  {
    for (; reached > kLanes * (kCount - 1) && x != xEnd; --reached, ++x) {
      const double* const first = y + reached - std::ptrdiff_t{kLanes} * kCount;
      const auto asked = static_cast<__mmask8>(0xff << (kLanes * kCount - reached));
      AddDigit<kCount>(_mm512_set1_pd(*x), _mm512_maskz_loadu_pd(asked, first), first);
    }
    if constexpr (kCount > 1) AddRows<kCount - 1>(x, xEnd, y, reached);
  }

  /// A digit times those in the first of kCount vectors, and those behind.
  template <int kCount>
  [[VARNO_AVX512, gnu::always_inline]] void AddDigit(__m512d x, __m512d digits, const double* first)
  {
    const __m512d high = _mm512_fmadd_pd(x, digits, _mm512_set1_pd(kHigh));
    const __m512d rest = _mm512_sub_pd(_mm512_set1_pd(kHigh + kLow), high);
    const __m512d low = _mm512_fmadd_pd(x, digits, rest);
    highs[kCount - 1] = _mm512_add_epi64(highs[kCount - 1], _mm512_castpd_si512(high));
    lows[kCount - 1] = _mm512_add_epi64(lows[kCount - 1], _mm512_castpd_si512(low));
    if constexpr (kCount > 1)
      AddDigit<kCount - 1>(x, _mm512_loadu_pd(first + kLanes), first + kLanes);
  }

  /// What the constants have added
  [[VARNO_AVX512, gnu::always_inline]] static __m512i Patterns(std::uint64_t count,
                                                               std::uint64_t pattern)
  {
    const std::uint64_t patterns = count * pattern;
    return _mm512_set1_epi64(static_cast<long long>(patterns));
  }

  int end;
  std::uint64_t counts[kVectors];  // of products in each lane
  __m512i highs[kVectors], lows[kVectors];
};

}  // namespace varno::solve::avx512
