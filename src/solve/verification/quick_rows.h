#pragma once

#include <optional>
#include <vector>

#include "solve/integration/lockstep.h"
#include "solve/model/model.h"
#include "solve/switching/dynamics.h"
#include "solve/verification/row_schedule.h"
#include "solve/verification/rows_wanted.h"

namespace varno::solve {

/// All rows of a problem, and what the better of the two runs did.
struct QuickRows {
  std::vector<VerifiedRow> rows;
  RunStatistics best;
};

/// Solves an ordinary problem for few digits by the numbers of the hardware (docs/solve/digits.md).
/// None where anything is out of the ordinary, or a digit is not beyond doubt: rows are those that
/// VerifiedRows would give, all of them or none. Throws what `poll` does.
std::optional<QuickRows> SolveQuickly(const Model& model, const Dynamics& dynamics,
                                      const Interval& interval, const RowSchedule& schedule,
                                      const RowsWanted& wanted, const Poll& poll);

}  // namespace varno::solve
