#include "solve/fixed/wide_row.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace varno::solve {

/// The bits of a shift beyond whole digits
static long PartOf(long shift)
{
  return (shift % kWideDigitBits + kWideDigitBits) % kWideDigitBits;
}

bool StoreScaled(const ColumnKernel& kernel, WideTerms& terms, int k, WideRowView factor,
                 const WideDigits& digits, int dropped)
{
  // Digits 0 of both make the digit `place` of the term, and may carry to those before.
  const long place = terms.exponent - digits.exponent - factor.exponent;
  const long before = std::max(0L, -place);
  const int last = terms.n - dropped;
  if (!terms.IsSettled() || before > kMostDigitsBefore || place + digits.leading > last)
    return false;
  const int columns = last + 1 + static_cast<int>(before);
  const RowProduct product{factor.digits, factor.count, digits.digits + digits.leading,
                           static_cast<int>(place + before) + digits.leading};
  std::array<std::int64_t, kMostColumns + 1> sum;
  kernel.sumRows(&product, 1, columns, sum.data());
  return terms.SetSettled(k, sum.data(), columns + 1, -static_cast<int>(before));
}

void WideReciprocals::Use(int digitsBehind, long newShift, bool negative)
{
  if (used != nullptr && n == digitsBehind && shift == newShift && isNegative == negative) return;
  if (n != digitsBehind || isNegative != negative) tables.clear();
  n = digitsBehind;
  shift = newShift;
  isNegative = negative;
  const long part = PartOf(shift), wholeDigits = (shift - part) / kWideDigitBits;
  used = &tables[part];
  for (WideRow& row : used->rows) row.exponent += wholeDigits - used->wholeDigits;
  used->wholeDigits = wholeDigits;
}

const WideRow& WideReciprocals::Of(int k)
{
  std::vector<WideRow>& rows = used->rows;
  const auto place = static_cast<std::size_t>(k);
  if (rows.size() <= place) rows.resize(place + 1);
  if (rows[place].digits.empty()) rows[place] = Computed(k);
  return rows[place];
}

/// By long division, so that the last digit is wrong by less than 1.
WideRow WideReciprocals::Computed(int k) const
{
  const long part = PartOf(shift);
  const std::int64_t numerator = std::int64_t{1} << part;
  // Balanced digits may need one before the quotient's first.
  std::vector<std::int64_t> digits{0, numerator / k};
  std::int64_t rest = numerator % k;
  while (static_cast<int>(digits.size()) < n + 3) {
    const std::int64_t dividend = rest * (std::int64_t{1} << kWideDigitBits);
    digits.push_back(dividend / k);
    rest = dividend % k;
  }
  wide::CarryUp(digits.data(), static_cast<int>(digits.size()) - 1);
  std::size_t first = 0;
  while (digits[first] == 0) ++first;
  WideRow row;
  row.exponent = 2 + (shift - part) / kWideDigitBits - static_cast<long>(first);
  while (digits.back() == 0) digits.pop_back();
  for (std::size_t i = first; i < digits.size(); ++i)
    row.digits.push_back(static_cast<double>(isNegative ? -digits[i] : digits[i]));
  return row;
}

}  // namespace varno::solve
