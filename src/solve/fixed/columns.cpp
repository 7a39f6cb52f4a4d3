#include "solve/fixed/columns.h"

#include <algorithm>
#include <array>

#include "solve/fixed/int128.h"

namespace varno::solve {

namespace {

/// The digits of a term as integers, from the first that is not 0.
struct IntegerRow {
  std::array<std::int64_t, kMostColumns> digits;
  int first, end;

  IntegerRow(const WideTerms& terms, int k, int columns)
      : first(terms.leading[k]), end(std::min(terms.n, columns))
  {
    const double* const row = terms.Row(k);
    for (int i = first; i < end; ++i) digits[i] = static_cast<std::int64_t>(row[i]);
  }
};

class IntegerSums {
 public:
  explicit IntegerSums(int columns) : columns(columns) { std::fill_n(sums.begin(), columns, 0); }

  void Add(const IntegerRow& x, const IntegerRow& y)
  {
    for (int i = x.first; i < x.end; ++i) {
      const int end = std::min(y.end, columns - i);
      for (int m = y.first; m < end; ++m)
        sums[i + m] += static_cast<Int128>(x.digits[i]) * y.digits[m];
    }
  }

  void Add(const RowProduct& product)
  {
    for (int i = 0; i < product.xCount; ++i) {
      const auto x = static_cast<std::int64_t>(product.x[i]);
      for (int c = product.column + i; c < columns; ++c)
        sums[c] +=
            static_cast<Int128>(x) * static_cast<std::int64_t>(product.y[c - product.column - i]);
    }
  }

  void Double()
  {
    for (int c = 0; c < columns; ++c) sums[c] *= 2;
  }

  void ToDigits(std::int64_t* digits) const
  {
    Int128 carry = 0;
    for (int c = columns - 1; c >= 0; --c) {
      const Int128 sum = sums[c] + carry;
      carry = (sum + wide::kHalfDigit) >> kWideDigitBits;
      digits[c + 1] = static_cast<std::int64_t>(sum - carry * (std::int64_t{1} << kWideDigitBits));
    }
    digits[0] = static_cast<std::int64_t>(carry);
  }

 private:
  int columns;
  std::array<Int128, kMostColumns> sums;
};

void SumProducts(const WideTerms& a, const WideTerms& b, int first, int last, int k, int columns,
                 std::int64_t* digits)
{
  IntegerSums sums(columns);
  for (int j = first; j <= last; ++j)
    sums.Add(IntegerRow(a, j, columns), IntegerRow(b, k - j, columns));
  sums.ToDigits(digits);
}

void SumSquare(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  IntegerSums sums(columns);
  for (int j = first; 2 * j < k; ++j)
    sums.Add(IntegerRow(a, j, columns), IntegerRow(a, k - j, columns));
  sums.Double();
  if (k % 2 == 0) {
    const IntegerRow middle(a, k / 2, columns);
    sums.Add(middle, middle);
  }
  sums.ToDigits(digits);
}

void SumRows(const RowProduct* products, int count, int columns, std::int64_t* digits)
{
  IntegerSums sums(columns);
  for (int i = 0; i < count; ++i) sums.Add(products[i]);
  sums.ToDigits(digits);
}

}  // namespace

const ColumnKernel kIntegerColumns = {SumProducts, SumSquare, SumRows};

const ColumnKernel& BestColumnKernel()
{
  const ColumnKernel* const vector = VectorColumnKernel();
  return vector != nullptr ? *vector : kIntegerColumns;
}

}  // namespace varno::solve
