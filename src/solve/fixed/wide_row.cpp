#include "solve/fixed/wide_row.h"

#include <algorithm>
#include <cstddef>

namespace varno::solve {

/// The bits of a shift beyond whole digits
static long PartOf(long shift)
{
  return (shift % kWideDigitBits + kWideDigitBits) % kWideDigitBits;
}

bool StoreScaled(const ColumnKernel& kernel, WideTerms& terms, int k, const WideRowView& factor,
                 const WideDigits& digits, int dropped)
{
  // The first digits that are not 0 make the digit `place` of the term, and may carry to those
  // before.
  const long place = terms.exponent - digits.exponent - factor.exponent + digits.leading;
  const long before = std::max(0L, -place);
  const int last = terms.n - dropped;
  if (!terms.IsSettled() || before > kMostDigitsBefore || place > last) return false;
  // Digits of a product behind those of the one factor are not needed, and no further zeros there.
  const long known = place + digits.count - digits.leading + WideTerms::kZeros;
  const int columns = static_cast<int>(std::min(last + 1L, known) + before);
  const RowProduct product{factor.digits, factor.count, digits.digits + digits.leading,
                           static_cast<int>(place + before)};
  return kernel.storeRows(&product, 1, columns, terms, k, -static_cast<int>(before));
}

const WideRow& WideQuotients::Of(int k)
{
  const auto place = static_cast<std::size_t>(k);
  if (rows.size() <= place) rows.resize(place + 1);
  if (rows[place].digits.empty()) rows[place] = Computed(k);
  return rows[place];
}

void WideQuotients::Shift(long digits)
{
  numerator.exponent += digits;
  for (WideRow& row : rows) row.exponent += digits;
}

/// By long division, so that the last digit is wrong by less than 1.
WideRow WideQuotients::Computed(int k) const
{
  WideRow row;
  if (numerator.digits.empty()) return row;
  // Balanced digits may need one before the quotient's first.
  std::vector<std::int64_t> digits{0};
  std::int64_t rest = 0;
  for (int i = 0; i < n + 2; ++i) {
    std::int64_t dividend = rest * (std::int64_t{1} << kWideDigitBits);
    if (i < numerator.Count()) dividend += static_cast<std::int64_t>(numerator.digits[i]);
    digits.push_back(dividend / k);
    rest = dividend % k;
  }
  wide::CarryUp(digits.data(), static_cast<int>(digits.size()) - 1);
  std::size_t first = 0;
  while (digits[first] == 0) ++first;
  row.exponent = numerator.exponent + 1 - static_cast<long>(first);
  while (digits.back() == 0) digits.pop_back();
  row.digits.assign(digits.begin() + static_cast<std::ptrdiff_t>(first), digits.end());
  return row;
}

void WideReciprocals::Use(int digitsBehind, long newShift, bool negative)
{
  if (used != nullptr && n == digitsBehind && shift == newShift && isNegative == negative) return;
  if (n != digitsBehind || isNegative != negative) tables.clear();
  n = digitsBehind;
  shift = newShift;
  isNegative = negative;
  const long part = PartOf(shift), wholeDigits = (shift - part) / kWideDigitBits;
  const auto [found, isNew] = tables.try_emplace(part);
  used = &found->second;
  if (isNew) {
    const auto power = static_cast<double>(std::int64_t{1} << part);
    used->quotients = WideQuotients(WideRow{{negative ? -power : power}, 1}, n);
  }
  used->quotients.Shift(wholeDigits - used->wholeDigits);
  used->wholeDigits = wholeDigits;
}

}  // namespace varno::solve
