#include "solve/piecewise/pieces.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"
#include "solve/piecewise/decision.h"
#include "solve/piecewise/specialisation.h"
#include "solve/tape/compile.h"

namespace varno::solve {

namespace {

/// So many pieces are kept; a run rarely has more than some at a time.
constexpr std::size_t kMostPieces = 64;
/// Conditions are evaluated with so many bits more than the states have.
constexpr mpfr_prec_t kGuardBits = 64;
/// With which conditions are decided at a start that is not rational.
constexpr mpfr_prec_t kFirstBits = 256;
constexpr mpfr_prec_t kMostBits = 4096;

/// Decides by the states of a run.
class MakerAtPoint : public DecisionMaker {
 public:
  explicit MakerAtPoint(const DecisionPoint& point) : point(point) {}

  const Moment* Time() const override { return &point.time; }
  bool IsBackwards() const override { return point.backwards; }
  Decision Decide(Model& model, NodeId expression, ConditionKind kind) const override
  {
    mpfr_prec_t bits = kGuardBits;
    for (const Real& state : point.states) bits = std::max(bits, state.Bits() + kGuardBits);
    Real time(bits);
    point.time.Evaluate(time);
    Evaluator value(model.graph, {expression}, bits);
    value.EvaluateSized(time, point.states, point.sizes, point.rule);

    const Nearest nearest = NearestBoundary(kind, expression, value[0]);
    const double distance = nearest.distance - value.Size(0);
    const bool isExact = value.Size(0) == -std::numeric_limits<double>::infinity();
    if (isExact || distance >= -point.rule.noiseBits) return nearest.decision;
    if (!point.rule.mayDeclareZero || distance >= -point.rule.zeroBits) throw EdgeInDoubt();
    return 2 * nearest.integer;
  }

 private:
  const DecisionPoint& point;
};

/// Decides by the expressions of the start values.
class MakerAtStart : public DecisionMaker {
 public:
  MakerAtStart(const Moment& time, bool backwards) : time(time), backwards(backwards) {}

  const Moment* Time() const override { return &time; }
  bool IsBackwards() const override { return backwards; }
  Decision Decide(Model& model, NodeId expression, ConditionKind kind) const override
  {
    if (time.IsRational()) return DecisionOfConstant(kind, model.graph, AtStart(model, expression));
    for (mpfr_prec_t bits = kFirstBits;; bits *= 4) {
      try {
        return DecideWithBits(model, expression, kind, bits);
      } catch (const EdgeInDoubt&) {
      }
    }
  }

 private:
  NodeId AtStart(Model& model, NodeId expression) const;
  Decision DecideWithBits(Model& model, NodeId expression, ConditionKind kind,
                          mpfr_prec_t bits) const;

