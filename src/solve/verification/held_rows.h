#pragma once

#include <deque>
#include <exception>
#include <optional>

#include "solve/verification/verified_rows.h"

namespace varno::solve {

/// Rows that are not given before all of them are verified: where a more exact attempt finds one
/// wrong, nobody has seen it, and its own rows take the place of all.
class HeldRows {
 public:
  /// `source` must outlive this, and have given no row.
  explicit HeldRows(VerifiedRows& source) : source(source) {}

  /// As VerifiedRows::Next, but for WrongRow. What ends the rows early is thrown behind the last.
  std::optional<VerifiedRow> Next();

 private:
  void HoldAll();

  VerifiedRows& source;
  bool areAllHeld = false;
  std::deque<VerifiedRow> rows;
  std::exception_ptr end;
};

}  // namespace varno::solve
