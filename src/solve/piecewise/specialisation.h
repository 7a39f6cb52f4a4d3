#pragma once

#include <map>
#include <utility>
#include <vector>

#include "solve/piecewise/decision.h"
#include "solve/piecewise/piece.h"
#include "solve/piecewise/pieces.h"
#include "solve/piecewise/time_forms.h"
#include "solve/piecewise/value_ranges.h"

namespace varno::solve {

/// Makes a piece: copies what is needed of a model, and puts in what operations with kinks and
/// jumps are on it. Conditions are decided as they are met, in an order that depends on the model
/// only, so that conditions in branches that are not chosen are never looked at.
class Specialisation {
 public:
  Specialisation(const Pieces& pieces, const Mode& decided, const DecisionMaker& maker);

  /// The piece but for its tape and the lines. Once only.
  Piece Run();
  /// Conditions that were decided to be on their boundary.
  const std::vector<ConditionId>& OnBoundary() const { return onBoundary; }

 private:
  using Question = Pieces::Question;

  NodeId Smooth(NodeId wanted);
  bool Finish(NodeId id);
  bool Has(NodeId id);
  bool FinishOperation(NodeId id);
  bool FinishLogic(NodeId id);
  bool FinishIf(NodeId id);
  bool FinishPiecewise(NodeId id);
  NodeId Replacement(NodeId id, const std::vector<Question>& asked);
  NodeId ReplacementOfAngle(NodeId id, const std::vector<Question>& asked);
  bool Holds(NodeId condition);
  Decision DecisionOn(const Question& question);
  Decision Decide(ConditionId condition, NodeId expression);
  Decision DecideInPiece(ConditionId condition, NodeId expression);
  void AddWatches(ConditionId condition, NodeId expression, const Decision& decision);
  Watched MakeWatched(NodeId expression);

  NodeId Copied(NodeId id) const { return copies[id]; }
  NodeId Number(const Rational& value, Place place)
  {
    return piece.model.graph.Number(value, place);
  }
  NodeId Negative(NodeId id, Place place)
  {
    return piece.model.graph.Make(Operation::kNegate, id, place);
  }

  const Pieces& pieces;
  const Graph& graph;
  const Mode& decided;
  const DecisionMaker& maker;
  Piece piece;
  TimeForms timeForms;
  ValueRanges valueRanges;
  std::vector<NodeId> copies;  // by node of the model
  std::vector<NodeId> open;
  std::map<ConditionId, Decision> decisions;  // those of constant expressions, too
  std::vector<ConditionId> onBoundary;
};

}  // namespace varno::solve
