#pragma once

#include <optional>
#include <span>
#include <vector>

#include "solve/evaluation/evaluator.h"
#include "solve/number/moment.h"

namespace varno::solve {

/// The values of columns at the times of rows, each by itself: a definition that has no value at a
/// row does not touch the others.
class ColumnValues {
 public:
  ColumnValues(const Graph& graph, const std::vector<NodeId>& columns, mpfr_prec_t bits);

  /// One for each column; none where a definition is undefined.
  std::vector<std::optional<Real>> At(const Moment& time, std::span<const Real> states);

 private:
  struct Column {
    std::uint32_t state = 0;              // of a variable
    std::optional<Evaluator> definition;  // none for a variable
  };

  std::optional<Real> Value(Column& column, mpfr_srcptr time, std::span<const Real> states);

  mpfr_prec_t bits;
  std::vector<Column> columns;
};

}  // namespace varno::solve
