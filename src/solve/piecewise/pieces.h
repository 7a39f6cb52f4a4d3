#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "solve/evaluation/edges.h"
#include "solve/model/model.h"
#include "solve/number/moment.h"
#include "solve/piecewise/condition.h"
#include "solve/piecewise/piece.h"

namespace varno::solve {

/// Where conditions are decided, in the course of a run.
struct DecisionPoint {
  const Moment& time;
  std::span<const Real> states;
  std::span<const double> sizes;  ///< log2 of the sizes of the states
  bool backwards;                 ///< whether the time runs so
  /// How near 0, beside its size, an expression counts as 0, and whether it may.
  EdgeRule rule;
};

/// A piece that was found by deciding its conditions at a point.
struct FoundPiece {
  std::shared_ptr<const Piece> piece;
  /// Conditions on their boundary at the point, which therefore does not tell what comes behind it.
  /// Their decision in the piece is the even one, as the language defines the value at the point.
  ///
  /// What to do with them: take the series of this piece at the point and add the sign of the first
  /// term of the watch's expression that is not 0 to the decision; where no term is, the expression
  /// is 0 on the piece, too, and the piece is right. On the new piece the term must have the same
  /// sign: else the field points back to the boundary from both sides.
  std::vector<ConditionId> onBoundary;
};

class DecisionMaker;

/// A piecewise smooth model as a family of smooth ones.
///
/// A run goes on one piece until a watched expression changes its sign, and then on the piece with
/// the decision beyond. The same object serves several runs, on several threads.
class Pieces {
 public:
  /// Of a model whose parameters are bound.
  explicit Pieces(const Model& model);

  /// All that operations with kinks and jumps ask, whether it counts now or not.
  const std::vector<Condition>& Conditions() const { return conditions; }
  /// Whether neither a condition nor an event is ever watched: then there is one piece, which is
  /// the model.
  bool IsSmooth() const { return conditions.empty() && model.events.empty(); }

  /// The piece at a point: `known` decisions are taken as they are, as far as they count; the
  /// others are made at the point. An expression that is linear in t with rational coefficients is
  /// decided exactly, on its boundary for the time that comes next. Throws EdgeInDoubt where more
  /// bits must tell, DomainError where an expression has no value.
  FoundPiece At(const DecisionPoint& point, const Mode& known = {});
  /// The piece at the start values, which decide exactly: what thousands of bits cannot tell from
  /// a boundary is on it. Throws DomainError.
  FoundPiece AtStart(const Moment& time, bool backwards, const Mode& known = {});
  /// The piece of a mode that decides all that counts. Throws std::invalid_argument for others.
  std::shared_ptr<const Piece> Of(const Mode& mode);

 private:
  friend class Specialisation;

  /// What an operation asks: a condition, or the opposite sign of its expression.
  struct Question {
    ConditionId condition;
    bool isNegated;
  };

  void AddQuestions(NodeId operation);
  Question AskSign(NodeId expression, Place place);
  Question Ask(ConditionKind kind, NodeId expression, Place place);
  std::vector<NodeId> NodesThatVary() const;
  FoundPiece Find(const Mode& decided, const DecisionMaker& maker);
  std::shared_ptr<const Piece> Keep(Piece piece);

  Model model;
  std::vector<Condition> conditions;
  std::map<std::pair<ConditionKind, NodeId>, ConditionId> numbers;  // of conditions
  std::unordered_map<NodeId, std::vector<Question>> questions;      // by operation

  std::mutex mutex;  // of what follows
  std::map<Mode, std::shared_ptr<const Piece>> found;
};

}  // namespace varno::solve