  const Moment& time;
  bool backwards;
};

/// The constant that an expression is at the start.
NodeId MakerAtStart::AtStart(Model& model, NodeId expression) const
{
  Graph& graph = model.graph;
  std::vector<NodeId> values;
  for (NodeId id = 0; id <= expression; ++id) {
    const Node node = graph[id];  // a copy: the graph grows
    const auto operand = [&](int i) { return values[node.operands[i]]; };
    if (node.operation == Operation::kTime) {
      values.push_back(graph.Number(time.RationalPart(), node.place));
    } else if (node.operation == Operation::kState) {
      values.push_back(model.states[node.index].start);
    } else if (node.dependence == Dependence::kNothing) {
      values.push_back(id);
    } else if (node.operandCount == 1) {
      values.push_back(graph.Make(node.operation, operand(0), node.place));
    } else {
      values.push_back(graph.Make(node.operation, operand(0), operand(1), node.place));
    }
  }
  return values[expression];
}

/// What is nearer to a boundary than the bits tell is on it when thousands of them are used.
Decision MakerAtStart::DecideWithBits(Model& model, NodeId expression, ConditionKind kind,
                                      mpfr_prec_t bits) const
{
  std::vector<Real> states;
  std::vector<double> sizes;
  for (const State& state : model.states) {
    states.push_back(EvaluateConstant(model.graph, state.start, bits + kGuardBits));
    sizes.push_back(Log2Size(states.back()));
  }
  const auto resolved = static_cast<double>(bits);
  const EdgeRule rule{resolved, resolved, bits >= kMostBits};
  return MakerAtPoint({time, states, sizes, backwards, rule}).Decide(model, expression, kind);
}

/// Knows nothing but the decisions that were made before.
class NoMaker : public DecisionMaker {
 public:
  const Moment* Time() const override { return nullptr; }
  bool IsBackwards() const override { return false; }
  Decision Decide(Model&, NodeId, ConditionKind) const override
  {
    throw std::invalid_argument("a mode that does not decide all that counts");
  }
};

}  // namespace

Pieces::Pieces(const Model& given) : model(given)
{
  for (const NodeId id : NodesThatVary()) AddQuestions(id);
}

/// The nodes that right-hand sides and events need and that are not constant, operands first.
std::vector<NodeId> Pieces::NodesThatVary() const
{
  const Graph& graph = model.graph;
  std::vector<bool> isNeeded(graph.Size(), false);
  for (const State& state : model.states) isNeeded[state.rightHandSide] = true;
  for (const Event& event : model.events) isNeeded[event.expression] = true;
  for (NodeId id = static_cast<NodeId>(graph.Size()); id-- > 0;) {
    if (!isNeeded[id]) continue;
    for (int i = 0; i < graph[id].operandCount; ++i) isNeeded[graph[id].operands[i]] = true;
  }
  std::vector<NodeId> nodes;
  for (NodeId id = 0; id < graph.Size(); ++id) {
    if (isNeeded[id] && graph[id].dependence != Dependence::kNothing) nodes.push_back(id);
  }
  return nodes;
}

void Pieces::AddQuestions(NodeId operation)
{
  Graph& graph = model.graph;
  const Node node = graph[operation];  // a copy: the graph grows
  const NodeId a = node.operands[0], b = node.operands[1];
  switch (node.operation) {
    case Operation::kAbs:
    case Operation::kSign:
    case Operation::kAcot:
      questions[operation] = {AskSign(a, node.place)};
      break;
    case Operation::kFloor:
    case Operation::kCeil:
    case Operation::kTrunc:
      questions[operation] = {Ask(ConditionKind::kInteger, a, node.place)};
      break;
    case Operation::kMin:
    case Operation::kMax:
    case Operation::kLess:
    case Operation::kLessOrEqual:
      questions[operation] = {
          AskSign(graph.Make(Operation::kSubtract, a, b, node.place), node.place)};
      break;
    case Operation::kAtan2:
      questions[operation] = {AskSign(b, node.place), AskSign(a, node.place)};
      break;
    default:
      break;
  }
}

/// u, -u, and for differences b - a instead of a - b are one condition.
Pieces::Question Pieces::AskSign(NodeId expression, Place place)
{
  Graph& graph = model.graph;
  const Node node = graph[expression];
  Question question{0, false};
  if (node.operation == Operation::kNegate) {
    expression = node.operands[0];
    question.isNegated = true;
  } else if (node.operation == Operation::kSubtract && node.operands[1] < node.operands[0]) {
    expression = graph.Make(Operation::kSubtract, node.operands[1], node.operands[0], node.place);
    question.isNegated = true;
  }
  question.condition = Ask(ConditionKind::kSign, expression, place).condition;
  return question;
}

Pieces::Question Pieces::Ask(ConditionKind kind, NodeId expression, Place place)
{
  const auto [entry, isNew] =
      numbers.try_emplace({kind, expression}, static_cast<ConditionId>(conditions.size()));
  if (isNew) conditions.push_back({kind, expression, place});
  return {entry->second, false};
}

// ------------------------------------------------------------------------------
// Pieces

FoundPiece Pieces::At(const DecisionPoint& point, const Mode& known)
{
  return Find(known, MakerAtPoint(point));
}

FoundPiece Pieces::AtStart(const Moment& time, bool backwards, const Mode& known)
{
  return Find(known, MakerAtStart(time, backwards));
}

std::shared_ptr<const Piece> Pieces::Of(const Mode& mode)
{
  const std::scoped_lock lock(mutex);
  const auto entry = found.find(mode);
  if (entry != found.end()) return entry->second;
  return Keep(Specialisation(*this, mode, NoMaker()).Run());
}

FoundPiece Pieces::Find(const Mode& known, const DecisionMaker& maker)
{
  Specialisation specialisation(*this, known, maker);
  Piece piece = specialisation.Run();
  const std::scoped_lock lock(mutex);
  const auto entry = found.find(piece.mode);
  return {entry != found.end() ? entry->second : Keep(std::move(piece)),
          specialisation.OnBoundary()};
}

/// Compiles a piece and keeps it.
std::shared_ptr<const Piece> Pieces::Keep(Piece piece)
{
  std::vector<NodeId> watched;
  const auto add = [&watched](const Watched& each) {
    if (!each.time) watched.push_back(each.expression);
  };
  for (const Watch& watch : piece.watches) add(watch);
  for (const Watched& event : piece.events) add(event);
  piece.tape = Compile(piece.model, watched);

  std::size_t next = 0;
  const auto find = [&](Watched& each) {
    if (!each.time) each.line = piece.tape.watched[next++];
  };
  for (Watch& watch : piece.watches) find(watch);
  for (Watched& event : piece.events) find(event);

  if (found.size() >= kMostPieces) found.clear();
  auto kept = std::make_shared<const Piece>(std::move(piece));
  found[kept->mode] = kept;
  return kept;
}

}  // namespace varno::solve
