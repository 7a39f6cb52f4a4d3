#include "solve/model/real_values.h"

#include <limits>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/number/exponent_range.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kBits = 256;
/// Of which at least so many must be right, else more are taken.
constexpr double kRightBits = 64;
/// What cancels is computed anew with more bits, from its operands on; not for ever.
constexpr int kMostSharpened = 100;

}  // namespace

const std::optional<Real>& RealValues::Of(NodeId wanted)
{
  const ScopedExponentRange range;
  std::vector<NodeId> open{wanted};
  while (!open.empty()) {
    const NodeId id = open.back();
    if (known.contains(id)) {
      open.pop_back();
    } else if (!NeedOperands(graph[id], open)) {
      known.emplace(id, Evaluate(id));
      open.pop_back();
    }
  }
  return known.at(wanted).value;
}

/// Puts the operands that are not known yet on the list; whether there were any.
bool RealValues::NeedOperands(const Node& node, std::vector<NodeId>& open) const
{
  if (node.dependence != Dependence::kNothing) return false;
  const std::size_t before = open.size();
  const auto need = [&](NodeId id) {
    if (!known.contains(id)) open.push_back(id);
  };
  for (int i = 0; i < node.operandCount; ++i) need(node.operands[i]);
  if (node.operation == Operation::kParameter) need(parameters[node.index].value);
  return open.size() > before;
}

RealValues::Known RealValues::Evaluate(NodeId id)
{
  const Node& node = graph[id];
  if (node.dependence != Dependence::kNothing) return {};
  if (node.operation == Operation::kParameter) return known.at(parameters[node.index].value);
  if (node.operandCount > 0) return Operate(id);
  Real value(kBits);
  if (node.operation == Operation::kPi) {
    mpfr_const_pi(value, MPFR_RNDN);
  } else {
    mpfr_set_q(value, graph.Value(id).get_mpq_t(), MPFR_RNDN);
  }
  return {value, Log2Size(value)};
}

RealValues::Known RealValues::Operate(NodeId id)
{
  const Node& node = graph[id];
  if (IsPiecewise(node.operation)) {
    const std::optional<Real> value = Sharpen(id);
    return {value, value ? Log2Size(*value) : 0};
  }
  const Known &a = known.at(node.operands[0]),
              &b = known.at(node.operands[node.operandCount > 1 ? 1 : 0]);
  if (!a.value || !b.value) return {};
  Real result(kBits);
  if (Apply(node.operation, result, *a.value, *b.value) != Outcome::kValue) return {};
  const double size = SizeOfResult(node.operation, result, {*a.value, a.size}, {*b.value, b.size});
  const bool isExactZero = result.IsZero() && size == -std::numeric_limits<double>::infinity();
  if (isExactZero || size - Log2Size(result) < static_cast<double>(kBits) - kRightBits)
    return {result, size};
  const std::optional<Real> sharp = Sharpen(id);
  return {sharp, sharp ? Log2Size(*sharp) : 0};
}

std::optional<Real> RealValues::Sharpen(NodeId id)
{
  if (++sharpened > kMostSharpened) return std::nullopt;
  std::vector<NodeId> values;
  values.reserve(parameters.size());
  for (const Parameter& parameter : parameters) values.push_back(parameter.value);
  try {
    return EvaluateConstant(graph, id, kBits, values);
  } catch (const DomainError&) {
    return std::nullopt;
  }
}

}  // namespace varno::solve
