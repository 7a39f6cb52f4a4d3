#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

#include "solve/fixed/columns.h"

#if defined(__x86_64__)

#include "solve/fixed/column_sums_avx2.h"
#include "solve/fixed/stored_sums.h"

namespace varno::solve {

namespace {

using namespace avx2;

/// Registers hold the sums of 20 columns; fewer are enough for short terms.
constexpr int kManyVectors = 5, kFewVectors = 2;
constexpr int kFew = kLanes * kFewVectors;

/// Products a[j] b[k-j] of terms j = first..first+count-1, which meet in fewer columns the more
/// zeros the terms begin with.
struct Products {
  static constexpr int kMostTerms = 256;
  static constexpr int kZerosAtOnce = 8;

  const WideTerms *a, *b;
  int first, count, k;
  /// By j: how many zeros stand before both together; behind the last so many that no digits are
  /// left.
  std::array<std::int32_t, kMostTerms + kZerosAtOnce> zeros;
};

[[gnu::target("avx2")]] void FindZeros(Products& products)
{
  const int* const aZeros = &products.a->leading[products.first];
  const int* const bZeros = &products.b->leading[products.k - products.first];
  const __m256i reversed = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
  constexpr std::ptrdiff_t kAtOnce = Products::kZerosAtOnce;
  std::ptrdiff_t j = 0;
  for (; j + kAtOnce <= products.count; j += kAtOnce) {
    const __m256i ofA = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(aZeros + j));
    const __m256i ofB =
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bZeros - j - (kAtOnce - 1)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(&products.zeros[j]),
                        _mm256_add_epi32(ofA, _mm256_permutevar8x32_epi32(ofB, reversed)));
  }
  for (; j < products.count; ++j) products.zeros[j] = aZeros[j] + bZeros[-j];
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(&products.zeros[j]),
                      _mm256_set1_epi32(2 * kMostColumns));
}

/// How many products of digits the vector v gets: a row for each digit that reaches it.
[[gnu::target("avx2"), gnu::always_inline]] inline std::uint32_t CountOf(const Products& products,
                                                                         int end, int v)
{
  const __m256i most = _mm256_set1_epi32(end - kLanes * v);
  __m256i counts = _mm256_setzero_si256();
  for (int j = 0; j < products.count; j += Products::kZerosAtOnce) {
    const auto* const zeros = reinterpret_cast<const __m256i*>(&products.zeros[j]);
    const __m256i rows = _mm256_sub_epi32(most, _mm256_loadu_si256(zeros));
    counts = _mm256_add_epi32(counts, _mm256_max_epi32(rows, _mm256_setzero_si256()));
  }
  alignas(32) std::array<std::uint32_t, Products::kZerosAtOnce> lanes;
  _mm256_store_si256(reinterpret_cast<__m256i*>(lanes.data()), counts);
  return std::accumulate(lanes.begin(), lanes.end(), std::uint32_t{0});
}

/// Sums the products in the columns before `end`.
template <int kVectors>
[[gnu::target("avx2,fma")]] void SumInVectors(const Products& products, int end,
                                              ColumnSums& columns)
{
  const WideTerms &a = *products.a, &b = *products.b;
  Sums<kVectors> sums;
  Clear<kVectors>(sums);
  const int* const bZeros = &b.leading[products.k - products.first];
  const double *xEnd = a.Row(products.first) + end, *y = b.Row(products.k - products.first);
  std::array<std::uint32_t, kVectors> counts;
  for (int v = 0; v < kVectors; ++v) counts[v] = CountOf(products, end, v);
  const int count = counts[0] > 0 ? products.count : 0;
  for (std::ptrdiff_t j = 0; j < count; ++j, xEnd += a.stride, y -= b.stride) {
    // Terms that are small have zeros first: precision falls with the order by itself.
    const std::ptrdiff_t zeros = bZeros[-j];
    AddTriangle(sums, xEnd - zeros, y + zeros, end - products.zeros[j]);
  }
  Flush<kVectors>(sums, counts.data(), end, columns);
}

/// Sums a[j] b[k-j] for `count` terms from the first on.
template <int kVectors>
void SumTerms(const WideTerms& a, const WideTerms& b, int first, int count, int k, int columns,
              std::int64_t* digits)
{
  Products products;
  products.a = &a;
  products.b = &b;
  products.first = first;
  products.count = count;
  products.k = k;
  FindZeros(products);
  ColumnSums sums;
  for (int end = columns; end > 0; end -= kLanes * kVectors)
    SumInVectors<kVectors>(products, end, sums);
  sums.ToDigits(digits, columns);
}

