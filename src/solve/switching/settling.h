#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "solve/integration/singularity.h"
#include "solve/piecewise/pieces.h"
#include "solve/switching/switch_point.h"
#include "solve/switching/watch_list.h"

namespace varno::solve {

/// The piece that a run goes on with, and what is 0 where it begins.
struct SettledPiece {
  std::shared_ptr<const Piece> piece;
  ZeroTerms zeroTerms;  ///< of its watches
};

/// Finds the piece behind a point: on it, the expressions that are 0 at the point must go to the
/// side that it is made for.
class Settling {
 public:
  /// `graph` is that of the whole model, whose nodes name expressions in errors.
  Settling(Pieces& pieces, const Graph& graph, const SwitchRule& rule)
      : pieces(pieces), graph(graph), rule(rule)
  {}

  /// At the start values of the model.
  SettledPiece AtStart(const SwitchPoint& start);
  /// At a point, where some decisions are known.
  SettledPiece At(const SwitchPoint& point, const Mode& known);
  /// Behind the roots of some watches of a piece, which it ends at.
  SettledPiece Beyond(const SwitchPoint& point, const Piece& before,
                      const std::vector<const Watch*>& crossed);
  /// Where some watches touch 0 and the piece ends: the one on which they stay 0, or where the
  /// field there leads; none if there is none.
  std::optional<SettledPiece> Onto(const SwitchPoint& point, const Piece& before,
                                   const std::vector<const Watch*>& touched);

  // All of them throw ZeroInDoubt; Singularity where no piece goes on, since the field points to
  // the same boundary from both sides; and DomainError, also where an expression that stays on a
  // boundary may leave it at any time, as y in y' = sqrt(abs(y)).

 private:
  /// A boundary that the point lies on.
  struct Boundary {
    ConditionId condition;
    Decision decision;
  };

  FoundPiece PieceAt(const SwitchPoint& point, const Mode& known);
  SettledPiece Settle(FoundPiece found, const SwitchPoint& point);
  bool GoesOn(SettledPiece& settled, const SwitchPoint& point,
              const std::vector<Boundary>& boundaries, Mode& staying) const;

  void RequireUnique(const Piece& piece, ConditionId condition, const SwitchPoint& point);
  Singularity Sliding(const Piece& piece, const Watch& watch, const SwitchPoint& point) const;

  Pieces& pieces;
  const Graph& graph;
  SwitchRule rule;
};

}  // namespace varno::solve
