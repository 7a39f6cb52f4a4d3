#pragma once

#include "solve/model/model.h"
#include "solve/number/moment.h"
#include "solve/number/real.h"
#include "solve/piecewise/condition.h"
#include "solve/piecewise/time_forms.h"

namespace varno::solve {

/// Decides conditions on a smooth expression.
class DecisionMaker {
 public:
  virtual ~DecisionMaker() = default;
  DecisionMaker() = default;
  DecisionMaker(const DecisionMaker&) = delete;
  DecisionMaker& operator=(const DecisionMaker&) = delete;

  /// The time of the decisions; null where none is known.
  virtual const Moment* Time() const = 0;
  virtual bool IsBackwards() const = 0;
  /// Even where the expression is on a boundary. It is one of the graph of a model whose start
  /// values are there already; the graph may be used for further expressions.
  virtual Decision Decide(Model& model, NodeId expression, ConditionKind kind) const = 0;
};

/// The decision that a value makes, exactly.
Decision DecisionOf(ConditionKind kind, const Rational& value);

/// The decision for a form that is not constant, at a time; on a boundary, for the time that comes
/// next.
Decision DecisionOf(ConditionKind kind, const TimeForm& form, const Moment& time, bool backwards);

/// The boundary nearest to a number: an integer, of a sign 0.
struct Nearest {
  Integer integer;
  Decision decision;  ///< if the number is exact: odd, but for the integer itself
  double distance;    ///< log2
};
/// Of the value of a node. Throws DomainError where it is too large to be told from integers.
Nearest NearestBoundary(ConditionKind kind, NodeId node, const Real& value);

/// The decision of a constant expression: on a boundary where thousands of bits cannot tell it from
/// there. Throws DomainError.
Decision DecisionOfConstant(ConditionKind kind, Graph& graph, NodeId constant);

}  // namespace varno::solve
