#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/number/moment.h"
#include "solve/verification/row_number.h"

namespace varno::solve {

/// What rows are asked for.
struct RowsWanted {
  std::vector<NodeId> columns;  ///< in the model's graph
  int digits;                   ///< significant digits of each number
  /// log2 of what counts as 0
  double tinyLog2 = -std::numeric_limits<double>::infinity();
  bool check;    ///< by two runs; else one, and nothing is verified
  long maxBits;  ///< the highest precision to try
  int threads;   ///< at most, of all runs: Lockstep
  /// An event of which the times between two must have all their digits, too.
  std::optional<std::uint32_t> periodEvent = {};
  std::optional<double> log2Steady = {};  ///< ends it all where the solution rests: StoppingAtRest
  bool mayBeQuick = false;  ///< by the numbers of the hardware where that will do, without steps
};

struct VerifiedRow {
  Moment time;
  std::vector<RowNumber> numbers;
  /// The number of the event that happens there, in the order of the file: the numbers are those
  /// that it meets, before its assignments. None: a row that was asked for, or that of an end.
  std::optional<std::uint32_t> event = {};
};

/// A row that both runs agree on, or else the best run's numbers.
struct CheckedRow {
  VerifiedRow row;
  bool isVerified;
};

/// What the best run of an attempt did.
struct RunStatistics {
  std::int64_t steps = 0;
  int order = 0;
  mpfr_prec_t bits = 0;
};

}  // namespace varno::solve
