#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "solve/fixed/rows_ahead.h"
#include "solve/fixed/wide_settled.h"
#include "solve/series/settled_lines.h"

namespace varno::solve {

/// Settled lines of numbers with many digits: each recurrence is a sum of products of rows of
/// digits, carried once, from the digits of the operands into those of the line.
template <int kMostDigits>
class SettledLines<WideArithmetic<kMostDigits>> {
 public:
  SettledLines(const LineOperands<WideArithmetic<kMostDigits>>& operands,
               std::span<const LineId> lines);

  /// A step with this scale.
  void Begin(long newScaleExponent, bool backwards);
  /// Terms k may be wrong by 2^(k bits) times as much as the first ones, and these by units of the
  /// line that are no coarser than 2^coarsest.
  void DropBits(double bits, std::span<const double> coarsest)
  {
    rise = bits / kWideDigitBits;
    coarsestUnits = coarsest;
  }
  /// Stores term k > 0 of the lines first..last-1 in their order, weighted ones, too; returns the
  /// first of which it is to be computed in another way, or `last`.
  std::size_t StoreTerms(std::size_t first, std::size_t last, int k);

 private:
  /// A sum has as many digits as a term, some before and a few behind.
  static constexpr int kMostSumDigits = kMostDigits + 8;

  /// A factor times a series, whose digits 0 meet in this column.
  struct Operand {
    const WideTerms* terms;
    WideRow factor;
    int column;
  };
  /// What is prepared of a line.
  struct Prepared {
    std::int64_t arrangement = -1;  // for which this is
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
    const WideTerms* weightedA;  // of a power
    WideRow divisor;
    std::optional<WideQuotients> exponents;  // of a power: e + 1, divided by k
    double spareDigits, spareOfWeighted;
    std::vector<Operand> operands;  // of a combination
    RowsAhead ahead;                // of a product
  };
  bool StoreTerm(Prepared& line, int k);
  bool StoreCombination(const Prepared& line, int k);
  bool StoreProduct(Prepared& line, int k);
  void BeginAhead(Prepared& line, int k) const;
  bool StoreQuotient(const Prepared& line, int k);
  bool StoreIntegral(const Prepared& line, int k);
  bool StorePower(Prepared& line, int k);
  /// Room for a row of digits with zeros around it.
  using RoomForRow = std::array<double, WideTerms::kZeros + kMostSumDigits>;
  /// The sum, whose last digit is `last` and which has this exponent, as a row.
  WideDigits RowOfSum(RoomForRow& room, int last, long exponent) const;
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
  void Prepare(Prepared& line, LineId id, std::int64_t arrangement);
  static bool PrepareSum(Prepared& line, const WideTerms& a, const WideTerms& b);
  static bool PrepareProducts(Prepared& line, const WideTerms& a, const WideTerms& b);
  bool PrepareQuotient(Prepared& line, LineId id, const WideTerms& b) const;
  bool PrepareCombination(Prepared& line, LineId id) const;
  bool PreparePower(Prepared& line, LineId id);
  WideTerms* Weighted(LineId id) const
  {
    const std::uint32_t row = operands.weightedRows[id];
    return row == kNone ? nullptr : &operands.weighted[row];
  }

  LineOperands<WideArithmetic<kMostDigits>> operands;
  const ColumnKernel* kernel;
  std::span<const LineId> lines;
  std::vector<Prepared> prepared;  // by place in `lines`
  long scaleExponent = 0;
  double rise = 0;                        // in digits, by each term
  std::span<const double> coarsestUnits;  // by line
  bool isBackwards = false;
  WideReciprocals scaled;       // scale / k
  WideReciprocals reciprocals;  // 1 / k
  WideRow order{{0}, 1};        // k
  std::array<std::int64_t, kMostSumDigits> sum;
  RoomForRow sumRow{}, otherRow{};
};

extern template class SettledLines<WideArithmetic<8>>;
extern template class SettledLines<WideArithmetic<24>>;
extern template class SettledLines<WideArithmetic<42>>;

}  // namespace varno::solve
