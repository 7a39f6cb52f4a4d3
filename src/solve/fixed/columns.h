#pragma once

#include <cstdint>

#include "solve/fixed/wide_terms.h"

namespace varno::solve {

/// The product of two rows of digits, whose first ones meet in a column >= 0: of the second row
/// that of a term, from its first digit that is not 0.
struct RowProduct {
  const double* x;
  int xCount;
  const double* y;
  int column;
};

/// Sums of products of terms, which are products of their digits: digit i times digit m stands in
/// column i + m. Columns 0..columns-1 are summed, exactly; what would stand behind is dropped.
///
/// The sum is in digits[0..columns], of which digit c has the weight of column c - 1: all but the
/// first are balanced.
struct ColumnKernel {
  /// a[j] b[k-j] for j = first..last
  void (*sumProducts)(const WideTerms& a, const WideTerms& b, int first, int last, int k,
                      int columns, std::int64_t* digits);
  /// a[j] a[k-j] for j = first..k-first
  void (*sumSquare)(const WideTerms& a, int first, int k, int columns, std::int64_t* digits);
  /// At most kMostRowProducts of them
  void (*sumRows)(const RowProduct* products, int count, int columns, std::int64_t* digits);
  /// The sum of all a[j] b[k-j] as term k of a settled series: digit c of it stands at the place
  /// c + `place`. False, and nothing is stored, as by WideTerms::SetSettled.
  bool (*storeProducts)(const WideTerms& a, const WideTerms& b, int k, int columns,
                        WideTerms& terms, int place);
  /// The same of row products.
  bool (*storeRows)(const RowProduct* products, int count, int columns, WideTerms& terms, int k,
                    int place);
  /// Whether products of terms that keep tiles, or planes for RowsAhead, are made faster.
  bool readsTiles = false;
};

inline constexpr int kMostRowProducts = 50;
inline constexpr int kMostColumns = 68;
/// So many digits of a sum may stand before those of a term that it becomes: its columns reach as
/// far behind the digits of the factors, which is less than the zeros there.
inline constexpr int kMostDigitsBefore = WideTerms::kZeros - 1;

/// By integers of 128 bits, for any processor.
extern const ColumnKernel kIntegerColumns;
/// The fastest for this processor. All give the same digits.
const ColumnKernel& BestColumnKernel();
/// For processors with AVX2 and FMA; null on others.
const ColumnKernel* VectorColumnKernel();
/// For those that multiply integers of 52 bits, eight at a time, besides; null on others.
const ColumnKernel* TileColumnKernel();

}  // namespace varno::solve
