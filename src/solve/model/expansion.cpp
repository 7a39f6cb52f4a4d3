#include "solve/model/expansion.h"

#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

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
    case ExpressionKind::kLess:
      return Operation::kLess;
    case ExpressionKind::kLessEqual:
      return Operation::kLessOrEqual;
    case ExpressionKind::kAnd:
      return Operation::kAnd;
    case ExpressionKind::kOr:
      return Operation::kOr;
    case ExpressionKind::kNot:
      return Operation::kNot;
    default:
      return std::nullopt;
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
    if (isReached[id]) MarkNeeded(id, isReached);
  }
  for (const Fault& fault : faults) {
    if (fault.inBroken || isReached[fault.node]) diagnostics.Error(fault.place, fault.message);
  }
}

/// Marks the operands that a node is sure to look at.
void Expansion::MarkNeeded(NodeId id, std::vector<bool>& isNeeded)
{
  const Node& node = graph[id];
  const bool isChoice = IsChoice(node.operation);
  for (int i = 0; i < node.operandCount && (i == 0 || !isChoice); ++i)
    isNeeded[node.operands[i]] = true;
  if (!isChoice) return;
  const std::optional<bool> holds = valueFaults.Holds(node.operands[0]);
  if (!holds) return;
  if (node.operation == Operation::kIf) {
    isNeeded[node.operands[*holds ? 1 : 2]] = true;
  } else if (*holds == (node.operation == Operation::kAnd)) {
    isNeeded[node.operands[1]] = true;
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
  finished = frame.results.back();
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

void Expansion::Give(NodeId result)
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

NodeId Expansion::Operand(ExpressionId id, std::size_t i) const
{
  const Frame& frame = frames.back();
  return frame.results[frame.syntax->Operands(id)[i] - frame.first];
}

bool Expansion::HasAllOperands(ExpressionId id) const
{
  for (std::size_t i = 0; i < (*frames.back().syntax)[id].operandCount; ++i) {
    if (Operand(id, i) == kNoNode) return false;
  }
  return true;
}

NodeId Expansion::Evaluate(ExpressionId id)
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
    case ExpressionKind::kGreater:
      return MakeSwapped(Operation::kLess, id);
    case ExpressionKind::kGreaterEqual:
      return MakeSwapped(Operation::kLessOrEqual, id);
    case ExpressionKind::kCall: {
      const Binding& binding = (*frames.back().bindings)[id];
      if (binding.kind != Binding::Kind::kBuiltIn) return kNoNode;
      return EvaluateBuiltIn(id, BuiltInFunctions()[binding.index]);
    }
    case ExpressionKind::kStep:
      return EvaluateStep(id);
    case ExpressionKind::kSegment:
      return kNoNode;  // its step function looks at its parts
    default:
      return Make(*OperationOf(expression.kind), id);
  }
}

NodeId Expansion::EvaluateNumber(const Expression& number)
{
  // The place may cover parentheses; the name does not.
  const std::optional<NodeId> node = AddNumber(graph, sources.Text(number.name), number.place);
  if (node) return *node;
  diagnostics.Error(number.place, "the exponent of this number is too large",
                    "exponents go from -10^18 to 10^18");
  return kNoNode;
}

NodeId Expansion::EvaluateName(ExpressionId id)
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

NodeId Expansion::Make(Operation operation, ExpressionId id)
{
  if (!HasAllOperands(id)) return kNoNode;
  const Expression& expression = (*frames.back().syntax)[id];
  const Place place = expression.place;
  NodeId node = 0;
  if (expression.operandCount == 1) {
    node = graph.Make(operation, Operand(id, 0), place);
  } else if (expression.operandCount == 2) {
    node = graph.Make(operation, Operand(id, 0), Operand(id, 1), place);
  } else {
    node = graph.Make(operation, Operand(id, 0), Operand(id, 1), Operand(id, 2), place);
  }
  if (std::string fault = valueFaults.Of(node); !fault.empty())
    faults.push_back({node, place, std::move(fault), false});
  return node;
}

NodeId Expansion::EvaluateBuiltIn(ExpressionId id, const BuiltInFunction& function)
{
  const bool takesAnyNumber = function.maxArguments > function.minArguments;
  return takesAnyNumber ? Extreme(function.operation, id) : Make(function.operation, id);
}

// ------------------------------------------------------------------------------
// Kinks and jumps

/// a > b is b < a.
NodeId Expansion::MakeSwapped(Operation operation, ExpressionId id)
{
  if (!HasAllOperands(id)) return kNoNode;
  return graph.Make(operation, Operand(id, 1), Operand(id, 0), (*frames.back().syntax)[id].place);
}

/// The smallest or largest of any number of arguments.
NodeId Expansion::Extreme(Operation operation, ExpressionId id)
{
  if (!HasAllOperands(id)) return kNoNode;
  const Expression& call = (*frames.back().syntax)[id];
  NodeId node = Operand(id, 0);
  for (std::size_t i = 1; i < call.operandCount; ++i)
    node = graph.Make(operation, node, Operand(id, i), call.place);
  return node;
}

/// [s < a, b : u; c : v] is if(a <= s and s < b, u, if(s < c, v, 0)).
NodeId Expansion::EvaluateStep(ExpressionId id)
{
  const Syntax& syntax = *frames.back().syntax;
  const std::span<const ExpressionId> operands = syntax.Operands(id);
  const NodeId subject = Operand(id, 0);
  NodeId node = graph.Number(0, syntax[id].place);
  for (std::size_t i = operands.size() - 1; i > 0; --i)
    node = EvaluateSegment(subject, operands[i], node);
  return node;
}

NodeId Expansion::EvaluateSegment(NodeId subject, ExpressionId segment, NodeId otherwise)
{
  const Expression& expression = (*frames.back().syntax)[segment];
  // More than two limits have been reported.
  if (expression.operandCount > 3 || !HasAllOperands(segment) || subject == kNoNode ||
      otherwise == kNoNode)
    return kNoNode;
  const Place place = expression.place;
  const std::size_t last = expression.operandCount - 2;  // limit
  NodeId holds = graph.Make(Operation::kLess, subject, Operand(segment, last), place);
  if (last > 0) {
    const NodeId first = graph.Make(Operation::kLessOrEqual, Operand(segment, 0), subject, place);
    holds = graph.Make(Operation::kAnd, first, holds, place);
  }
  return graph.Make(Operation::kIf, holds, Operand(segment, last + 1), otherwise, place);
}

}  // namespace varno::solve
