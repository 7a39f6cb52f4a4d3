#include "solve/fixed/rows_ahead.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#if defined(__x86_64__)
#include "solve/fixed/row_blocks_avx512.h"
#include "solve/fixed/row_sums_avx512.h"
#endif

namespace varno::solve {

namespace {

constexpr int kRows = RowsAhead::kRows;
/// Before, a sum has hardly any products of terms known before its eight rows.
constexpr int kFirstRow = 2 * kRows;
/// High parts of sums have 49 bits for each product of digits.
constexpr int kMostParts = 16'000;

}  // namespace

bool RowsAhead::CanSum(const WideTerms& a, const WideTerms& b, int k, int columns)
{
  return a.planes && b.planes && k >= kFirstRow && columns <= std::min(a.n, b.n) + 1 &&
         columns * (k + kRows) <= kMostParts;
}

/// a[j] b[k-j]
static inline RowProduct ProductOf(const WideTerms& a, const WideTerms& b, int j, int k)
{
  const int zeros = a.leading[j], zerosOfB = b.leading[k - j];
  return {a.Row(j) + zeros, a.n - zeros, b.Row(k - j) + zerosOfB, zeros + zerosOfB};
}

bool RowsAhead::Store(const ColumnKernel& kernel, const WideTerms& a, const WideTerms& b, int k,
                      WideTerms& terms, int place) const
{
  if (StoreFromRegisters(a, b, k, terms, place)) return true;
  const bool isSquare = &a == &b;
  const int row = k - firstRow, last = columns[static_cast<std::size_t>(row)];
  std::array<RowProduct, std::size_t{2} * kRows> ends;
  int count = 0;
  for (int j = 0; j <= row; ++j) ends[count++] = ProductOf(a, b, j, k);
  for (int j = firstRow; j <= k && !isSquare; ++j) ends[count++] = ProductOf(a, b, j, k);
  std::array<std::int64_t, kMostColumns + 1> digits;
  kernel.sumRows(ends.data(), count, last, digits.data());
  for (int c = 0; c <= last; ++c)
    digits[c] =
        (isSquare ? 2 * digits[c] : digits[c]) + known[static_cast<std::size_t>(c) * kRows + row];
  wide::CarryUp(digits.data(), last);
  return terms.SetSettled(k, digits.data(), last + 1, place);
}

#if defined(__x86_64__)

namespace {

using namespace avx512;

/// Low parts have 52 bits, and sums of digits as many: so many are added in 64 bits.
constexpr int kMostPartsAtOnce = 4'000;
constexpr int kMostGroups = kMostPartsAtOnce / kRows;

/// What a product has of the bias of both its digits, as a pattern
constexpr auto kBiasesOfFactors = std::bit_cast<long long>(2 * DigitTiles::kBiasPattern);

using RowMasks = std::array<__mmask8, kRows>;
/// By the term of a group: rows in which all terms of b are asked for, those of before the first
/// row only, and those from a term on only.
constexpr RowMasks kAllRows = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
constexpr RowMasks kRowsBefore = {0x00, 0x01, 0x03, 0x07, 0x0f, 0x1f, 0x3f, 0x7f};
constexpr RowMasks kRowsBehind = {0xff, 0xfe, 0xfc, 0xf8, 0xf0, 0xe0, 0xc0, 0x80};

using SumBlockFunction = void (*)(const RowGroups&, int, int, ByRow*, ByRow*);
constexpr BlockFunctions<SumBlockFunction> kBlocks = {
    {SumRowBlock<1, 1>, SumRowBlock<2, 2>, SumRowBlock<3, 3>, SumRowBlock<4, 4>, SumRowBlock<5, 5>,
     SumRowBlock<6, 6>, SumRowBlock<7, 7>, SumRowBlock<8, 8>, SumRowBlock<9, 9>},
    {SumRowBlock<1, 1>, SumRowBlock<2, 2>, SumRowBlock<3, 3>, SumRowBlock<4, 4>, SumRowBlock<5, 5>,
     SumRowBlock<6, 6>, SumRowBlock<6, 7>, SumRowBlock<6, 8>, SumRowBlock<6, 9>, SumRowBlock<6, 10>,
     SumRowBlock<6, 11>}};

/// The sums over terms up to each one of an eighth, modulo 2^64.
[[VARNO_AVX512]] __m512i SumsUpTo(const DigitPlanes& planes, int eighth, int i)
{
  const __m512i zero = _mm512_setzero_si512();
  __m512i sums =
      _mm512_castpd_si512(_mm512_loadu_pd(planes.Plane(i) + std::ptrdiff_t{eighth} * kRows));
  sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 7));
  sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 6));
  sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 4));
  const auto before = static_cast<long long>(planes.SumBefore(eighth, i));
  return _mm512_add_epi64(sums, _mm512_set1_epi64(before));
}

