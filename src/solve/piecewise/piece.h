#pragma once

#include <optional>
#include <vector>

#include "solve/model/model.h"
#include "solve/number/rational.h"
#include "solve/piecewise/condition.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// An expression whose zeros are looked for while a piece lasts.
struct Watched {
  NodeId expression;  ///< in Piece::model.graph
  /// Its line in the tape; kNone where `time` is known.
  LineId line;
  /// Of an expression that is linear in t with rational coefficients, not constant: its one root.
  std::optional<Rational> time;
};

/// An expression whose sign keeps a condition at its decision.
struct Watch : Watched {
  ConditionId condition;
  /// Its sign while the decision holds. 0 where the decision itself is on a boundary: then the
  /// piece is right only as long as the expression is 0 throughout.
  int sign;
  /// The decision where the expression is 0; beyond, where it has the other sign, the decision is
  /// boundary - sign.
  Decision boundary;

  Decision Beyond() const { return boundary - sign; }
};

/// A model on a region where nothing has a kink or a jump: each operation that has some is replaced
/// by what it is there. Of an `if` only the chosen branch is left.
struct Piece {
  Mode mode;
  /// The states with smooth right-hand sides, no columns and no events.
  Model model;
  /// Of the model; Tape::watched are the lines of `watches`, then those of `events`, but for the
  /// ones whose time is known.
  Tape tape;
  std::vector<Watch> watches;
  /// The expressions of the events of the whole model, one for each.
  std::vector<Watched> events;
};

}  // namespace varno::solve
