#pragma once

#include <memory>
#include <vector>

#include "solve/integration/path.h"
#include "solve/model/model.h"
#include "solve/verification/agreement.h"
#include "solve/verification/column_values.h"

namespace varno::solve {

/// The columns of a problem by one run, or by two of different exactness.
class Attempt {
 public:
  /// `columns` are nodes of the graph of the model, wanted with so many digits. Throws DomainError
  /// where a constant of the tape has no value.
  Attempt(const Model& model, const std::vector<NodeId>& columns, int digits, Path::Problem problem,
          const std::vector<Moment>& early);

  /// For each run the numbers of a row; times must be asked for in order. Throws what Path throws,
  /// and RowOutOfRange.
  std::vector<std::vector<SizedNumber>> RowAt(const Moment& time);

  /// The same by states that were kept, in any order of times. Throws RowOutOfRange.
  std::vector<std::vector<SizedNumber>> RowOf(const Moment& time,
                                              const std::vector<SizedStates>& states);
  /// For each run the numbers at an event, before its assignments, and behind all that happens
  /// there. Throw RowOutOfRange.
  std::vector<std::vector<SizedNumber>> RowAtEvent(const Lockstep::Switches& switches,
                                                   std::size_t event);
  std::vector<std::vector<SizedNumber>> RowBehind(const Lockstep::Switches& switches);
  std::size_t RunCount() const { return columnValues.size(); }

  Path& Integration() { return path; }
  const Path& Integration() const { return path; }

 private:
  std::vector<ColumnValues> columnValues;  // for each run
  Path path;
};

}  // namespace varno::solve
