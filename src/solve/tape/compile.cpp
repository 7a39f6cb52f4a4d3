#include "solve/tape/compile.h"

#include <cassert>
#include <optional>
#include <utility>
#include <vector>

#include "solve/tape/degree.h"
#include "solve/tape/functions.h"
#include "solve/tape/line_table.h"
#include "solve/tape/linear_form.h"

namespace varno::solve {

namespace {

/// Integer powers up to this size become products; larger ones are computed as real powers.
constexpr long kLargestProductPower = 1L << 20;
/// A scaled sum of more operands than this becomes a line of its own first: scaling it again and
/// again inside nested sums would cost quadratic time.
constexpr std::size_t kMostScaledTerms = 64;

/// Turns the nodes of a graph, operands first, into linear forms over lines.
class Compiler {
 public:
  explicit Compiler(const Model& model);
  Tape Run(const Model& model, const std::vector<NodeId>& watched) &&;

 private:
  void CountUses(const Model& model, const std::vector<NodeId>& watched);
  LinearForm Form(NodeId id);
  LinearForm FormOf(const Node& node, NodeId id);
  LinearForm Product(LinearForm a, LinearForm b, NodeId id);
  LinearForm Quotient(LinearForm a, LinearForm b, NodeId id);
  LinearForm Power(NodeId base, NodeId exponent, NodeId id);
  LinearForm IntegerPower(LinearForm base, const Integer& exponent, NodeId id);
  LinearForm Scaled(LinearForm a, NodeId factor, NodeId id);
  std::optional<NodeId> ConstantOf(LinearForm& form);
  /// The form that stands for an operand; its last user takes it over.
  LinearForm Take(NodeId id);
  bool IsConstant(NodeId id) const { return tape.graph[id].dependence == Dependence::kNothing; }

