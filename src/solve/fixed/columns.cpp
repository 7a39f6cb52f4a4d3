#include "solve/fixed/columns.h"

#include <algorithm>
#include <array>

#include "solve/fixed/int128.h"
#include "solve/fixed/stored_sums.h"

namespace varno::solve {

namespace {

class IntegerSums {
 public:
  explicit IntegerSums(int columns) : columns(columns) { std::fill_n(sums.begin(), columns, 0); }

  void Add(const RowProduct& product)
  {
    const int reached = columns - product.column;
    std::array<std::int64_t, kMostColumns> y;
    for (int i = 0; i < reached; ++i) y[i] = static_cast<std::int64_t>(product.y[i]);
    for (int i = 0; i < std::min(product.xCount, reached); ++i) {
      const auto x = static_cast<std::int64_t>(product.x[i]);
      Int128* const sum = &sums[product.column + i];
      for (int m = 0; m < reached - i; ++m) sum[m] += static_cast<Int128>(x) * y[m];
    }
  }

  void Add(const WideTerms& a, int j, const WideTerms& b, int i)
  {
    const int aZeros = a.leading[j], bZeros = b.leading[i];
    Add({a.Row(j) + aZeros, a.n - aZeros, b.Row(i) + bZeros, aZeros + bZeros});
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
  for (int j = first; j <= last; ++j) sums.Add(a, j, b, k - j);
  sums.ToDigits(digits);
}

void SumSquare(const WideTerms& a, int first, int k, int columns, std::int64_t* digits)
{
  IntegerSums sums(columns);
  for (int j = first; 2 * j < k; ++j) sums.Add(a, j, a, k - j);
  sums.Double();
  if (k % 2 == 0) sums.Add(a, k / 2, a, k / 2);
  sums.ToDigits(digits);
}

void SumRows(const RowProduct* products, int count, int columns, std::int64_t* digits)
{
  IntegerSums sums(columns);
  for (int i = 0; i < count; ++i) sums.Add(products[i]);
  sums.ToDigits(digits);
}

}  // namespace

const ColumnKernel kIntegerColumns = {
    SumProducts, SumSquare, SumRows, StoreProductsBy<SumProducts, SumSquare>, StoreRowsBy<SumRows>};

const ColumnKernel& BestColumnKernel()
{
  static const ColumnKernel* const best = [] {
    for (const ColumnKernel* kernel : {TileColumnKernel(), VectorColumnKernel()}) {
      if (kernel != nullptr) return kernel;
    }
    return &kIntegerColumns;
  }();
  return *best;
}

}  // namespace varno::solve
