#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/integration/path.h"
#include "solve/number/moment.h"
#include "solve/verification/agreement.h"

namespace varno::solve {

/// A number of a row that the arithmetic cannot hold.
struct RowOutOfRange {
  DomainError error;
  Moment time;
};

/// The values of columns at the times of rows, each by itself: a definition that has no value at a
/// row does not touch the others.
class ColumnValues {
 public:
  ColumnValues(const Graph& graph, const std::vector<NodeId>& columns, mpfr_prec_t bits,
               const EdgeRule& edges);

  /// One for each column. Throws RowOutOfRange.
  std::vector<SizedNumber> At(const Moment& time, const SizedStates& states);

 private:
  struct Column {
    std::uint32_t state = 0;              // of a variable
    std::optional<Evaluator> definition;  // none for a variable
  };

  SizedNumber Value(Column& column, mpfr_srcptr time, const Rational* exactTime,
                    const SizedStates& states) const;

  mpfr_prec_t bits;
  EdgeRule edges;
  bool hasDefinitions = false;
  std::vector<Column> columns;
};

}  // namespace varno::solve
