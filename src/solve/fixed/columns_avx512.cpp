#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "solve/fixed/columns.h"
#include "solve/fixed/digit_planes.h"

#if defined(__x86_64__)

#include "solve/fixed/column_blocks_avx512.h"

namespace varno::solve {

namespace {

using namespace avx512;

constexpr int kAtOnce = DigitPlanes::kAtOnce;
/// Low parts have 52 bits, and a column has one for each term and each of its digits. So many are
/// added in 64 bits, even if doubled.
constexpr int kMostParts = 2000;
constexpr int kMostGroups = kMostParts / kAtOnce;
/// A number for each column and one more, in whole vectors.
constexpr int kRoomForColumns = (kMostColumns / kAtOnce + 2) * kAtOnce;

using SumBlockFunction = void (*)(const Groups&, std::ptrdiff_t, std::ptrdiff_t, std::uint64_t*,
                                  std::uint64_t*);
/// By the number of columns: all of them, and those of a square.
constexpr std::array<SumBlockFunction, kMostColumnsOfOne> kSumAll = {
    SumBlock<1, 1>, SumBlock<2, 2>, SumBlock<3, 3>, SumBlock<4, 4>, SumBlock<5, 5>,
    SumBlock<6, 6>, SumBlock<7, 7>, SumBlock<8, 8>, SumBlock<9, 9>};
constexpr std::array<SumBlockFunction, kMostColumnsOfSquare> kSumSquare = {
    SumBlock<1, 1>, SumBlock<2, 2>, SumBlock<3, 3>, SumBlock<4, 4>,  SumBlock<5, 5>, SumBlock<6, 6>,
    SumBlock<6, 7>, SumBlock<6, 8>, SumBlock<6, 9>, SumBlock<6, 10>, SumBlock<6, 11>};

/// Sums products a[j] b[k-j], exactly, in the columns before `columns`.
class PlaneSums {
 public:
  PlaneSums(const DigitPlanes& a, const DigitPlanes& b, int k, int columns, std::int64_t* digits)
      : a(a), b(b), k(k), columns(columns), firstColumn(columns), digits(digits)
  {
    std::fill_n(digits, columns + 1, 0);
  }

  /// Tells of products j = first..last before any is added: columns before all their digits are
  /// left out.
  void Expect(int first, int last)
  {
    for (int j = first; j <= last; j += kAtOnce)
      firstColumn = std::min(firstColumn, a.LeastLeading(j) + b.LeastLeading(LastOfB(j)));
    reached = columns - firstColumn;
  }

  void Add(int first, int last);

  /// Doubles what there is.
  void Double();

  /// Makes the digits the sum.
  void Finish() { Flush(); }

 private:
  int LastOfB(int j) const { return k - j - (kAtOnce - 1); }
  /// The digits of the factors that meet in the first column.
  int FirstOfA(int j) const { return std::max(0, firstColumn - b.LeastLeading(LastOfB(j))); }
  void Clear();
  void Collect(int begin, int end);
  void AddDigitSums(int begin, int end);
  void AddDifferences(const std::uint64_t* with, const std::uint64_t* without);
  void SumBlocks();
  void SumParts(std::int64_t* sums) const;
  void Flush();

