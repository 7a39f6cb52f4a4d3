#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "solve/fixed/columns.h"

namespace varno::solve {

/// Sums of products a[j] b[k-j], j = 0..k, for eight k in turn: what all terms before the first of
/// these k give is summed for the eight at once. So terms are brought from the memory once for
/// eight sums, which is what large systems wait for.
///
/// An object is for one sum: the same series and the same k again are taken to have the same terms.
class RowsAhead {
 public:
  static constexpr int kRows = DigitPlanes::kTerms;
  /// By k - its first: the columns of ColumnKernel that are summed
  using Columns = std::array<int, kRows>;

  /// Whether the sum for k can be made of these series: both keep planes, and k is not too small.
  static bool CanSum(const WideTerms& a, const WideTerms& b, int k, int columns);

  /// Forgets what is summed: terms have changed.
  void Forget() { firstRow = -1; }
  /// What is there is for k.
  bool Has(int k) const { return firstRow >= 0 && k - k % kRows == firstRow; }
  /// Sums for the eight of k, from as many columns as each needs.
  void Begin(const WideTerms& a, const WideTerms& b, int k, const Columns& columns);
  /// Stores the sum for k as ColumnKernel::storeProducts does.
  bool Store(const ColumnKernel& kernel, const WideTerms& a, const WideTerms& b, int k,
             WideTerms& terms, int place) const;

 private:
  bool StoreFromRegisters(const WideTerms& a, const WideTerms& b, int k, WideTerms& terms,
                          int place) const;

  int firstRow = -1;
  Columns columns{};
  int firstKnown = 0;               // digits before are 0
  std::vector<std::int64_t> known;  // by digit and row
};

}  // namespace varno::solve
