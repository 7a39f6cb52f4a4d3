#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "solve/fixed/wide.h"

namespace varno::solve {

/// A constant factor as a row of balanced digits, the first of them not 0: digit i times
/// 2^(51 (exponent - 1 - i)). 0 has no digits.
struct WideRow {
  std::vector<double> digits;
  long exponent = 1;

  int Count() const { return static_cast<int>(digits.size()); }
};

/// The same, of digits that are somewhere.
struct WideRowView {
  const double* digits;
  int count;
  long exponent = 1;

  WideRowView(const WideRow& row)
      : digits(row.digits.data()), count(row.Count()), exponent(row.exponent)
  {}
  /// A whole number
  explicit WideRowView(const double& whole) : digits(&whole), count(1) {}
};

/// A factor with n + 1 digits; zeros behind are left out.
template <int kMostDigits>
WideRow RowOf(const WideValue<kMostDigits>& factor, int n)
{
  WideRow row;
  row.exponent = factor.exponent;
  if (factor.isZero) return row;
  int count = n + 1;
  while (factor.digits[count - 1] == 0) --count;
  row.digits.assign(factor.digits.begin(), factor.digits.begin() + count);
  return row;
}

/// A whole number other than 0
inline WideRow RowOf(std::int32_t whole)
{
  return {{static_cast<double>(whole)}, 1};
}

/// Digits that stand elsewhere, with kZeros zeros around them: the first `leading` are 0.
struct WideDigits {
  const double* digits;
  int count;
  int leading;
  long exponent;
};

inline WideDigits DigitsOf(const WideTerms& terms, int k)
{
  return {terms.Row(k), terms.n, terms.leading[k], terms.exponent};
}

/// Stores factor * digits, with the zeros around them that a term has, as a term of a settled
/// series, without as many of its last digits as are dropped. False, and nothing is stored, if the
/// series is not settled or the term 0 or too large.
bool StoreScaled(const ColumnKernel& kernel, WideTerms& terms, int k, const WideRowView& factor,
                 const WideDigits& digits, int dropped = 0);

/// A row of digits divided by k = 1, 2, ..., each quotient computed when it is asked for.
class WideQuotients {
 public:
  WideQuotients() = default;
  /// With n digits behind the first of each quotient
  WideQuotients(WideRow numerator, int n) : numerator(std::move(numerator)), n(n) {}

  const WideRow& Of(int k);
  /// All of them times 2^(51 digits)
  void Shift(long digits);

 private:
  WideRow Computed(int k) const;

  WideRow numerator;
  int n = 0;
  std::vector<WideRow> rows;  // by k
};

/// 2^shift / k or its negative for k = 1, 2, ..., kept for other shifts by whole digits from this
/// one.
class WideReciprocals {
 public:
  /// Of this shift and sign, with n digits behind the first. What there is of other n and signs is
  /// forgotten.
  void Use(int n, long shift, bool negative);
  const WideRow& Of(int k) { return used->quotients.Of(k); }

 private:
  struct Table {
    long wholeDigits = 0;
    WideQuotients quotients;
  };

  int n = 0;
  long shift = 0;
  bool isNegative = false;
  std::map<long, Table> tables;  // by the bits of the shift beyond whole digits
  Table* used = nullptr;
};

}  // namespace varno::solve