[[VARNO_AVX512]] __m512i SumsBefore(const DigitPlanes& planes, int eighth, int i)
{
  return _mm512_set1_epi64(static_cast<long long>(planes.SumBefore(eighth, i)));
}

/// Sums products a[j] b[k-j] of terms before k0 for k = k0..k0 + 7.
class SumsOfKnown {
 public:
  SumsOfKnown(const DigitPlanes& a, const DigitPlanes& b, int firstRow,
              const RowsAhead::Columns& columns)
      : a(a),
        b(b),
        eighth(firstRow / kRows),
        columnsOfRows(columns),
        columns(*std::max_element(columns.begin(), columns.end())),
        firstColumn(this->columns)
  {}

  void SumProducts();
  void SumSquare();
  /// The digits by place and row; returns how many before are 0.
  int Finish(std::int64_t* known);

 private:
  enum class Kind { kAll, kBefore, kBehind };
  /// Terms 8 t.. of a
  struct Item {
    int t;
    Kind kind;
  };

  void Expect(const Item& item);
  void Prepare();
  void Add(const Item* items, int count, bool twice);
  void AddAtOnce(const Item* items, int count, bool twice);
  int LeadingOfB(const Item& item) const;
  int FirstOfA(const Item& item) const { return std::max(0, firstColumn - LeadingOfB(item)); }
  RowGroup GroupOf(const Item& item, int firstOfA) const;
  void AddDigitSums(const Item& first, const Item& last, int firstOfA);
  void AddToDigits(bool twice);

  const DigitPlanes &a, &b;
  int eighth;  // of the first row
  const RowsAhead::Columns& columnsOfRows;
  int columns, firstColumn, reached = 0;
  __m512i termCounts;                               // by row
  std::array<ByRow, kMostColumns + 1> digitSums;    // of both factors, by place and row
  std::array<ByRow, kMostColumns + 1> lows, highs;  // by column and row
  std::array<ByRow, kMostColumns + 2> sums;
  std::array<RowGroup, kMostGroups> groups;
};

/// Tells of products before any is added: columns before all their digits are left out.
void SumsOfKnown::Expect(const Item& item)
{
  firstColumn = std::min(firstColumn, a.LeastLeading(item.t) + LeadingOfB(item));
  reached = columns - firstColumn;
}

/// The zeros of the terms of b that those of an item meet.
int SumsOfKnown::LeadingOfB(const Item& item) const
{
  const int last = eighth - item.t;
  switch (item.kind) {
    case Kind::kBefore:
      return b.LeastLeading(last - 1);
    case Kind::kBehind:
      return b.LeastLeading(last);
    default:
      return std::min(b.LeastLeading(last - 1), b.LeastLeading(last));
  }
}

[[VARNO_AVX512]] void SumsOfKnown::Prepare()
{
  for (int c = 0; c <= columns; ++c) sums[c].numbers = _mm512_setzero_si512();
}

/// j = 1..k0 - 1, of the first eight those that meet terms before k0
void SumsOfKnown::SumProducts()
{
  std::array<Item, kMostParts / kRows> items;
  int count = 0;
  for (int t = 0; t < eighth; ++t) items[count++] = {t, t == 0 ? Kind::kBefore : Kind::kAll};
  Prepare();
  for (int i = 0; i < count; ++i) Expect(items[i]);
  Add(items.data(), count, false);
}

/// Those in the first half twice, and what is left between.
void SumsOfKnown::SumSquare()
{
  std::array<Item, kMostParts / kRows> items;
  const int half = eighth / 2;
  int count = 0;
  for (int t = 0; t < half; ++t) items[count++] = {t, t == 0 ? Kind::kBefore : Kind::kAll};
  if (eighth % 2 != 0) items[count++] = {half, Kind::kAll};
  items[count++] = {eighth - half, Kind::kBehind};
  Prepare();
  for (int i = 0; i < count; ++i) Expect(items[i]);
  Add(items.data(), half, true);
  Add(items.data() + half, count - half, false);
}

void SumsOfKnown::Add(const Item* items, int count, bool twice)
{
  if (reached <= 0) return;
  const int most = std::max(1, kMostPartsAtOnce / (kRows * reached));
  for (int begin = 0; begin < count; begin += most)
    AddAtOnce(items + begin, std::min(most, count - begin), twice);
}

RowGroup SumsOfKnown::GroupOf(const Item& item, int firstOfA) const
{
  const RowMasks& asked = item.kind == Kind::kAll      ? kAllRows
                          : item.kind == Kind::kBefore ? kRowsBefore
                                                       : kRowsBehind;
  return {a.Plane(firstOfA) + std::ptrdiff_t{item.t} * kRows,
          b.Plane(firstColumn - firstOfA) + std::ptrdiff_t{eighth - item.t} * kRows, asked.data()};
}

