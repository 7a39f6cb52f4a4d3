#pragma once

// Sums of columns of digits in registers of AVX2, for columns_avx2.cpp only.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#include "solve/fixed/columns.h"
#include "solve/fixed/split_products.h"

namespace varno::solve::avx2 {

/// High and low parts are at most 2^50: so many of them may be added as 64-bit integers, and
/// carries to them.
inline constexpr int kMostParts = 8000;

inline constexpr int kLanes = 4;
/// The running sums of up to 4 kVectors columns, the last ones first: lane l of vector v is column
/// end - 4 (v + 1) + l. A digit of one factor meets four digits of the other at a time.
template <int kVectors>
struct Sums {
  __m256i high[kVectors], low[kVectors];
};

// Vectors are named by constants only, or they would not stay in registers.

template <int kCount, int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void Clear(Sums<kVectors>& sums)
{
  if constexpr (kCount > 0) {
    Clear<kCount - 1>(sums);
    sums.high[kCount - 1] = sums.low[kCount - 1] = _mm256_setzero_si256();
  }
}

/// Four products of digits.
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void AddParts(__m256i& highs, __m256i& lows,
                                                                     __m256d x, const double* y)
{
  const __m256d digits = _mm256_loadu_pd(y);
  const __m256d high = _mm256_fmadd_pd(x, digits, _mm256_set1_pd(kHigh));
  const __m256d rest = _mm256_sub_pd(_mm256_set1_pd(kHigh + kLow), high);
  const __m256d low = _mm256_fmadd_pd(x, digits, rest);
  highs = _mm256_add_epi64(highs, _mm256_castpd_si256(high));
  lows = _mm256_add_epi64(lows, _mm256_castpd_si256(low));
}

/// A digit x times the digits before yEnd, in the last kCount vectors.
template <int kCount, int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void AddVectors(Sums<kVectors>& sums,
                                                                       __m256d x,
                                                                       const double* yEnd)
{
  if constexpr (kCount > 0) {
    AddVectors<kCount - 1>(sums, x, yEnd);
    AddParts(sums.high[kCount - 1], sums.low[kCount - 1], x,
             yEnd - std::ptrdiff_t{kLanes} * kCount);
  }
}

/// The digit that has kColumns columns before the last one of all, times all that it meets there.
template <int kColumns, int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void AddRow(Sums<kVectors>& sums,
                                                                   const double* xEnd,
                                                                   const double*& y)
{
  if constexpr (kColumns <= kLanes * kVectors) {
    constexpr int kCount = (kColumns + kLanes - 1) / kLanes;
    // Hides that the rows before have loaded some of these digits: kept, they would go to memory,
    // since all registers are taken.
    asm("" : "+r"(y));
    AddVectors<kCount>(sums, _mm256_broadcast_sd(xEnd - kColumns), y + kColumns);
  }
}

/// The first `columns` digits before xEnd times those from y on: the first meets as many, each
/// further one a digit less.
template <int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void AddTriangle(Sums<kVectors>& sums,
                                                                        const double* xEnd,
                                                                        const double* y,
                                                                        int columns)
{
  for (; columns > kLanes * kVectors; --columns)
    AddVectors<kVectors>(sums, _mm256_broadcast_sd(xEnd - columns), y + columns);
  // clang-format off
  switch (columns) {
    case 20: AddRow<20>(sums, xEnd, y); [[fallthrough]];
    case 19: AddRow<19>(sums, xEnd, y); [[fallthrough]];
    case 18: AddRow<18>(sums, xEnd, y); [[fallthrough]];
    case 17: AddRow<17>(sums, xEnd, y); [[fallthrough]];
    case 16: AddRow<16>(sums, xEnd, y); [[fallthrough]];
    case 15: AddRow<15>(sums, xEnd, y); [[fallthrough]];
    case 14: AddRow<14>(sums, xEnd, y); [[fallthrough]];
    case 13: AddRow<13>(sums, xEnd, y); [[fallthrough]];
    case 12: AddRow<12>(sums, xEnd, y); [[fallthrough]];
    case 11: AddRow<11>(sums, xEnd, y); [[fallthrough]];
    case 10: AddRow<10>(sums, xEnd, y); [[fallthrough]];
    case 9: AddRow<9>(sums, xEnd, y); [[fallthrough]];
    case 8: AddRow<8>(sums, xEnd, y); [[fallthrough]];
    case 7: AddRow<7>(sums, xEnd, y); [[fallthrough]];
    case 6: AddRow<6>(sums, xEnd, y); [[fallthrough]];
    case 5: AddRow<5>(sums, xEnd, y); [[fallthrough]];
    case 4: AddRow<4>(sums, xEnd, y); [[fallthrough]];
    case 3: AddRow<3>(sums, xEnd, y); [[fallthrough]];
    case 2: AddRow<2>(sums, xEnd, y); [[fallthrough]];
    case 1: AddRow<1>(sums, xEnd, y); [[fallthrough]];
    default: break;
  }
  // clang-format on
}

/// The digits before xEnd from x on times those from y on, in kCount vectors and fewer.
template <int kCount, int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void AddRows(Sums<kVectors>& sums,
                                                                    const double* x,
                                                                    const double* xEnd,
                                                                    const double* y, int columns)
{
  for (; columns > kLanes * (kCount - 1) && x != xEnd; --columns, ++x)
    AddVectors<kCount>(sums, _mm256_broadcast_sd(x), y + columns);
  if constexpr (kCount > 1) AddRows<kCount - 1>(sums, x, xEnd, y, columns);
}

/// The sums of columns, with room for lanes before the first one.
struct ColumnSums {
  std::array<std::int64_t, kLanes + kMostColumns> high, low;

  /// The high part of a column stands with the low part of the one before.
  void ToDigits(std::int64_t* digits, int columns) const
  {
    const std::int64_t *const highs = high.data() + kLanes, *const lows = low.data() + kLanes;
    std::int64_t carry = 0;
    digits[columns] = wide::Balanced(lows[columns - 1], carry);
    for (int c = columns - 1; c > 0; --c) digits[c] = wide::Balanced(highs[c] + lows[c - 1], carry);
    digits[0] = highs[0] + carry;
  }
};

/// Stores sums less the bit patterns of the constants in them.
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void StoreLanes(std::int64_t* place,
                                                                       __m256i sums,
                                                                       std::uint64_t patterns)
{
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(place),
                      _mm256_sub_epi64(sums, _mm256_set1_epi64x(static_cast<long long>(patterns))));
}

/// Stores the sums of the columns before `end`, of which each vector but the first has so many
/// products less than the one before.
template <int kCount, int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void Flush(const Sums<kVectors>& sums,
                                                                  const std::uint32_t* products,
                                                                  int end, ColumnSums& columns)
{
  if constexpr (kCount > 0) {
    constexpr int v = kCount - 1;
    Flush<v>(sums, products, end, columns);
    if (end <= kLanes * v) return;
    const int place = end - kLanes * v;
    StoreLanes(&columns.high[place], sums.high[v], products[v] * kHighPattern);
    StoreLanes(&columns.low[place], sums.low[v], products[v] * kLowPattern);
  }
}

}  // namespace varno::solve::avx2
