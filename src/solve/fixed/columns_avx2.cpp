#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

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
/// High and low parts are at most 2^50: so many of them may be added as 64-bit integers, and
/// carries to them.
constexpr int kMostParts = 8000;

constexpr int kLanes = 4;
constexpr int kMostColumns = 68;

/// The running sums of up to 4 kVectors columns, the last ones first: lane l of vector v is column
/// end - 4 (v + 1) + l. A digit of one factor meets four digits of the other at a time.
template <int kVectors>
struct Sums {
  __m256i high[kVectors], low[kVectors];
  __m256i products;  // by vector, in 32 bits: how many were added
};

// Vectors are named by constants only, or they would not stay in registers.

template <int kCount, int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void Clear(Sums<kVectors>& sums)
{
  if constexpr (kCount > 0) {
    Clear<kCount - 1>(sums);
    sums.high[kCount - 1] = sums.low[kCount - 1] = _mm256_setzero_si256();
  } else {
    sums.products = _mm256_setzero_si256();
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

/// Notes how many products each vector gets from `rows` rows, of which the first has `columns`
/// columns and each further one a column less.
template <int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void CountProducts(Sums<kVectors>& sums,
                                                                          int columns, int rows)
{
  const __m256i reached =
      _mm256_sub_epi32(_mm256_set1_epi32(columns), _mm256_setr_epi32(0, 4, 8, 12, 16, 20, 24, 28));
  const __m256i counts =
      _mm256_max_epi32(_mm256_min_epi32(reached, _mm256_set1_epi32(rows)), _mm256_setzero_si256());
  sums.products = _mm256_add_epi32(sums.products, counts);
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

/// The product of two terms, in the columns before `end`; returns how many of them it has.
template <int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline int AddProduct(Sums<kVectors>& sums,
                                                                      const WideTerms& a, int j,
                                                                      const WideTerms& b, int i,
                                                                      int end)
{
  // Terms that are small have zeros first: precision falls with the order by itself.
  const int aLeading = a.leading[j], bLeading = b.leading[i];
  const int columns = end - aLeading - bLeading;
  CountProducts(sums, columns, columns);
  AddTriangle(sums, a.Row(j) + (aLeading + columns), b.Row(i) + bLeading, columns);
  return columns;
}

/// The sums of columns, with room for lanes before the first one.
struct ColumnSums {
  std::array<std::int64_t, kLanes + kMostColumns> high, low;

  void Clear(int columns)
  {
    std::fill_n(high.begin(), kLanes + columns, 0);
    std::fill_n(low.begin(), kLanes + columns, 0);
  }

  /// Adds the sums to digits: the high part of a column stands with the low part of the one before.
  void AddTo(std::int64_t* digits, int columns) const
  {
    const std::int64_t *const highs = high.data() + kLanes, *const lows = low.data() + kLanes;
    digits[columns] += lows[columns - 1];
    for (int c = columns - 1; c > 0; --c) digits[c] += highs[c] + lows[c - 1];
    digits[0] += highs[0];
    wide::CarryUp(digits, columns);
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

template <int kCount, int kVectors>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void Flush(const Sums<kVectors>& sums,
                                                                  int end, ColumnSums& columns)
{
  if constexpr (kCount > 0) {
    constexpr int v = kCount - 1;
    const auto products = static_cast<std::uint64_t>(_mm256_extract_epi32(sums.products, v));
    Flush<v>(sums, end, columns);
    if (products == 0) return;
    const int place = end - kLanes * v;
    StoreLanes(&columns.high[place], sums.high[v], products * kHighPattern);
    StoreLanes(&columns.low[place], sums.low[v], products * kLowPattern);
  }
}

/// The terms whose products are summed: a[j] b[k-j].
struct Factors {
  const WideTerms &a, &b;
  int k;
};

/// Adds the products for j = first..last in the columns before `end`; returns how many columns
/// before that they have.
template <int kVectors>
[[gnu::target("avx2,fma")]] int AddProducts(const Factors& factors, int first, int last, int end,
                                            ColumnSums& columns)
{
  Sums<kVectors> sums;
  Clear<kVectors>(sums);
  int most = 0;
  for (int j = first; j <= last; ++j)
    most = std::max(most, AddProduct(sums, factors.a, j, factors.b, factors.k - j, end));
  Flush<kVectors>(sums, end, columns);
  return most;
}

/// The same in all columns.
template <int kVectors>
void AddProducts(const Factors& factors, int first, int last, int columns, std::int64_t* digits)
{
  // A digit takes high parts of one column and low ones of another, each of a row of digits.
  const int mostTerms = kMostParts / (2 * columns);
  ColumnSums sums;
  for (int begin = first; begin <= last; begin += mostTerms) {
    const int end = std::min(last, begin + mostTerms - 1);
    sums.Clear(columns);
    for (int column = columns; column > 0; column -= kLanes * kVectors) {
      const int most = AddProducts<kVectors>(factors, begin, end, column, sums);
      if (most <= kLanes * kVectors) break;
    }
    sums.AddTo(digits, columns);
  }
}

template <int kVectors>
void SumProductsBy(const WideTerms& a, const WideTerms& b, int first, int last, int k, int columns,
                   std::int64_t* digits)
{
  std::fill_n(digits, columns + 1, 0);
  AddProducts<kVectors>({a, b, k}, first, last, columns, digits);
}

template <int kVectors>
void SumSquareBy(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  std::fill_n(digits, columns + 1, 0);
  const int half = k > 0 ? (k - 1) / 2 : -1;
  AddProducts<kVectors>({a, a, k}, first, half, columns, digits);
  for (int c = 0; c <= columns; ++c) digits[c] *= 2;
  if (k % 2 == 0) AddProducts<kVectors>({a, a, k}, k / 2, k / 2, columns, digits);
  wide::CarryUp(digits, columns);
}

template <int kVectors>
[[gnu::target("avx2,fma")]] void SumRowsBy(const RowProduct* products, int count, int columns,
                                           std::int64_t* digits)
{
  std::fill_n(digits, columns + 1, 0);
  ColumnSums all;
  all.Clear(columns);
  for (int end = columns; end > 0; end -= kLanes * kVectors) {
    Sums<kVectors> sums;
    Clear<kVectors>(sums);
    for (int i = 0; i < count; ++i) {
      const auto& [x, xCount, y, column] = products[i];
      const int reached = end - column, rows = std::min(xCount, reached);
      if (rows <= 0) continue;
      CountProducts(sums, reached, rows);
      AddRows<kVectors>(sums, x, x + rows, y, reached);
    }
    Flush<kVectors>(sums, end, all);
  }
  all.AddTo(digits, columns);
}

// Registers hold the sums of 20 columns; of 8 for shorter terms.
constexpr int kFew = 2, kMany = 5;

void SumProducts(const WideTerms& a, const WideTerms& b, int first, int last, int k, int columns,
                 std::int64_t* digits)
{
  const auto sum = columns <= kLanes * kFew ? SumProductsBy<kFew> : SumProductsBy<kMany>;
  sum(a, b, first, last, k, columns, digits);
}

void SumSquare(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  const auto sum = columns <= kLanes * kFew ? SumSquareBy<kFew> : SumSquareBy<kMany>;
  sum(a, first, k, columns, digits);
}

void SumRows(const RowProduct* products, int count, int columns, std::int64_t* digits)
{
  const auto sum = columns <= kLanes * kFew ? SumRowsBy<kFew> : SumRowsBy<kMany>;
  sum(products, count, columns, digits);
}

constexpr ColumnKernel kVectorColumns = {SumProducts, SumSquare, SumRows};
static_assert(kMostRowProducts * 2 * kMostColumns <= kMostParts);

}  // namespace

const ColumnKernel* VectorColumnKernel()
{
  const bool isThere = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
  return isThere ? &kVectorColumns : nullptr;
}

}  // namespace varno::solve

#else

namespace varno::solve {

const ColumnKernel* VectorColumnKernel()
{
  return nullptr;
}

}  // namespace varno::solve

#endif