[[VARNO_AVX512]] void SumsOfKnown::AddAtOnce(const Item* items, int count, bool twice)
{
  const __m512i zero = _mm512_setzero_si512();
  for (int c = 0; c < reached; ++c) lows[c] = highs[c] = digitSums[c] = {zero};
  termCounts = zero;
  for (int begin = 0; begin < count;) {
    const int firstOfA = FirstOfA(items[begin]);
    int end = begin;
    for (; end < count && FirstOfA(items[end]) == firstOfA; ++end)
      groups[end] = GroupOf(items[end], firstOfA);
    AddDigitSums(items[begin], items[end - 1], firstOfA);
    begin = end;
  }
  const RowGroups all{groups.data(), count, a.Stride(), b.Stride()};
  SumBlocks(kBlocks, all, reached, lows.data(), highs.data());
  AddToDigits(twice);
}

/// Counts the terms of items from the first to the last one, and adds their digits, and those that
/// they meet: what one item leaves out of its eight terms, the next one has too much.
[[VARNO_AVX512]] void SumsOfKnown::AddDigitSums(const Item& first, const Item& last, int firstOfA)
{
  const bool isBefore = first.kind == Kind::kBefore, isBehind = last.kind == Kind::kBehind;
  const int behind = last.t + 1, firstOfB = firstColumn - firstOfA;
  const __m512i rows = _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 6, 7);
  __m512i counts = _mm512_set1_epi64(std::int64_t{behind - first.t} * kRows);
  if (isBefore) counts = _mm512_sub_epi64(_mm512_sub_epi64(counts, rows), _mm512_set1_epi64(1));
  if (isBehind) counts = _mm512_sub_epi64(_mm512_add_epi64(counts, rows), _mm512_set1_epi64(7));
  termCounts = _mm512_add_epi64(termCounts, counts);
  for (int c = 0; c < reached; ++c) {
    const int i = firstOfA + c, m = firstOfB + c;
    const __m512i with =
        _mm512_add_epi64(isBehind ? SumsUpTo(a, last.t, i) : SumsBefore(a, behind, i),
                         isBefore ? SumsBefore(b, eighth, m) : SumsUpTo(b, eighth - first.t, m));
    const __m512i without = _mm512_add_epi64(
        isBefore ? SumsUpTo(a, 0, i) : SumsBefore(a, first.t, i),
        isBehind ? SumsBefore(b, eighth - last.t, m) : SumsUpTo(b, eighth - behind, m));
    __m512i& sum = digitSums[c].numbers;
    sum = _mm512_add_epi64(sum, _mm512_sub_epi64(with, without));
  }
}

/// Adds the sums of products to those of the digits, in each row up to its last column:
/// sum x y = sum (x + 2^50) (y + 2^50) - 2^50 sum (x + y) - 2^100 count.
[[VARNO_AVX512]] void SumsOfKnown::AddToDigits(bool twice)
{
  const __m512i digit = _mm512_set1_epi64((1LL << kWideDigitBits) - 1);
  const __m512i biases = _mm512_mullo_epi64(termCounts, _mm512_set1_epi64(kBiasesOfFactors));
  const __m512i limits = _mm512_cvtepi32_epi64(
      _mm256_loadu_si256(reinterpret_cast<const __m256i*>(columnsOfRows.data())));
  const __m128i doubled = _mm_cvtsi32_si128(twice ? 1 : 0);
  // Of the pairs of places of a column: how many there are, and their digits
  __m512i counts = _mm512_setzero_si512(), prefix = counts;
  for (int c = 0; c < reached; ++c) {
    const int column = firstColumn + c;
    counts = _mm512_add_epi64(counts, termCounts);
    prefix = _mm512_add_epi64(prefix, _mm512_sub_epi64(digitSums[c].numbers, biases));
    __m512i high = _mm512_slli_epi64(highs[c].numbers, 1);
    high = _mm512_add_epi64(high, _mm512_srli_epi64(lows[c].numbers, kWideDigitBits));
    high = _mm512_sub_epi64(high, _mm512_srai_epi64(prefix, 1));
    high = _mm512_sub_epi64(high, _mm512_slli_epi64(counts, kWideDigitBits - 2));
    const __m512i odd = _mm512_and_si512(prefix, _mm512_set1_epi64(1));
    const __m512i low = _mm512_sub_epi64(_mm512_and_si512(lows[c].numbers, digit),
                                         _mm512_slli_epi64(odd, kWideDigitBits - 1));
    const __mmask8 asked = _mm512_cmpgt_epi64_mask(limits, _mm512_set1_epi64(column));
    __m512i &sum = sums[column].numbers, &next = sums[column + 1].numbers;
    sum = _mm512_mask_add_epi64(sum, asked, sum, _mm512_sll_epi64(high, doubled));
    next = _mm512_mask_add_epi64(next, asked, next, _mm512_sll_epi64(low, doubled));
  }
}

