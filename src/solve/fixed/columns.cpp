#include "solve/fixed/columns.h"

#include <algorithm>

namespace varno::solve {

void WideTerms::Reserve(int digitCount, int count)
{
  if (n == digitCount && capacity >= count) return;
  WideTerms larger;
  larger.n = digitCount;
  larger.capacity = count;
  const auto places = static_cast<std::size_t>(digitCount) * static_cast<std::size_t>(count);
  larger.digits.resize(places);
  const auto planes =
      static_cast<std::size_t>(larger.PlaneCount()) * static_cast<std::size_t>(count);
  larger.upwards.resize(planes);
  larger.downwards.resize(planes);
  larger.leading.resize(count, digitCount);
  larger.exactZero.resize(count);
  larger.last.assign(larger.PlaneCount(), -1);
  larger.exponent = exponent;
  larger.leastExponent = leastExponent;
  larger.started = started;
  larger.inexact = inexact;
  for (int k = 0; k < capacity; ++k) {
    if (leading[k] < n) larger.Set(k, &digits[static_cast<std::size_t>(k) * n]);
    larger.exactZero[k] = exactZero[k];
  }
  *this = std::move(larger);
}

void WideTerms::Reset(long newLeastExponent)
{
  leastExponent = newLeastExponent;
  started = inexact = false;
  std::ranges::fill(last, -1);
  // Digits are not read before they are set.
  std::ranges::fill(leading, n);
}

void WideTerms::Set(int k, const std::int64_t* row)
{
  int first = 0;
  while (first < n && row[first] == 0) ++first;
  leading[k] = first;
  std::copy_n(row, n, &digits[static_cast<std::size_t>(k) * n]);
  double* up = &upwards[k];
  double* down = &downwards[capacity - 1 - k];
  for (int i = 0; i < n; ++i, up += capacity, down += capacity) {
    *up = *down = static_cast<double>(row[i]);
    if (row[i] != 0 && last[i] < k) last[i] = k;
  }
}

void WideTerms::SetZero(int k)
{
  leading[k] = n;
  for (int i = 0; i < n; ++i) {
    digits[static_cast<std::size_t>(k) * n + i] = 0;
    const std::size_t plane = static_cast<std::size_t>(i) * capacity;
    upwards[plane + k] = downwards[plane + capacity - 1 - k] = 0;
  }
}

void WideTerms::Raise(long newExponent, int count)
{
  const long down = newExponent - exponent;
  std::vector<std::int64_t> row(n);
  std::ranges::fill(last, -1);
  for (int k = 0; k < count; ++k) {
    const std::int64_t* old = &digits[static_cast<std::size_t>(k) * n];
    for (long i = 0; i < n; ++i) row[i] = i >= down ? old[i - down] : 0;
    for (long i = std::max(0L, n - down); i < n; ++i) inexact |= old[i] != 0;
    Set(k, row.data());
  }
  exponent = newExponent;
}

void SumColumns(const WideTerms& a, const WideTerms& b, int first, int last, int k, Int128* columns)
{
  const int n = a.n;
  std::fill_n(columns, n + 1, 0);
  for (int j = first; j <= last; ++j) {
    const std::int64_t* const x = &a.digits[static_cast<std::size_t>(j) * n];
    const std::int64_t* const y = &b.digits[static_cast<std::size_t>(k - j) * n];
    const int leading = b.leading[k - j];
    for (int i = a.leading[j]; i < n; ++i) {
      const int end = std::min(n, n - i + 1);
      for (int m = leading; m < end; ++m) columns[i + m] += static_cast<Int128>(x[i]) * y[m];
    }
  }
}

ColumnKernel BestColumnKernel()
{
  const ColumnKernel vector = VectorColumnKernel();
  return vector != nullptr ? vector : SumColumns;
}

}  // namespace varno::solve
