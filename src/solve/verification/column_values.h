#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "solve/evaluation/evaluator.h"
#include "solve/integration/path.h"
#include "solve/number/moment.h"
#include "solve/verification/agreement.h"

namespace varno::solve {

/// The values of columns at the times of rows, each by itself: a definition that has no value at a
/// row does not touch the others.
class ColumnValues {
 public:
  ColumnValues(const Graph& graph, const std::vector<NodeId>& columns, mpfr_prec_t bits);

  /// One for each column.
  std::vector<SizedNumber> At(const Moment& time, const SizedStates& states);

 private:
  struct Column {
    std::uint32_t state = 0;              // of a variable
    std::optional<Evaluator> definition;  // none for a variable
  };

  static SizedNumber Value(Column& column, mpfr_srcptr time, const SizedStates& states);

  mpfr_prec_t bits;
  std::vector<Column> columns;
};

}  // namespace varno::solve
