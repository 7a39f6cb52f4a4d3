#include "solve/model/expansion.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>

#include "solve/model/number_literal.h"

namespace varno::solve {

namespace {

/// Functions of functions can grow without bounds; so many operations are no problem of a human any
/// more, and take some hundred MB.
constexpr std::size_t kMaxExpanded = 1'000'000;

std::optional<Operation> OperationOf(ExpressionKind kind)
{
  switch (kind) {
    case ExpressionKind::kNegate:
      return Operation::kNegate;
    case ExpressionKind::kAdd:
      return Operation::kAdd;
    case ExpressionKind::kSubtract:
      return Operation::kSubtract;
    case ExpressionKind::kMultiply:
      return Operation::kMultiply;
    case ExpressionKind::kDivide:
      return Operation::kDivide;
    case ExpressionKind::kPower:
      return Operation::kPower;
    default:
      return std::nullopt;
  }
}

Rational Floor(const Rational& x)
{
  Integer result;
  mpz_fdiv_q(result.get_mpz_t(), x.get_num_mpz_t(), x.get_den_mpz_t());
  return result;
}

/// abs, sign, floor, ceil, trunc
Rational Apply(PiecewiseFunction function, const Rational& x)
{
  switch (function) {
    case PiecewiseFunction::kAbs:
      return abs(x);
    case PiecewiseFunction::kSign:
      return sgn(x);
    case PiecewiseFunction::kFloor:
      return Floor(x);
    case PiecewiseFunction::kCeil:
      return -Floor(-x);
    default:
      return x < 0 ? Rational(-Floor(-x)) : Floor(x);
  }
}

}  // namespace

std::size_t Expansion::CallHash::operator()(const std::vector<NodeId>& call) const
{
  const std::string_view bytes(reinterpret_cast<const char*>(call.data()),
                               call.size() * sizeof(NodeId));
  return std::hash<std::string_view>()(bytes);
}

Expansion::Expansion(Graph& graph, ValueFaults& valueFaults, const Declarations& declarations,
                     const Resolution& resolution, const Sources& sources, Diagnostics& diagnostics)
    : graph(graph),
      valueFaults(valueFaults),
      declarations(declarations),
      resolution(resolution),
      sources(sources),
      diagnostics(diagnostics),
      declarationNodes(declarations.Size(), kNoNode)
{}

NodeId Expansion::Expand(const Tree& tree)
{
  const std::size_t before = faults.size();
  const NodeId node = Run(tree);
  for (std::size_t i = before; node == kNoNode && i < faults.size(); ++i) faults[i].inBroken = true;
  return node;
}

void Expansion::ReportValueFaults(const std::vector<NodeId>& roots)
{
  if (faults.empty()) return;
  std::vector<bool> isReached(graph.Size(), false);
  for (const NodeId root : roots) {
    if (root != kNoNode) isReached[root] = true;
  }
  // Operands have smaller numbers than the nodes that use them.
  for (NodeId id = static_cast<NodeId>(isReached.size()); id-- > 0;) {
    if (!isReached[id]) continue;
    for (int i = 0; i < graph[id].operandCount; ++i) isReached[graph[id].operands[i]] = true;
  }
  for (const Fault& fault : faults) {
    if (fault.inBroken || isReached[fault.node]) diagnostics.Error(fault.place, fault.message);
  }
}

// ------------------------------------------------------------------------------
// Frames

NodeId Expansion::Run(const Tree& tree)
{
  Push(tree, {});
  while (!frames.empty()) {
    if (frames.back().next > frames.back().root) {
      Finish();
    } else {
      Step();
    }
  }
  return finished;
}

void Expansion::Push(const Tree& tree, std::vector<NodeId> call)
{
  const ExpressionId first = (*tree.syntax)[tree.root].first;
  Frame frame{tree.syntax,    &resolution.Of(*tree.syntax), first, first, tree.root, {},
              std::move(call)};
  frame.results.reserve(tree.root - first + 1);
  frames.push_back(std::move(frame));
}

void Expansion::Finish()
{
  const Frame frame = std::move(frames.back());
  frames.pop_back();
  const Result result = frame.results.back();
  finished = IsNode(result) ? result : kNoNode;
  if (frames.empty()) return;
  Give(finished);
  calls.emplace(frame.call, finished);
}

/// Evaluates the next expression, or begins with the function that it calls.
void Expansion::Step()
{
  const Frame& frame = frames.back();
  const Expression& expression = (*frame.syntax)[frame.next];
  const Binding& binding = (*frame.bindings)[frame.next];
  if (expression.kind == ExpressionKind::kCall && binding.kind == Binding::Kind::kFunction) {
    TakeCall(expression, binding.index);
  } else {
    Give(Evaluate(frame.next));
  }
}

void Expansion::Give(Result result)
{
  frames.back().results.push_back(result);
  ++frames.back().next;
}

void Expansion::TakeCall(const Expression& expression, std::uint32_t function)
{
  const ExpressionId id = frames.back().next;
  std::vector<NodeId> call = {function};
  for (std::size_t i = 0; i < expression.operandCount; ++i) call.push_back(Operand(id, i));

  const auto known = calls.find(call);
  if (known != calls.end()) {
    Give(known->second);
  } else if (!HasAllOperands(id) || declarationNodes[function] == kNoNode ||
             !MayExpand(expression, declarations[function].tree)) {
    Give(kNoNode);
  } else {
    Push(declarations[function].tree, std::move(call));
  }
}

/// False when functions have been expanded to too many operations.
bool Expansion::MayExpand(const Expression& call, const Tree& body)
{
  if (expanded > kMaxExpanded) return false;
  expanded += body.root - (*body.syntax)[body.root].first + 1;
  if (expanded <= kMaxExpanded) return true;
  diagnostics.Error(
      call.place,
      "the functions expand to more than " + std::to_string(kMaxExpanded) + " operations",
      "introduce definitions for what is used again");
  return false;
}

// ------------------------------------------------------------------------------
// Expressions

Expansion::Result Expansion::Operand(ExpressionId id, std::size_t i) const
{
  const Frame& frame = frames.back();
  return frame.results[frame.syntax->Operands(id)[i] - frame.first];
}

bool Expansion::HasAllOperands(ExpressionId id) const
{
  for (std::size_t i = 0; i < (*frames.back().syntax)[id].operandCount; ++i) {
    if (!IsNode(Operand(id, i))) return false;
  }
  return true;
}

bool Expansion::HasExactOperands(ExpressionId id) const
{
  for (std::size_t i = 0; i < (*frames.back().syntax)[id].operandCount; ++i) {
    if (!IsNode(Operand(id, i)) || !graph.IsNumber(Operand(id, i))) return false;
  }
  return true;
}

Expansion::Result Expansion::Evaluate(ExpressionId id)
{
  const Expression& expression = (*frames.back().syntax)[id];
  switch (expression.kind) {
    case ExpressionKind::kNumber:
      return EvaluateNumber(expression);
    case ExpressionKind::kPi:
      return graph.Leaf(Operation::kPi, expression.place);
    case ExpressionKind::kTime:
      return graph.Leaf(Operation::kTime, expression.place);
    case ExpressionKind::kName:
      return EvaluateName(id);
    case ExpressionKind::kLess:
    case ExpressionKind::kLessEqual:
    case ExpressionKind::kGreater:
    case ExpressionKind::kGreaterEqual:
      return EvaluateComparison(id);
    case ExpressionKind::kAnd:
    case ExpressionKind::kOr:
    case ExpressionKind::kNot:
      return EvaluateLogic(id);
    case ExpressionKind::kCall: {
      const Binding& binding = (*frames.back().bindings)[id];
      if (binding.kind != Binding::Kind::kBuiltIn) return kNoNode;
      return EvaluateBuiltIn(id, BuiltInFunctions()[binding.index]);
    }
    case ExpressionKind::kStep:
      return NotYet(expression.place, id, "step functions");
    case ExpressionKind::kSegment:
      return kNoNode;
    default:
      return Make(*OperationOf(expression.kind), id);
  }
}

Expansion::Result Expansion::EvaluateNumber(const Expression& number)
{
  // The place may cover parentheses; the name does not.
  const std::optional<NodeId> node = AddNumber(graph, sources.Text(number.name), number.place);
  if (node) return *node;
  diagnostics.Error(number.place, "the exponent of this number is too large",
                    "exponents go from -10^18 to 10^18");
  return kNoNode;
}

Expansion::Result Expansion::EvaluateName(ExpressionId id)
{
  const Frame& frame = frames.back();
  const Binding& binding = (*frame.bindings)[id];
  switch (binding.kind) {
    case Binding::Kind::kState:
      return graph.State(binding.index, (*frame.syntax)[id].place);
    case Binding::Kind::kDeclaration:
      return declarationNodes[binding.index];
    case Binding::Kind::kParameter:
      return frame.call[binding.index + 1];
    default:
      return kNoNode;
  }
}

Expansion::Result Expansion::Make(Operation operation, ExpressionId id)
{
  if (!HasAllOperands(id)) return kNoNode;
  const Expression& expression = (*frames.back().syntax)[id];
  const NodeId node = expression.operandCount == 1
                          ? graph.Make(operation, Operand(id, 0), expression.place)
                          : graph.Make(operation, Operand(id, 0), Operand(id, 1), expression.place);
  if (std::string fault = valueFaults.Of(node); !fault.empty())
    faults.push_back({node, expression.place, std::move(fault), false});
  return node;
}

// ------------------------------------------------------------------------------
// Kinks and jumps: exact numbers only

Expansion::Result Expansion::NotYet(Place place, ExpressionId id, const std::string& what)
{
  if (reported.emplace(frames.back().syntax, id).second) {
    diagnostics.Error(place, "not yet: " + what,
                      "functions with kinks and jumps work for numbers only so far");
  }
  return kNoNode;
}

Expansion::Result Expansion::EvaluateBuiltIn(ExpressionId id, const BuiltInFunction& function)
{
  return function.operation ? Make(*function.operation, id) : EvaluatePiecewise(id, function);
}

Expansion::Result Expansion::EvaluatePiecewise(ExpressionId id, const BuiltInFunction& function)
{
  const Frame& frame = frames.back();
  const Expression& call = (*frame.syntax)[id];
  if (function.piecewise == PiecewiseFunction::kIf) {
    if (Operand(id, 0) == kTrue || Operand(id, 0) == kFalse)
      return Operand(id, Operand(id, 0) == kTrue ? 1 : 2);
  } else {
    if (!HasAllOperands(id)) return kNoNode;
    if (HasExactOperands(id)) return EvaluateExactly(id, function.piecewise);
  }
  return NotYet(call.name, id, "'" + std::string(function.name) + "' of what is not a number");
}

Expansion::Result Expansion::EvaluateExactly(ExpressionId id, PiecewiseFunction function)
{
  const Place place = (*frames.back().syntax)[id].place;
  Rational value = graph.Value(Operand(id, 0));
  if (function != PiecewiseFunction::kMin && function != PiecewiseFunction::kMax) {
    return graph.Number(Apply(function, value), place);
  }
  for (std::size_t i = 1; i < (*frames.back().syntax)[id].operandCount; ++i) {
    const Rational& other = graph.Value(Operand(id, i));
    value = function == PiecewiseFunction::kMin ? std::min(value, other) : std::max(value, other);
  }
  return graph.Number(value, place);
}

Expansion::Result Expansion::EvaluateComparison(ExpressionId id)
{
  if (!HasExactOperands(id)) return kNoNode;
  const Rational& a = graph.Value(Operand(id, 0));
  const Rational& b = graph.Value(Operand(id, 1));
  switch ((*frames.back().syntax)[id].kind) {
    case ExpressionKind::kLess:
      return a < b ? kTrue : kFalse;
    case ExpressionKind::kLessEqual:
      return a <= b ? kTrue : kFalse;
    case ExpressionKind::kGreater:
      return a > b ? kTrue : kFalse;
    default:
      return a >= b ? kTrue : kFalse;
  }
}

Expansion::Result Expansion::EvaluateLogic(ExpressionId id)
{
  const ExpressionKind kind = (*frames.back().syntax)[id].kind;
  const Result a = Operand(id, 0);
  if (a != kTrue && a != kFalse) return kNoNode;
  if (kind == ExpressionKind::kNot) return a == kTrue ? kFalse : kTrue;
  const Result b = Operand(id, 1);
  if (b != kTrue && b != kFalse) return kNoNode;
  if (kind == ExpressionKind::kAnd) return a == kTrue ? b : kFalse;
  return a == kTrue ? kTrue : b;
}

}  // namespace varno::solve
