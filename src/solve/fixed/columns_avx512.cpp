#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "solve/fixed/columns.h"
#include "solve/fixed/digit_tiles.h"

#if defined(__x86_64__)

#include "solve/fixed/column_blocks_avx512.h"
#include "solve/fixed/row_sums_avx512.h"
#include "solve/fixed/stored_sums.h"

namespace varno::solve {

namespace {

using namespace avx512;

constexpr int kTerms = DigitTiles::kTerms;
/// Low parts have 52 bits, and a column has one for each term and each of its digits. So many are
/// added in 64 bits, even if doubled.
constexpr int kMostParts = 2000;
constexpr int kMostGroups = kMostParts / kTerms;
/// A number for each column and one more, in whole vectors.
constexpr int kRoomForColumns = (kMostColumns / kTerms + 2) * kTerms;

using SumBlockFunction = void (*)(const Groups&, int, int, std::uint64_t*, std::uint64_t*);
constexpr BlockFunctions<SumBlockFunction> kBlocks = {
    {SumBlock<1, 1>, SumBlock<2, 2>, SumBlock<3, 3>, SumBlock<4, 4>, SumBlock<5, 5>, SumBlock<6, 6>,
     SumBlock<7, 7>, SumBlock<8, 8>, SumBlock<9, 9>},
    {SumBlock<1, 1>, SumBlock<2, 2>, SumBlock<3, 3>, SumBlock<4, 4>, SumBlock<5, 5>, SumBlock<6, 6>,
     SumBlock<6, 7>, SumBlock<6, 8>, SumBlock<6, 9>, SumBlock<6, 10>, SumBlock<6, 11>}};

/// Sums products a[j] b[k-j], exactly, in the columns before `columns`.
class TileSums {
 public:
  TileSums(const DigitTiles& a, const DigitTiles& b, int k, int columns, std::int64_t* digits)
      : a(a), b(b), k(k), columns(columns), firstColumn(columns), digits(digits)
  {
    std::fill_n(digits, columns + 1, 0);
  }

  /// Tells of products j = first..last before any is added: columns before all their digits are
  /// left out.
  void Expect(int first, int last)
  {
    for (int t = first / kTerms; t * kTerms <= last; ++t)
      firstColumn = std::min(firstColumn, a.LeastLeading(t * kTerms) + b.LeastLeading(LastOfB(t)));
    reached = columns - firstColumn;
  }

  void Add(int first, int last);

  /// Doubles what there is.
  void Double();

  /// Makes the digits the sum.
  void Finish() { Flush(); }

  /// Stores the sum as a term instead, if it has not too many columns; else makes the digits the
  /// sum.
  bool Store(WideTerms& terms, int place);

 private:
  /// Terms of a with their digits from the same place on: sums of these up to both ends, and of
  /// those of b that they meet.
  struct Stretch {
    const std::uint64_t *aWith, *aWithout, *bWith, *bWithout;
  };

  /// The last term of b that a tile of a meets
  int LastOfB(int t) const { return k - t * kTerms - (kTerms - 1); }
  /// The digits of a tile of a from which on they meet digits of b in the first column.
  int FirstOfA(int t) const { return std::max(0, firstColumn - b.LeastLeading(LastOfB(t))); }
  int MostGroups() const;
  void Clear();
  void Collect(int begin, int end);
  Group GroupOf(int t, int firstOfA, int begin, int end) const;
  Stretch StretchOf(int firstOfA, int begin, int end) const;
  void AddDigitSums(int stretchCount);
  using Sums = std::array<std::int64_t, kRoomForColumns>;
  void SumAll(Sums& sums);
  void SumParts(std::int64_t* sums) const;
  void AddToDigits(const Sums& sums);
  template <int kVectors>
  [[VARNO_AVX512]] bool StoreInVectors(const Sums& sums, WideTerms& terms, int place) const;
  void Flush();