[[VARNO_AVX512]] int SumsOfKnown::Finish(std::int64_t* known)
{
  const __m512i half = _mm512_set1_epi64(wide::kHalfDigit);
  const __m512i digit = _mm512_set1_epi64((1LL << kWideDigitBits) - 1);
  __m512i carry = _mm512_setzero_si512();
  for (int c = columns; c > 0; --c) {
    const __m512i sum = _mm512_add_epi64(_mm512_add_epi64(sums[c].numbers, half), carry);
    carry = _mm512_srai_epi64(sum, kWideDigitBits);
    _mm512_storeu_si512(known + std::ptrdiff_t{c} * kRows,
                        _mm512_sub_epi64(_mm512_and_si512(sum, digit), half));
  }
  _mm512_storeu_si512(known, _mm512_add_epi64(sums[0].numbers, carry));
  return std::max(0, firstColumn - 1);
}

}  // namespace

[[VARNO_AVX512]] void RowsAhead::Begin(const WideTerms& a, const WideTerms& b, int k,
                                       const Columns& newColumns)
{
  firstRow = k - k % kRows;
  columns = newColumns;
  const int most = *std::max_element(columns.begin(), columns.end());
  known.resize(static_cast<std::size_t>(most + 1) * kRows);
  SumsOfKnown sums(*a.planes, *b.planes, firstRow, columns);
  if (&a == &b) {
    sums.SumSquare();
  } else {
    sums.SumProducts();
  }
  firstKnown = sums.Finish(known.data());
}

namespace {

/// A sum for k: what is known of it, by digit, and which terms are still to be multiplied.
struct Unfinished {
  const WideTerms &a, &b;
  int k, firstRow, columns, firstKnown;
  const std::int64_t* known;  // digits stand kRows apart

  bool IsSquare() const { return &a == &b; }
  RowProduct Product(int j) const { return ProductOf(a, b, j, k); }

  int ColumnsReached() const
  {
    int first = firstKnown;
    for (int j = 0; j <= k - firstRow; ++j)
      first = std::min(first, a.leading[j] + b.leading[k - j]);
    for (int j = firstRow; j <= k; ++j) first = std::min(first, a.leading[j] + b.leading[k - j]);
    return columns - first;
  }
};

template <int kVectors>
[[VARNO_AVX512]] bool StoreInVectors(const Unfinished& sum, WideTerms& terms, int place)
{
  RowSums<kVectors> ends(sum.columns);
  for (int j = 0; j <= sum.k - sum.firstRow; ++j) ends.Add(sum.Product(j));
  for (int j = sum.firstRow; j <= sum.k && !sum.IsSquare(); ++j) ends.Add(sum.Product(j));
  if (sum.IsSquare()) ends.Double();
  RowDigits<kVectors> digits = ends.Digits();
  static_assert(kRows == 8);
  const __m512i steps = _mm512_setr_epi64(0, 8, 16, 24, 32, 40, 48, 56);
  for (int v = 0; v < kVectors; ++v) {
    const int first = digits.First(v);
    const __m512i places = _mm512_add_epi64(steps, _mm512_set1_epi64(std::int64_t{first} * kRows));
    const __m512i known =
        _mm512_mask_i64gather_epi64(_mm512_setzero_si512(), LanesWithin(first, sum.columns), places,
                                    sum.known, sizeof(std::int64_t));
    digits.vectors[v] = _mm512_add_epi64(digits.vectors[v], known);
  }
  const __m512i behind = _mm512_set1_epi64(sum.known[std::ptrdiff_t{sum.columns} * kRows]);
  digits.behind = _mm512_add_epi64(digits.behind, behind);
  return StoreDigits(digits, terms, sum.k, place);
}

}  // namespace

bool RowsAhead::StoreFromRegisters(const WideTerms& a, const WideTerms& b, int k, WideTerms& terms,
                                   int place) const
{
  const int row = k - firstRow;
  const Unfinished sum{
      a, b, k, firstRow, columns[static_cast<std::size_t>(row)], firstKnown, known.data() + row};
  return ForVectors(VectorsFor(sum.ColumnsReached()),
                    [&]<int kVectors>() { return StoreInVectors<kVectors>(sum, terms, place); });
}

#else

bool RowsAhead::StoreFromRegisters(const WideTerms& /*a*/, const WideTerms& /*b*/, int /*k*/,
                                   WideTerms& /*terms*/, int /*place*/) const
{
  return false;
}

void RowsAhead::Begin(const WideTerms& /*a*/, const WideTerms& /*b*/, int /*k*/,
                      const Columns& /*newColumns*/)
{}

#endif

}  // namespace varno::solve