/// Adds a balanced sum of digits to another.
void Add(std::int64_t* digits, const std::int64_t* others, int columns)
{
  for (int c = 0; c <= columns; ++c) digits[c] += others[c];
  wide::CarryUp(digits, columns);
}

template <int kVectors>
void SumProductsBy(const WideTerms& a, const WideTerms& b, int first, int last, int k, int columns,
                   std::int64_t* digits)
{
  // A digit takes high parts of one column and low ones of another, each of a row of digits.
  const int most = std::min(Products::kMostTerms, kMostParts / (2 * columns));
  SumTerms<kVectors>(a, b, first, std::min(last + 1 - first, most), k, columns, digits);
  std::array<std::int64_t, kMostColumns + 1> more;
  for (int begin = first + most; begin <= last; begin += most) {
    const int count = std::min(last + 1 - begin, most);
    SumTerms<kVectors>(a, b, begin, count, k, columns, more.data());
    Add(digits, more.data(), columns);
  }
}

template <int kVectors>
void SumSquareBy(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  const int half = k > 0 ? (k - 1) / 2 : -1;
  SumProductsBy<kVectors>(a, a, first, half, k, columns, digits);
  for (int c = 0; c <= columns; ++c) digits[c] *= 2;
  std::array<std::int64_t, kMostColumns + 1> middle{};
  if (k % 2 == 0) SumTerms<kVectors>(a, a, k / 2, 1, k, columns, middle.data());
  Add(digits, middle.data(), columns);
}

void SumProducts(const WideTerms& a, const WideTerms& b, int first, int last, int k, int columns,
                 std::int64_t* digits)
{
  const auto sum = columns <= kFew ? SumProductsBy<kFewVectors> : SumProductsBy<kManyVectors>;
  sum(a, b, first, last, k, columns, digits);
}

void SumSquare(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  const auto sum = columns <= kFew ? SumSquareBy<kFewVectors> : SumSquareBy<kManyVectors>;
  sum(a, first, k, columns, digits);
}

/// How many products each vector has so far: `rows` rows more, of which the first has `columns`
/// columns and each further one a column less.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i WithProducts(__m256i products,
                                                                        int columns, int rows)
{
  const __m256i reached =
      _mm256_sub_epi32(_mm256_set1_epi32(columns), _mm256_setr_epi32(0, 4, 8, 12, 16, 20, 24, 28));
  const __m256i counts =
      _mm256_max_epi32(_mm256_min_epi32(reached, _mm256_set1_epi32(rows)), _mm256_setzero_si256());
  return _mm256_add_epi32(products, counts);
}

template <int kVectors>
[[gnu::target("avx2,fma")]] void SumRowsBy(const RowProduct* products, int count, int columns,
                                           std::int64_t* digits)
{
  ColumnSums all;
  for (int end = columns; end > 0; end -= kLanes * kVectors) {
    Sums<kVectors> sums;
    Clear<kVectors>(sums);
    __m256i productsOfVectors = _mm256_setzero_si256();
    for (int i = 0; i < count; ++i) {
      const auto& [x, xCount, y, column] = products[i];
      const int reached = end - column, rows = std::min(xCount, reached);
      if (rows <= 0) continue;
      productsOfVectors = WithProducts(productsOfVectors, reached, rows);
      AddRows<kVectors>(sums, x, x + rows, y, reached);
    }
    alignas(32) std::array<std::uint32_t, 8> counts;
    _mm256_store_si256(reinterpret_cast<__m256i*>(counts.data()), productsOfVectors);
    Flush<kVectors>(sums, counts.data(), end, all);
  }
  all.ToDigits(digits, columns);
}

void SumRows(const RowProduct* products, int count, int columns, std::int64_t* digits)
{
  // A digit more may stand before those of a short term.
  const auto sum = columns <= kFew            ? SumRowsBy<kFewVectors>
                   : columns <= kFew + kLanes ? SumRowsBy<kFewVectors + 1>
                                              : SumRowsBy<kManyVectors>;
  sum(products, count, columns, digits);
}

constexpr ColumnKernel kVectorColumns = {
    SumProducts, SumSquare, SumRows, StoreProductsBy<SumProducts, SumSquare>, StoreRowsBy<SumRows>};
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
