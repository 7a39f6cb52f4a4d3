#include "solve/piecewise/specialisation.h"

#include <optional>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
#include "solve/graph/copy.h"
#include "solve/graph/same_node.h"

namespace varno::solve {

namespace {

constexpr NodeId kNotYet = UINT32_MAX;
/// The value of a condition is 0 or 1.
constexpr mpfr_prec_t kConditionBits = 2;

Integer Floor(const Decision& decision)
{
  Integer floor;
  mpz_fdiv_q_2exp(floor.get_mpz_t(), decision.get_mpz_t(), 1);
  return floor;
}

Integer Ceil(const Decision& decision)
{
  return -Floor(-decision);
}

}  // namespace

Specialisation::Specialisation(const Pieces& pieces, const Mode& decided,
                               const DecisionMaker& maker)
    : pieces(pieces),
      graph(pieces.model.graph),
      decided(decided),
      maker(maker),
      timeForms(piece.model.graph),
      valueRanges(piece.model.graph),
      copies(graph.Size(), kNotYet)
{}

Piece Specialisation::Run()
{
  // The start values first: they may decide.
  piece.model.states = pieces.model.states;
  for (State& state : piece.model.states) state.start = Smooth(state.start);
  if (pieces.model.startPoint) piece.model.startPoint = Smooth(*pieces.model.startPoint);
  for (State& state : piece.model.states) state.rightHandSide = Smooth(state.rightHandSide);
  for (const Event& event : pieces.model.events)
    piece.events.push_back(MakeWatched(Smooth(event.expression)));
  return std::move(piece);
}

// ------------------------------------------------------------------------------
// Nodes, each after those that it needs, with a stack of its own

NodeId Specialisation::Smooth(NodeId wanted)
{
  open.push_back(wanted);
  while (!open.empty()) {
    const NodeId id = open.back();
    if (copies[id] != kNotYet || Finish(id)) open.pop_back();
  }
  return copies[wanted];
}

/// Whether a node has its copy; else it comes next.
bool Specialisation::Has(NodeId id)
{
  if (copies[id] != kNotYet) return true;
  open.push_back(id);
  return false;
}

/// Makes the copy of a node, if all is there that it needs.
bool Specialisation::Finish(NodeId id)
{
  if (pieces.questions.contains(id)) return FinishPiecewise(id);
  switch (graph[id].operation) {
    case Operation::kAnd:
    case Operation::kOr:
      return FinishLogic(id);
    case Operation::kIf:
      return FinishIf(id);
    default:
      return FinishOperation(id);
  }
}

bool Specialisation::FinishOperation(NodeId id)
{
  const Node& node = graph[id];
  for (int i = 0; i < node.operandCount; ++i) {
    if (!Has(node.operands[i])) return false;
  }
  copies[id] = CopyNode(graph, id, copies, piece.model.graph);
  return true;
}

/// The second condition counts only where the first one does not decide.
bool Specialisation::FinishLogic(NodeId id)
{
  const Node& node = graph[id];
  if (!Has(node.operands[0])) return false;
  bool holds = Holds(copies[node.operands[0]]);
  if (holds == (node.operation == Operation::kAnd)) {
    if (!Has(node.operands[1])) return false;
    holds = Holds(copies[node.operands[1]]);
  }
  copies[id] = Number(holds, node.place);
  return true;
}

bool Specialisation::FinishIf(NodeId id)
{
  const Node& node = graph[id];
  if (!Has(node.operands[0])) return false;
  const NodeId chosen = node.operands[Holds(copies[node.operands[0]]) ? 1 : 2];
  if (!Has(chosen)) return false;
  copies[id] = copies[chosen];
  return true;
}

/// Conditions are numbers in a piece, but for those that are constant and not rational.
bool Specialisation::Holds(NodeId condition)
{
  const Graph& to = piece.model.graph;
  if (to.IsNumber(condition)) return to.Value(condition) != 0;
  return !EvaluateConstant(to, condition, kConditionBits).IsZero();
}

// ------------------------------------------------------------------------------
// Operations with kinks and jumps

bool Specialisation::FinishPiecewise(NodeId id)
{
  const Node& node = graph[id];
  for (int i = 0; i < node.operandCount; ++i) {
    if (!Has(node.operands[i])) return false;
  }
  const std::vector<Question>& asked = pieces.questions.at(id);
  for (const Question& question : asked) {
    if (!Has(pieces.conditions[question.condition].expression)) return false;
  }
  copies[id] = Replacement(id, asked);
  return true;
}

/// What an operation is on the piece.
NodeId Specialisation::Replacement(NodeId id, const std::vector<Question>& asked)
{
  const Node& node = graph[id];
  if (node.operation == Operation::kAtan2) return ReplacementOfAngle(id, asked);
  const Decision decision = DecisionOn(asked[0]);
  const int sign = sgn(decision);
  const NodeId a = copies[node.operands[0]];
  switch (node.operation) {
    case Operation::kAbs:
      if (sign == 0) return Number(0, node.place);
      return sign > 0 ? a : Negative(a, node.place);
    case Operation::kSign:
      return Number(sign, node.place);
    case Operation::kFloor:
      return Number(Floor(decision), node.place);
    case Operation::kCeil:
      return Number(Ceil(decision), node.place);
    case Operation::kTrunc:
      return Number(sign < 0 ? Ceil(decision) : Floor(decision), node.place);
    case Operation::kMin:
    case Operation::kMax: {
      const NodeId b = copies[node.operands[1]];
      // Where both are the same, the one that varies less: max(h, 0) is 0, which has a root.
      if (sign == 0)
        return piece.model.graph[b].dependence < piece.model.graph[a].dependence ? b : a;
      return (sign < 0) == (node.operation == Operation::kMin) ? a : b;
    }
    case Operation::kLess:
      return Number(sign < 0, node.place);
    case Operation::kLessOrEqual:
      return Number(sign <= 0, node.place);
    default:
      // acot(u) = atan2(1, u) for u >= 0, -atan2(1, -u) below: both have no cut.
      if (sign >= 0)
        return piece.model.graph.Make(Operation::kAtan2, Number(1, node.place), a, node.place);
      return Negative(piece.model.graph.Make(Operation::kAtan2, Number(1, node.place),
                                             Negative(a, node.place), node.place),
                      node.place);
  }
}

/// atan2(y, x) has its cut where y = 0 and x < 0: none where y is never 0. To the left of the
/// origin it is atan2(-y, -x) + pi for y >= 0, - pi below: that cut is on the other side.
NodeId Specialisation::ReplacementOfAngle(NodeId id, const std::vector<Question>& asked)
{
  const Node& node = graph[id];
  Graph& to = piece.model.graph;
  const NodeId y = copies[node.operands[0]], x = copies[node.operands[1]];
  if (valueRanges.SignOf(y) != 0 || DecisionOn(asked[0]) > 0)
    return to.Make(Operation::kAtan2, y, x, node.place);
  const NodeId opposite =
      to.Make(Operation::kAtan2, Negative(y, node.place), Negative(x, node.place), node.place);
  const Operation operation = DecisionOn(asked[1]) >= 0 ? Operation::kAdd : Operation::kSubtract;
  return to.Make(operation, opposite, to.Leaf(Operation::kPi, node.place), node.place);
}

// ------------------------------------------------------------------------------
// Decisions

Decision Specialisation::DecisionOn(const Question& question)
{
  const auto known = decisions.find(question.condition);
  if (known == decisions.end()) {
    const NodeId expression = copies[pieces.conditions[question.condition].expression];
    decisions[question.condition] = Decide(question.condition, expression);
  }
  const Decision& decision = decisions[question.condition];
  return question.isNegated ? Decision(-decision) : decision;
}

/// What it throws names expressions of the whole model: those of the piece, which grows while it is
/// decided, may be lost with it.
Decision Specialisation::Decide(ConditionId condition, NodeId expression)
{
  try {
    return DecideInPiece(condition, expression);
  } catch (DomainError& error) {
    error.node = SameNode(pieces.model.graph, piece.model.graph[error.node]);
    error.isOfModel = true;
    throw;
  }
}

Decision Specialisation::DecideInPiece(ConditionId condition, NodeId expression)
{
  Graph& to = piece.model.graph;
  const ConditionKind kind = pieces.conditions[condition].kind;
  if (to[expression].dependence == Dependence::kNothing)
    return DecisionOfConstant(kind, to, expression);
  const std::optional<TimeForm> form = timeForms.Of(expression);
  if (form && form->slope == 0) return DecisionOf(kind, form->constant);
  // Nothing to watch: a root of a high order, as that of t^30, would hold the steps up.
  if (const int sign = valueRanges.SignOf(expression); kind == ConditionKind::kSign && sign != 0)
    return sign;

  Decision decision;
  const auto known = decided.find(condition);
  if (form && maker.Time() != nullptr) {
    decision = DecisionOf(kind, *form, *maker.Time(), maker.IsBackwards());
  } else if (known != decided.end()) {
    decision = known->second;
  } else {
    decision = maker.Decide(piece.model, expression, kind);
    if (IsOnBoundary(decision)) onBoundary.push_back(condition);
  }
  piece.mode[condition] = decision;
  AddWatches(condition, expression, decision);
  return decision;
}

void Specialisation::AddWatches(ConditionId condition, NodeId expression, const Decision& decision)
{
  Graph& to = piece.model.graph;
  const Place place = pieces.conditions[condition].place;
  const auto add = [&](const Decision& boundary, int sign) {
    const NodeId distance =
        to.Make(Operation::kSubtract, expression, Number(boundary / 2, place), place);
    piece.watches.push_back({MakeWatched(distance), condition, sign, boundary});
  };
  if (IsOnBoundary(decision)) {
    add(decision, 0);
  } else if (pieces.conditions[condition].kind == ConditionKind::kSign) {
    add(0, sgn(decision));
  } else {
    add(decision - 1, 1);
    add(decision + 1, -1);
  }
}

Watched Specialisation::MakeWatched(NodeId expression)
{
  const std::optional<TimeForm>& form = timeForms.Of(expression);
  return {expression, kNone, form ? form->Root() : std::nullopt};
}

}  // namespace varno::solve
