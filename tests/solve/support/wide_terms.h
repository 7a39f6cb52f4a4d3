#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "solve/fixed/columns.h"

namespace varno::solve::support {

/// The largest size of a balanced digit
inline constexpr std::int64_t kLargestDigit = std::int64_t{1} << (kWideDigitBits - 1);

/// A settled series of `count` terms with n digits each: digit i of term k as told.
inline WideTerms FilledTerms(int n, int count,
                             const std::function<std::int64_t(int k, int i)>& digit)
{
  WideTerms terms;
  terms.Reserve(n, count);
  terms.started = terms.inexact = true;
  std::vector<std::int64_t> row(n);
  for (int k = 0; k < count; ++k) {
    for (int i = 0; i < n; ++i) row[i] = digit(k, i);
    terms.Set(k, row.data());
  }
  return terms;
}

/// The digits of term k with the zeros around them
inline std::vector<double> RowWithZeros(const WideTerms& terms, int k)
{
  return {terms.Row(k) - WideTerms::kZeros, terms.Row(k) + terms.n + WideTerms::kZeros};
}

/// All kernels that this processor can do, the fastest last.
inline std::vector<const ColumnKernel*> ColumnKernels()
{
  std::vector<const ColumnKernel*> kernels{&kIntegerColumns};
  for (const ColumnKernel* kernel : {VectorColumnKernel(), TileColumnKernel()}) {
    if (kernel != nullptr) kernels.push_back(kernel);
  }
  return kernels;
}

}  // namespace varno::solve::support
