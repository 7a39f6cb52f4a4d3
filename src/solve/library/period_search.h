#pragma once

#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "solve/number/moment.h"
#include "solve/number/real.h"
#include "solve/verification/row_number.h"

namespace varno::solve {

/// Looks for the period of a solution among its returns, the times at which one variable has a
/// maximum: where all variables come back to the same values, twice and beyond the digits that are
/// wanted. A solution that only tends to a periodic one has that one's period once the rest of its
/// way, taken to shrink as it did from one return to the next, changes none of them.
class PeriodSearch {
 public:
  explicit PeriodSearch(int digits) : digits(digits) {}

  /// Adds the next return with the values of all variables. Gives the period once it is known.
  std::optional<Moment> Add(const Moment& time, std::span<const RowNumber> variables);

 private:
  struct Return {
    Moment time;
    std::vector<Real> values;
  };

  double Log10Distance(const Return& a, const Return& b) const;
  bool IsPeriod(std::size_t returnsBack) const;

  int digits;
  std::deque<Return> returns;     // the latest first
  std::vector<double> log2Sizes;  // of each variable, the largest so far
};

}  // namespace varno::solve