  const DigitTiles &a, &b;
  int k, columns, firstColumn, reached = 0;
  std::int64_t* digits;
  bool isFlushed = false;
  int groupCount = 0, doubledGroups = 0;
  std::int64_t termCount = 0;                            // doubled ones counted twice
  std::array<std::uint64_t, kRoomForColumns> digitSums;  // of both factors, by place
  std::array<std::uint64_t, kRoomForColumns> lows, highs;
  std::array<Group, kMostGroups> groups;
  std::array<Stretch, kMostGroups> stretches;
};

/// So many groups are added before they are flushed.
int TileSums::MostGroups() const
{
  // Mostly all that there can be: a division takes as long as some groups.
  if ((k + 2 * kTerms) * reached <= kMostParts) return kMostGroups;
  return std::clamp(kMostParts / (kTerms * reached), 1, kMostGroups);
}

void TileSums::Add(int first, int last)
{
  if (reached <= 0) return;
  const int most = MostGroups();
  for (int begin = first; begin <= last;) {
    if (groupCount == 0) Clear();
    const int end = std::min(last + 1, (begin / kTerms + most - groupCount) * kTerms);
    Collect(begin, end);
    begin = end;
    if (groupCount == most) Flush();
  }
}

[[VARNO_AVX512]] void TileSums::Clear()
{
  for (int c = 0; c <= reached; c += kTerms) {
    _mm512_storeu_si512(&digitSums[c], _mm512_setzero_si512());
    _mm512_storeu_si512(&lows[c], _mm512_setzero_si512());
    _mm512_storeu_si512(&highs[c], _mm512_setzero_si512());
  }
  termCount = 0;
}

/// Adds the products j = begin..end-1 to the groups.
void TileSums::Collect(int begin, int end)
{
  int stretchCount = 0;
  int firstOfA = FirstOfA(begin / kTerms);
  for (int t = begin / kTerms, from = begin; t * kTerms < end; ++t) {
    groups[groupCount++] = GroupOf(t, firstOfA, begin, end);
    const int next = (t + 1) * kTerms, firstOfNext = next < end ? FirstOfA(t + 1) : -1;
    if (firstOfNext == firstOfA) continue;
    stretches[stretchCount++] = StretchOf(firstOfA, from, std::min(next, end));
    firstOfA = firstOfNext;
    from = next;
  }
  AddDigitSums(stretchCount);
  termCount += end - begin;
}

Group TileSums::GroupOf(int t, int firstOfA, int begin, int end) const
{
  const int first = std::max(0, begin - t * kTerms), behind = std::min(kTerms, end - t * kTerms);
  return {a.Tile(t, firstOfA), b.Tile((LastOfB(t) + kTerms) / kTerms - 1, firstColumn - firstOfA),
          static_cast<__mmask8>((1 << behind) - (1 << first))};
}

auto TileSums::StretchOf(int firstOfA, int begin, int end) const -> Stretch
{
  const int firstOfB = firstColumn - firstOfA;
  return {a.SumsBefore(end) + firstOfA, a.SumsBefore(begin) + firstOfA,
          b.SumsBefore(k + 1 - begin) + firstOfB, b.SumsBefore(k + 1 - end) + firstOfB};
}

[[VARNO_AVX512]] void TileSums::AddDigitSums(int stretchCount)
{
  for (int c = 0; c < reached; c += kTerms) {
    __m512i sum = _mm512_loadu_si512(&digitSums[c]);
    for (int i = 0; i < stretchCount; ++i) {
      const auto& [aWith, aWithout, bWith, bWithout] = stretches[i];
      const __m512i with =
          _mm512_add_epi64(_mm512_loadu_si512(aWith + c), _mm512_loadu_si512(bWith + c));
      const __m512i without =
          _mm512_add_epi64(_mm512_loadu_si512(aWithout + c), _mm512_loadu_si512(bWithout + c));
      sum = _mm512_add_epi64(sum, _mm512_sub_epi64(with, without));
    }
    _mm512_storeu_si512(&digitSums[c], sum);
  }
}

void TileSums::Double()
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

/// x, y, ... to 0, x, x + y, ... and 0, x, y, ... of the numbers behind `before`.
[[VARNO_AVX512, gnu::always_inline]] inline __m512i ShiftedIn(__m512i numbers, __m512i before)
{
  return _mm512_alignr_epi64(numbers, before, 7);
}

/// The sums of products, as numbers in units of the digits from that of the first column on:
/// sum x y = sum (x + 2^50) (y + 2^50) - 2^50 sum (x + y) - 2^100 count.
[[VARNO_AVX512]] void TileSums::SumParts(std::int64_t* sums) const
{
  const __m512i zero = _mm512_setzero_si512();
  const __m512i digit = _mm512_set1_epi64((1LL << kWideDigitBits) - 1);
  const auto terms = static_cast<std::uint64_t>(termCount);
  const std::uint64_t patterns = 2 * terms * DigitTiles::kBiasPattern, half = terms << 49;
  const __m512i biases = _mm512_set1_epi64(static_cast<long long>(patterns));
  const __m512i products = _mm512_set1_epi64(static_cast<long long>(half));
  __m512i counts = _mm512_setr_epi64(1, 2, 3, 4, 5, 6, 7, 8);
  __m512i lowBefore = zero, prefixBefore = zero;
  for (int c = 0; c <= reached; c += kTerms) {
    const auto there = static_cast<__mmask8>((1 << std::min(kTerms, reached - c)) - 1);
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
    counts = _mm512_add_epi64(counts, _mm512_set1_epi64(kTerms));
    lowBefore = low;
    prefixBefore = prefix;
  }
}

/// Sums what has been collected, as numbers in units of the digits from that of the first column
/// on.
void TileSums::SumAll(Sums& sums)
{
  const Groups all{groups.data(), groupCount, doubledGroups, b.Stride(), (k + 1) % kTerms};
  SumBlocks(kBlocks, all, reached, lows.data(), highs.data());
  SumParts(sums.data());
}

void TileSums::AddToDigits(const Sums& sums)
{
  std::int64_t carry = 0;
  for (int c = reached; c > 0; --c) {
    std::int64_t& digit = digits[firstColumn + c];
    digit = wide::Balanced(digit + sums[c], carry);
  }
  carry += sums[0];
  for (int c = firstColumn; c > 0 && carry != 0; --c) digits[c] = wide::Balanced(digits[c], carry);
  digits[0] += carry;
}

/// Adds what has been collected to the digits.
void TileSums::Flush()
{
  if (groupCount == 0) return;
  Sums sums;
  SumAll(sums);
  AddToDigits(sums);
  groupCount = doubledGroups = 0;
  isFlushed = true;
}

bool TileSums::Store(WideTerms& terms, int place)
{
  const int vectors = VectorsFor(reached);
  if (groupCount == 0 || isFlushed || vectors > kMostVectors) {
    Flush();
    return false;
  }
  Sums sums;
  SumAll(sums);
  const bool isStored = ForVectors(
      vectors, [&]<int kVectors>() { return StoreInVectors<kVectors>(sums, terms, place); });
  if (!isStored) AddToDigits(sums);
  return isStored;
}

template <int kVectors>
bool TileSums::StoreInVectors(const Sums& sums, WideTerms& terms, int place) const
{
  RowDigits<kVectors> stored;
  for (int v = 0; v < kVectors; ++v)
    stored.vectors[v] =
        _mm512_loadu_si512(&sums[std::size_t{kLanes} * static_cast<std::size_t>(kVectors - 1 - v)]);
  stored.end = firstColumn + kLanes * kVectors;
  stored.behind = _mm512_set1_epi64(reached == kLanes * kVectors ? sums[reached] : 0);
  return StoreDigits(stored, terms, k, place);
}

/// Whether the tiles of both have all digits that meet in the columns.
bool HaveTiles(const WideTerms& a, const WideTerms& b, int columns)
{
  return a.tiles && b.tiles && columns <= std::min(a.n, b.n) + 1;
}

void SumProducts(const WideTerms& a, const WideTerms& b, int first, int last, int k, int columns,
                 std::int64_t* digits)
{
  if (!HaveTiles(a, b, columns)) {
    VectorColumnKernel()->sumProducts(a, b, first, last, k, columns, digits);
    return;
  }
  TileSums sums(*a.tiles, *b.tiles, k, columns, digits);
  sums.Expect(first, last);
  sums.Add(first, last);
  sums.Finish();
}

void AddSquare(TileSums& sums, int first, int k)
{
  const int half = k > 0 ? (k - 1) / 2 : -1;
  const bool hasMiddle = k % 2 == 0;
  sums.Expect(first, half);
  if (hasMiddle) sums.Expect(k / 2, k / 2);
  sums.Add(first, half);
  sums.Double();
  if (hasMiddle) sums.Add(k / 2, k / 2);
}

void SumSquare(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  if (!HaveTiles(a, a, columns)) {
    VectorColumnKernel()->sumSquare(a, first, k, columns, digits);
    return;
  }
  TileSums sums(*a.tiles, *a.tiles, k, columns, digits);
  AddSquare(sums, first, k);
  sums.Finish();
}

bool StoreProducts(const WideTerms& a, const WideTerms& b, int k, int columns, WideTerms& terms,
                   int place)
{
  if (!HaveTiles(a, b, columns))
    return StoreProductsBy<SumProducts, SumSquare>(a, b, k, columns, terms, place);
  std::array<std::int64_t, kMostColumns + 1> digits;
  TileSums sums(*a.tiles, *b.tiles, k, columns, digits.data());
  if (&a == &b) {
    AddSquare(sums, 0, k);
  } else {
    sums.Expect(0, k);
    sums.Add(0, k);
  }
  return sums.Store(terms, place) || terms.SetSettled(k, digits.data(), columns + 1, place);
}

void SumRows(const RowProduct* products, int count, int columns, std::int64_t* digits)
{
  static const auto sumRows = VectorColumnKernel()->sumRows;
  sumRows(products, count, columns, digits);
}

template <int kVectors>
[[VARNO_AVX512]] bool StoreRowsInVectors(const RowProduct* products, int count, int columns,
                                         WideTerms& terms, int k, int place)
{
  RowSums<kVectors> sums(columns);
  for (int i = 0; i < count; ++i) sums.Add(products[i]);
  return StoreDigits(sums.Digits(), terms, k, place);
}

bool StoreRows(const RowProduct* products, int count, int columns, WideTerms& terms, int k,
               int place)
{
  int reached = 0;
  for (int i = 0; i < count; ++i) reached = std::max(reached, columns - products[i].column);
  const auto store = [&]<int kVectors>() {
    return StoreRowsInVectors<kVectors>(products, count, columns, terms, k, place);
  };
  return ForVectors(VectorsFor(reached), store) ||
         StoreRowsBy<SumRows>(products, count, columns, terms, k, place);
}

constexpr ColumnKernel kTileColumns = {SumProducts,   SumSquare, SumRows,
                                       StoreProducts, StoreRows, true};

}  // namespace

const ColumnKernel* TileColumnKernel()
{
  const bool isThere = VectorColumnKernel() != nullptr && __builtin_cpu_supports("avx512f") != 0 &&
                       __builtin_cpu_supports("avx512dq") != 0 &&
                       __builtin_cpu_supports("avx512ifma") != 0;
  return isThere ? &kTileColumns : nullptr;
}

}  // namespace varno::solve

#else

namespace varno::solve {

const ColumnKernel* TileColumnKernel()
{
  return nullptr;
}

}  // namespace varno::solve

#endif