  const DigitPlanes &a, &b;
  int k, columns, firstColumn, reached = 0;
  std::int64_t* digits;
  bool isFlushed = false;
  int groupCount = 0, doubledGroups = 0;
  std::int64_t termCount = 0;                            // doubled ones counted twice
  std::array<std::uint64_t, kRoomForColumns> digitSums;  // of both factors, by place
  std::array<std::uint64_t, kRoomForColumns> lows, highs;
  std::array<Group, kMostGroups + 1> groups;
};

void PlaneSums::Add(int first, int last)
{
  if (reached <= 0) return;
  const int most = std::max(1, kMostParts / (kAtOnce * reached));
  for (int begin = first; begin <= last;) {
    if (groupCount == 0) Clear();
    const int end = std::min(last + 1, begin + kAtOnce * (most - groupCount));
    Collect(begin, end);
    begin = end;
    if (groupCount == most) Flush();
  }
}

[[VARNO_AVX512]] void PlaneSums::Clear()
{
  for (int c = 0; c <= reached; c += kAtOnce) {
    _mm512_storeu_si512(&digitSums[c], _mm512_setzero_si512());
    _mm512_storeu_si512(&lows[c], _mm512_setzero_si512());
    _mm512_storeu_si512(&highs[c], _mm512_setzero_si512());
  }
  termCount = 0;
}

void PlaneSums::Collect(int begin, int end)
{
  for (int j = begin; j < end; j += kAtOnce) {
    const int firstOfA = FirstOfA(j);
    groups[groupCount++] = {a.Plane(firstOfA) + j, b.Plane(firstColumn - firstOfA) + LastOfB(j),
                            static_cast<__mmask8>((1 << std::min(kAtOnce, end - j)) - 1)};
  }
  AddDigitSums(begin, end);
  termCount += end - begin;
}

/// Adds the digits of the terms begin..end-1 of a and of those of b that they meet, as patterns.
void PlaneSums::AddDigitSums(int begin, int end)
{
  for (int j = begin; j < end;) {
    const int firstOfA = FirstOfA(j), first = j;
    do j += kAtOnce;
    while (j < end && FirstOfA(j) == firstOfA);
    const int after = std::min(j, end), firstOfB = firstColumn - firstOfA;
    AddDifferences(a.SumsBefore(after) + firstOfA, a.SumsBefore(first) + firstOfA);
    AddDifferences(b.SumsBefore(k + 1 - first) + firstOfB, b.SumsBefore(k + 1 - after) + firstOfB);
  }
}

[[VARNO_AVX512]] void PlaneSums::AddDifferences(const std::uint64_t* with,
                                                const std::uint64_t* without)
{
  for (int c = 0; c < reached; c += kAtOnce) {
    const __m512i difference =
        _mm512_sub_epi64(_mm512_loadu_si512(with + c), _mm512_loadu_si512(without + c));
    std::uint64_t* const place = &digitSums[c];
    _mm512_storeu_si512(place, _mm512_add_epi64(_mm512_loadu_si512(place), difference));
  }
}

void PlaneSums::Double()
{
  if (isFlushed) {
    for (int c = 0; c <= columns; ++c) digits[c] *= 2;
    wide::CarryUp(digits, columns);
  }
  if (groupCount == 0) return;
  for (int c = 0; c < reached; ++c) digitSums[c] *= 2;
  termCount *= 2;
  doubledGroups = groupCount;
}

void PlaneSums::SumBlocks()
{
  const Groups all{groups.data(), groupCount, doubledGroups, a.Stride(), b.Stride()};
  if (reached <= kMostColumnsOfOne) {
    kSumAll[reached - 1](all, 0, 0, lows.data(), highs.data());
    return;
  }
  for (int i = 0; i < reached; i += kMostSide) {
    for (int m = 0; i + m < reached; m += kMostSide) {
      const int count = std::min(reached - i - m, kMostColumnsOfSquare);
      kSumSquare[count - 1](all, i * all.aStride, m * all.bStride, &lows[i + m], &highs[i + m]);
    }
  }
}

/// x, y, ... to 0, x, x + y, ... and 0, x, y, ... of the numbers behind `before`.
[[VARNO_AVX512, gnu::always_inline]] inline __m512i ShiftedIn(__m512i numbers, __m512i before)
{
  return _mm512_alignr_epi64(numbers, before, 7);
}

/// The sums of products, as numbers in units of the digits from that of the first column on:
/// sum x y = sum (x + 2^50) (y + 2^50) - 2^50 sum (x + y) - 2^100 count.
[[VARNO_AVX512]] void PlaneSums::SumParts(std::int64_t* sums) const
{
  const __m512i zero = _mm512_setzero_si512();
  const __m512i digit = _mm512_set1_epi64((1LL << kWideDigitBits) - 1);
  const __m512i biases = _mm512_set1_epi64(static_cast<long long>(
      2 * static_cast<std::uint64_t>(termCount) * DigitPlanes::kBiasPattern));
  const __m512i products = _mm512_set1_epi64(static_cast<long long>(termCount) << 49);
  __m512i counts = _mm512_setr_epi64(1, 2, 3, 4, 5, 6, 7, 8);
  __m512i lowBefore = zero, prefixBefore = zero;
  for (int c = 0; c <= reached; c += kAtOnce) {
    const auto there = static_cast<__mmask8>((1 << std::min(kAtOnce, reached - c)) - 1);
    const __m512i low = _mm512_loadu_si512(&lows[c]), high = _mm512_loadu_si512(&highs[c]);
    // The sums of the digits up to each place
    __m512i prefix = _mm512_maskz_sub_epi64(there, _mm512_loadu_si512(&digitSums[c]), biases);
    prefix = _mm512_add_epi64(prefix, _mm512_alignr_epi64(prefix, zero, 7));
    prefix = _mm512_add_epi64(prefix, _mm512_alignr_epi64(prefix, zero, 6));
    prefix = _mm512_add_epi64(prefix, _mm512_alignr_epi64(prefix, zero, 4));
    const __m512i last = _mm512_permutexvar_epi64(_mm512_set1_epi64(7), prefixBefore);
    prefix = _mm512_maskz_add_epi64(there, prefix, last);
    const __m512i biased = _mm512_and_si512(ShiftedIn(prefix, prefixBefore), _mm512_set1_epi64(1));
    __m512i sum = _mm512_add_epi64(_mm512_and_si512(ShiftedIn(low, lowBefore), digit),
                                   _mm512_srli_epi64(low, kWideDigitBits));
    sum = _mm512_add_epi64(sum, _mm512_add_epi64(high, high));
    sum = _mm512_sub_epi64(sum, _mm512_slli_epi64(biased, kWideDigitBits - 1));
    sum = _mm512_sub_epi64(sum, _mm512_srai_epi64(prefix, 1));
    sum = _mm512_mask_sub_epi64(sum, there, sum, _mm512_mullo_epi64(counts, products));
    _mm512_storeu_si512(sums + c, sum);
    counts = _mm512_add_epi64(counts, _mm512_set1_epi64(kAtOnce));
    lowBefore = low;
    prefixBefore = prefix;
  }
}

/// Adds what has been collected to the digits.
void PlaneSums::Flush()
{
  if (groupCount == 0) return;
  SumBlocks();
  std::array<std::int64_t, kRoomForColumns> sums;
  SumParts(sums.data());
  std::int64_t carry = 0;
  for (int c = reached; c > 0; --c) {
    std::int64_t& digit = digits[firstColumn + c];
    digit = wide::Balanced(digit + sums[c], carry);
  }
  carry += sums[0];
  for (int c = firstColumn; c > 0 && carry != 0; --c) digits[c] = wide::Balanced(digits[c], carry);
  digits[0] += carry;
  groupCount = doubledGroups = 0;
  isFlushed = true;
}

/// Whether the planes of both have all digits that meet in the columns.
bool HavePlanes(const WideTerms& a, const WideTerms& b, int columns)
{
  return a.planes && b.planes && columns <= std::min(a.n, b.n) + 1;
}

void SumProducts(const WideTerms& a, const WideTerms& b, int first, int last, int k, int columns,
                 std::int64_t* digits)
{
  if (!HavePlanes(a, b, columns)) {
    VectorColumnKernel()->sumProducts(a, b, first, last, k, columns, digits);
    return;
  }
  PlaneSums sums(*a.planes, *b.planes, k, columns, digits);
  sums.Expect(first, last);
  sums.Add(first, last);
  sums.Finish();
}

void SumSquare(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  if (!HavePlanes(a, a, columns)) {
    VectorColumnKernel()->sumSquare(a, first, k, columns, digits);
    return;
  }
  PlaneSums sums(*a.planes, *a.planes, k, columns, digits);
  const int half = k > 0 ? (k - 1) / 2 : -1;
  const bool hasMiddle = k % 2 == 0;
  sums.Expect(first, half);
  if (hasMiddle) sums.Expect(k / 2, k / 2);
  sums.Add(first, half);
  sums.Double();
  if (hasMiddle) sums.Add(k / 2, k / 2);
  sums.Finish();
}

void SumRows(const RowProduct* products, int count, int columns, std::int64_t* digits)
{
  VectorColumnKernel()->sumRows(products, count, columns, digits);
}

constexpr ColumnKernel kPlaneColumns = {SumProducts, SumSquare, SumRows, true};

}  // namespace

const ColumnKernel* PlaneColumnKernel()
{
  const bool isThere = VectorColumnKernel() != nullptr && __builtin_cpu_supports("avx512f") != 0 &&
                       __builtin_cpu_supports("avx512dq") != 0 &&
                       __builtin_cpu_supports("avx512ifma") != 0;
  return isThere ? &kPlaneColumns : nullptr;
}

}  // namespace varno::solve

#else

namespace varno::solve {

const ColumnKernel* PlaneColumnKernel()
{
  return nullptr;
}

}  // namespace varno::solve

#endif
