#pragma once

#include <optional>

#include "solve/number/real.h"

namespace varno::solve {

/// A number of a row: the best run's, or a verified zero.
struct RowNumber {
  std::optional<Real> value;     ///< none where a definition is undefined
  std::optional<long> zeroUnit;  ///< the number is 0 to this power of ten
  bool isAtJump = false;         ///< as far as can be told: an argument was not exact
};

/// Whether a better attempt shows that a number that was printed with so many digits is off by more
/// than a unit of its last one, of which half a unit is what its rounding may have added; that a
/// zero is none to its unit; or that there is a value where there was none, or the reverse.
bool Contradicts(const RowNumber& before, const RowNumber& now, int digits);

}  // namespace varno::solve
