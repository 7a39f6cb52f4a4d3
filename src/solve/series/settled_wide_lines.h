#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "solve/fixed/wide_settled.h"
#include "solve/series/settled_lines.h"

namespace varno::solve {

/// Settled lines of numbers with many digits: each recurrence is a sum of products of rows of
/// digits, carried once, from the digits of the operands into those of the line.
template <int kMostDigits>
class SettledLines<WideArithmetic<kMostDigits>> {
 public:
  explicit SettledLines(const LineOperands<WideArithmetic<kMostDigits>>& operands);

  /// A step with this scale.
  void Begin(long newScaleExponent, bool backwards);
  /// Terms k may be wrong by 2^(k bits) times as much as the first ones, and these by units of the
  /// line that are no coarser than 2^coarsest.
  void DropBits(double bits, std::span<const double> coarsest)
  {
    rise = bits / kWideDigitBits;
    coarsestUnits = coarsest;
  }
  /// The exponent of a line has changed, a line has got one, or the place of its terms.
  void Rearrange() { ++arrangement; }
  /// Stores term k > 0 of the lines from the first on, weighted ones, too; returns the first line
  /// of which it is to be computed in another way, or the number of lines.
  LineId StoreTerms(LineId first, int k);

 private:
  /// A factor times a series, whose digits 0 meet in this column.
  struct Operand {
    const WideTerms* terms;
    WideRow factor;
    int column;
  };
  /// What is prepared of a line.
  struct Prepared {
    int arrangement = -1;
    bool isUsable = false;
    LineKind kind;
    bool isNegative;      // whether the sum is taken with the other sign
    int columns;          // that are summed
    int missing;          // columns that the sum has less than it needs, or -1: it has one more
    int place;            // in the line, of the first digit of the sum
    long exponent;        // of the sum
    WideTerms* s;         // of the line
    WideTerms* weighted;  // the same, where it is needed
    const WideTerms *a, *b;
    WideRow divisor;
    double spareDigits, spareOfWeighted;
    std::vector<Operand> operands;  // of a combination
  };
  bool StoreTerm(const Prepared& line, int k);
  bool StoreCombination(const Prepared& line, int k);
  bool StoreQuotient(const Prepared& line, int k);
  bool StoreIntegral(const Prepared& line, int k);
  bool MakeRow(WideDigits& row, const Prepared& line, const WideTerms* a, int k);
  /// How many of the last digits of term k are not needed.
  int Dropped(double spareDigits, int k) const { return static_cast<int>(spareDigits + k * rise); }
  /// The columns for term k.
  int ColumnsOf(const Prepared& line, int k) const
  {
    const int dropped = Dropped(line.spareDigits, k);
    if (dropped == 0) return line.columns;
    return std::max(1, line.columns - std::max(0, dropped - line.missing));
  }
  void Prepare(LineId id);
  static bool PrepareSum(Prepared& line, const WideTerms& a, const WideTerms& b);
  static bool PrepareProducts(Prepared& line, const WideTerms& a, const WideTerms& b);
  bool PrepareQuotient(Prepared& line, LineId id, const WideTerms& b) const;
  bool PrepareCombination(Prepared& line, LineId id) const;
  WideTerms* Weighted(LineId id) const
  {
    const std::uint32_t row = operands.weightedRows[id];
    return row == kNone ? nullptr : &operands.weighted[row];
  }

  /// A sum has as many digits as a term, some before and a few behind.
  static constexpr int kMostSumDigits = kMostDigits + 8;

  LineOperands<WideArithmetic<kMostDigits>> operands;
  const ColumnKernel* kernel;
  std::vector<Prepared> prepared;  // by line
  int arrangement = 0;
  long scaleExponent = 0;
  double rise = 0;                        // in digits, by each term
  std::span<const double> coarsestUnits;  // by line
  bool isBackwards = false;
  WideReciprocals scaled;       // scale / k
  WideReciprocals reciprocals;  // 1 / k
  WideRow order{{0}, 1};        // k
  std::array<std::int64_t, kMostSumDigits> sum;
  std::array<double, WideTerms::kZeros + kMostSumDigits> sumRow{};
};

extern template class SettledLines<WideArithmetic<8>>;
extern template class SettledLines<WideArithmetic<24>>;
extern template class SettledLines<WideArithmetic<42>>;

}  // namespace varno::solve
