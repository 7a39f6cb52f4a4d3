#pragma once

#include <array>
#include <cstdint>

#include "solve/fixed/columns.h"

namespace varno::solve {

// How a ColumnKernel stores sums that it makes digit by digit.

template <auto kSumProducts, auto kSumSquare>
bool StoreProductsBy(const WideTerms& a, const WideTerms& b, int k, int columns, WideTerms& terms,
                     int place)
{
  std::array<std::int64_t, kMostColumns + 1> sum;
  if (&a == &b) {
    kSumSquare(a, 0, k, columns, sum.data());
  } else {
    kSumProducts(a, b, 0, k, k, columns, sum.data());
  }
  return terms.SetSettled(k, sum.data(), columns + 1, place);
}

template <auto kSumRows>
bool StoreRowsBy(const RowProduct* products, int count, int columns, WideTerms& terms, int k,
                 int place)
{
  std::array<std::int64_t, kMostColumns + 1> sum;
  kSumRows(products, count, columns, sum.data());
  return terms.SetSettled(k, sum.data(), columns + 1, place);
}

}  // namespace varno::solve