  Tape tape;
  LinearArithmetic arithmetic;
  LineTable lines;
  std::vector<std::uint32_t> uses;
  std::vector<std::optional<LinearForm>> forms;
};

Compiler::Compiler(const Model& model)
    : tape{.lines = {},
           .factors = {},
           .constants = {},
           .rightHandSides = {},
           .watched = {},
           .graph = model.graph},
      arithmetic(tape.graph),
      lines(tape, arithmetic)
{}

/// Counts for each node how many needed nodes use it; 0 for those that nothing needs.
void Compiler::CountUses(const Model& model, const std::vector<NodeId>& watched)
{
  uses.assign(model.graph.Size(), 0);
  std::vector<NodeId> open;
  const auto use = [&](NodeId id) {
    if (uses[id]++ == 0) open.push_back(id);
  };
  for (const State& state : model.states) use(state.rightHandSide);
  for (const NodeId id : watched) use(id);
  while (!open.empty()) {
    const Node& node = model.graph[open.back()];
    open.pop_back();
    if (node.dependence == Dependence::kNothing) continue;
    for (int i = 0; i < node.operandCount; ++i) use(node.operands[i]);
  }
}

LinearForm Compiler::Take(NodeId id)
{
  if (IsConstant(id)) return arithmetic.Constant(id);
  assert(forms[id]);
  if (--uses[id] > 0) return *forms[id];
  return *std::exchange(forms[id], std::nullopt);
}

LinearForm Compiler::Scaled(LinearForm a, NodeId factor, NodeId id)
{
  if (a.terms.size() > kMostScaledTerms) a = arithmetic.Single(lines.Materialise(std::move(a), id));
  return arithmetic.Scale(std::move(a), factor);
}

/// The constant that a form is, as that of t - t, where it is one: functions of it are constants,
/// too, which are computed to their last digit however much cancels.
std::optional<NodeId> Compiler::ConstantOf(LinearForm& form)
{
  arithmetic.Normalise(form);
  return form.terms.empty() ? std::optional(form.constant) : std::nullopt;
}

LinearForm Compiler::Product(LinearForm a, LinearForm b, NodeId id)
{
  // (p u) (q v) = (p q) (u v): constant factors stay outside, so that equal products are found.
  const auto [p, u] = lines.FactorAndLine(std::move(a), id);
  const auto [q, v] = lines.FactorAndLine(std::move(b), id);
  return arithmetic.Scale(arithmetic.Scale(arithmetic.Single(lines.Product(u, v, id)), p), q);
}

LinearForm Compiler::Quotient(LinearForm a, LinearForm b, NodeId id)
{
  const auto [q, v] = lines.FactorAndLine(std::move(b), id);
  const NodeId inverse =
      tape.graph.Make(Operation::kDivide, arithmetic.One(), q, tape.graph[id].place);
  if (a.terms.empty()) {
    const LineId reciprocal = lines.Quotient(lines.Constant(arithmetic.One(), id), v, id);
    return arithmetic.Scale(arithmetic.Scale(arithmetic.Single(reciprocal), a.constant), inverse);
  }
  const auto [p, u] = lines.FactorAndLine(std::move(a), id);
  return arithmetic.Scale(arithmetic.Scale(arithmetic.Single(lines.Quotient(u, v, id)), p),
                          inverse);
}

/// base^exponent by squaring and multiplying.
LinearForm Compiler::IntegerPower(LinearForm base, const Integer& exponent, NodeId id)
{
  const LineId line = lines.Materialise(std::move(base), id);
  const Integer size = abs(exponent);
  LineId power = line;
  for (long bit = static_cast<long>(mpz_sizeinbase(size.get_mpz_t(), 2)) - 2; bit >= 0; --bit) {
    power = lines.Product(power, power, id);
    if (mpz_tstbit(size.get_mpz_t(), static_cast<mp_bitcnt_t>(bit)) != 0) {
      power = lines.Product(power, line, id);
    }
  }
  if (sgn(exponent) > 0) return arithmetic.Single(power);
  return arithmetic.Single(lines.Quotient(lines.Constant(arithmetic.One(), id), power, id));
}

LinearForm Compiler::Power(NodeId base, NodeId exponent, NodeId id)
{
  const Graph& graph = tape.graph;
  if (IsConstant(exponent)) {
    if (graph.IsNumber(exponent)) {
      const Rational& value = graph.Value(exponent);
      if (sgn(value) == 0) return arithmetic.Constant(arithmetic.One());  // of 0, too
      if (value.get_den() == 1 && abs(value.get_num()) <= kLargestProductPower) {
        return IntegerPower(Take(base), Integer(value.get_num()), id);
      }
      if (value == Rational(1, 2)) {
        return arithmetic.Single(lines.SquareRoot(lines.Materialise(Take(base), id), id));
      }
    }
    return arithmetic.Single(
        lines.Power(lines.Materialise(Take(base), id), Operation::kPower, exponent, id));
  }
  // b^u = exp(u ln b)
  if (IsConstant(base)) {
    const NodeId logarithm = tape.graph.Make(Operation::kLn, base, graph[id].place);
    const LineId argument = lines.Materialise(Scaled(Take(exponent), logarithm, id), id);
    return arithmetic.Single(AddFunction(lines, arithmetic, Operation::kExp, argument, id));
  }
  const LineId logarithm =
      AddFunction(lines, arithmetic, Operation::kLn, lines.Materialise(Take(base), id), id);
  const LineId product = lines.Product(lines.Materialise(Take(exponent), id), logarithm, id);
  return arithmetic.Single(AddFunction(lines, arithmetic, Operation::kExp, product, id));
}

LinearForm Compiler::FormOf(const Node& node, NodeId id)
{
  switch (node.operation) {
    case Operation::kTime:
      return arithmetic.Single(lines.Time(id));
    case Operation::kState:
      return arithmetic.Single(node.index);
    case Operation::kNegate:
      return Scaled(Take(node.operands[0]), arithmetic.MinusOne(), id);
    case Operation::kAdd:
      return arithmetic.Add(Take(node.operands[0]), Take(node.operands[1]));
    case Operation::kSubtract: {
      LinearForm a = Take(node.operands[0]);
      return arithmetic.Add(std::move(a),
                            Scaled(Take(node.operands[1]), arithmetic.MinusOne(), id));
    }
    case Operation::kMultiply: {
      if (IsConstant(node.operands[0])) return Scaled(Take(node.operands[1]), node.operands[0], id);
      if (IsConstant(node.operands[1])) return Scaled(Take(node.operands[0]), node.operands[1], id);
      LinearForm a = Take(node.operands[0]), b = Take(node.operands[1]);
      if (const auto factor = ConstantOf(a)) return Scaled(std::move(b), *factor, id);
      if (const auto factor = ConstantOf(b)) return Scaled(std::move(a), *factor, id);
      return Product(std::move(a), std::move(b), id);
    }
    case Operation::kDivide: {
      LinearForm a = Take(node.operands[0]);
      if (!IsConstant(node.operands[1])) return Quotient(std::move(a), Take(node.operands[1]), id);
      const NodeId inverse =
          tape.graph.Make(Operation::kDivide, arithmetic.One(), node.operands[1], node.place);
      return Scaled(std::move(a), inverse, id);
    }
    case Operation::kPower:
      return Power(node.operands[0], node.operands[1], id);
    case Operation::kAtan2: {
      const LineId y = lines.Materialise(Take(node.operands[0]), id);
      const LineId x = lines.Materialise(Take(node.operands[1]), id);
      return arithmetic.Single(AddAngle(lines, arithmetic, y, x, id));
    }
    default: {
      LinearForm form = Take(node.operands[0]);
      if (const auto constant = ConstantOf(form))
        return arithmetic.Constant(tape.graph.Make(node.operation, *constant, node.place));
      const LineId argument = lines.Materialise(std::move(form), id);
      return arithmetic.Single(AddFunction(lines, arithmetic, node.operation, argument, id));
    }
  }
}

LinearForm Compiler::Form(NodeId id)
{
  const Node node = tape.graph[id];  // a copy: the graph grows meanwhile
  LinearForm form = FormOf(node, id);
  // A sum that several operations use is computed once.
  if (uses[id] > 1 && form.terms.size() > 1) {
    form = arithmetic.Single(lines.Materialise(std::move(form), id));
  }
  return form;
}

Tape Compiler::Run(const Model& model, const std::vector<NodeId>& watched) &&
{
  CountUses(model, watched);
  forms.resize(uses.size());
  for (std::uint32_t i = 0; i < model.states.size(); ++i)
    lines.AddState(i, model.states[i].rightHandSide);
  for (NodeId id = 0; id < forms.size(); ++id) {
    if (uses[id] > 0 && !IsConstant(id)) forms[id] = Form(id);
  }
  for (const State& state : model.states) {
    tape.rightHandSides.push_back(
        lines.Materialise(Take(state.rightHandSide), state.rightHandSide));
  }
  for (const NodeId id : watched) tape.watched.push_back(lines.Materialise(Take(id), id));
  SetDegrees(tape);
  return std::move(tape);
}

}  // namespace

Tape Compile(const Model& model, const std::vector<NodeId>& watched)
{
  return Compiler(model).Run(model, watched);
}

}  // namespace varno::solve
