#include "solve/fixed/wide_terms.h"

#include <algorithm>
#include <utility>

namespace varno::solve {

void WideTerms::Reserve(int digitCount, int count)
{
  if (n == digitCount && capacity >= count) return;
  n = digitCount;
  if (count > capacity) {
    auto longer = std::make_unique<int[]>(static_cast<std::size_t>(count));
    std::fill(std::copy_n(leading.get(), capacity, longer.get()), longer.get() + count, n);
    leading = std::move(longer);
  }
  capacity = count;
  // Whole vectors of four: rows begin at the same place of one.
  stride = std::max(kLeastStride, (n + kZeros + 3) / 4 * 4);
  const std::ptrdiff_t end = Place(count) + kZeros;
  rows.resize(static_cast<std::size_t>((end + kDigitsOfLine - 1) / kDigitsOfLine));
  exactZero.resize(count);
  if (tiles) FillTiles();
  if (planes) FillPlanes();
}

void WideTerms::KeepTiles()
{
  tiles = std::make_unique<DigitTiles>();
  FillTiles();
}

void WideTerms::FillTiles()
{
  tiles->Reserve(n, capacity);
  for (int k = 0; k < capacity; ++k) tiles->Set(k, Row(k), leading[k]);
}

void WideTerms::KeepPlanes()
{
  planes = std::make_unique<DigitPlanes>(rows.get_allocator().resource());
  FillPlanes();
}

void WideTerms::FillPlanes()
{
  planes->Reserve(n, capacity);
  for (int eighth = 0; eighth < capacity / DigitPlanes::kTerms; ++eighth) SetInPlanes(eighth);
}

void WideTerms::SetInPlanes(int eighth)
{
  const int first = eighth * DigitPlanes::kTerms;
  planes->Set(eighth, Row(first), stride, &leading[first]);
}

void WideTerms::Reset(long newLeastExponent)
{
  leastExponent = newLeastExponent;
  started = inexact = false;
  used = 0;
}

void WideTerms::Set(int k, const std::int64_t* digits)
{
  int first = 0;
  while (first < n && digits[first] == 0) ++first;
  leading[k] = first;
  exactZero[k] = 0;
  double* const row = MutableRow(k);
  for (int i = 0; i < n; ++i) row[i] = static_cast<double>(digits[i]);
  int end = n;
  while (end > used && digits[end - 1] == 0) --end;
  used = end;
  SetAgain(k);
}

bool WideTerms::SetSettled(int k, const std::int64_t* digits, int count, int place)
{
  // The first digit may be so large that one stands before.
  const std::int64_t carry = wide::CarryOf(digits[0]);
  int first = carry != 0 ? -1 : 0;
  while (first >= 0 && first < count && digits[first] == 0) ++first;
  if (first == count || first + place < 0 || first + place >= n) return false;
  double* const row = BeginSettled(k, first + place);
  const int end = std::min(n, count + place);
  // Most have all digits: what is called for nothing would take longer than these.
  if (place > 0) std::fill_n(row, std::min(place, n), 0.0);
  for (int i = std::max(0, place); i < end; ++i) row[i] = static_cast<double>(digits[i - place]);
  if (end < n) std::fill(row + std::max(0, end), row + n, 0.0);
  if (carry != 0) {
    row[place - 1] = static_cast<double>(carry);
    if (place < n) row[place] = static_cast<double>(wide::Rest(digits[0], carry));
  }
  EndSettled(k);
  return true;
}

void WideTerms::Prefetch(int k) const
{
  const double* const row = Row(k);
  constexpr int kInALine = 8;
  for (int i = 0; i < n; i += kInALine) __builtin_prefetch(row + i, 1);
  __builtin_prefetch(&leading[k], 1);
  if (tiles) tiles->Prefetch(k);
  constexpr int kTerms = DigitPlanes::kTerms;
  if (planes && k % kTerms == kTerms - 1) planes->Prefetch(k / kTerms);
}

void WideTerms::SetZero(int k, bool isExact)
{
  leading[k] = n;
  exactZero[k] = isExact ? 1 : 0;
  std::fill_n(MutableRow(k), n, 0.0);
  SetAgain(k);
}

void WideTerms::Raise(long newExponent, int count)
{
  const long down = newExponent - exponent;
  std::vector<std::int64_t> digits(n);
  used = 0;
  for (int k = 0; k < count; ++k) {
    const double* const old = Row(k);
    for (long i = 0; i < n; ++i)
      digits[i] = i >= down ? static_cast<std::int64_t>(old[i - down]) : 0;
    for (long i = std::max(0L, n - down); i < n; ++i) inexact |= old[i] != 0;
    const bool isExactZero = IsExactZero(k);
    Set(k, digits.data());
    exactZero[k] = isExactZero ? 1 : 0;
  }
  exponent = newExponent;
}

WideTerms CopyOf(const WideTerms& terms, int count)
{
  WideTerms copy;
  copy.Reserve(terms.n, count);
  std::copy_n(terms.Row(0), static_cast<std::ptrdiff_t>(count) * terms.stride, copy.MutableRow(0));
  std::copy_n(terms.leading.get(), count, copy.leading.get());
  std::copy_n(terms.exactZero.begin(), count, copy.exactZero.begin());
  copy.used = terms.used;
  copy.exponent = terms.exponent;
  copy.started = terms.started;
  copy.inexact = terms.inexact;
  return copy;
}

}  // namespace varno::solve
