#include "solve/evaluation/evaluator.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/elementary.h"
#include "solve/evaluation/size.h"
#include "solve/graph/fold.h"

namespace varno::solve {

namespace {

constexpr std::uint32_t kNoExponent = UINT32_MAX;

std::optional<std::uint32_t> Undone(std::uint32_t place, const std::vector<bool>& done)
{
  return done[place] ? std::nullopt : std::optional(place);
}

/// All nodes below the roots and the roots, each once, operands first; nothing below those known.
std::vector<NodeId> Below(const Graph& graph, const std::vector<NodeId>& roots,
                          std::span<const NodeId> parameters,
                          const std::unordered_map<NodeId, Real>& constants)
{
  std::vector<NodeId> found, open = roots;
  std::unordered_set<NodeId> seen;
  while (!open.empty()) {
    const NodeId id = open.back();
    open.pop_back();
    if (!seen.insert(id).second) continue;
    found.push_back(id);
    if (constants.contains(id)) continue;
    const Node& node = graph[id];
    for (int i = 0; i < node.operandCount; ++i) open.push_back(node.operands[i]);
    if (node.operation == Operation::kParameter) open.push_back(parameters[node.index]);
  }
  std::ranges::sort(found);
  return found;
}

}  // namespace

Evaluator::Evaluator(const Graph& graph, const std::vector<NodeId>& roots, mpfr_prec_t bits,
                     std::span<const NodeId> parameters,
                     const std::unordered_map<NodeId, Real>& constants)
{
  std::unordered_map<NodeId, std::uint32_t> places;
  for (const NodeId id : Below(graph, roots, parameters, constants)) {
    const Node& node = graph[id];
    places[id] = static_cast<std::uint32_t>(values.size());
    Step& step = steps.emplace_back();
    if (const auto constant = constants.find(id); constant != constants.end()) {
      step = {Operation::kNumber, 0, id, 0, 0, 0, 0};
      mpfr_set(values.emplace_back(bits), constant->second, MPFR_RNDN);
      exactValues.emplace_back();
      continue;
    }
    step = {node.operation, node.operandCount, id, 0, 0, 0, node.index};
    if (node.operandCount > 0) step.a = places[node.operands[0]];
    if (node.operandCount > 1) step.b = places[node.operands[1]];
    if (node.operandCount > 2) step.c = places[node.operands[2]];
    usesTime |= node.operation == Operation::kTime;
    hasPiecewise |= IsPiecewise(node.operation);
    hasChoices |= IsChoice(node.operation);
    // The value of a parameter has a smaller number than the leaf.
    if (node.operation == Operation::kParameter) step.a = places[parameters[node.index]];
    if (node.operation == Operation::kPower) step.index = AddExponent(graph, node);
    values.emplace_back(bits);
    exactValues.emplace_back();
    if (node.operation == Operation::kNumber) {
      mpfr_set_q(values.back(), graph.Value(id).get_mpq_t(), MPFR_RNDN);
      exactValues.back() = graph.Value(id);
    } else if (node.operation == Operation::kPi) {
      mpfr_const_pi(values.back(), MPFR_RNDN);
    }
  }
  for (const NodeId root : roots) rootPlaces.push_back(places[root]);
  computed.resize(steps.size());
  std::iota(computed.begin(), computed.end(), 0);
}

/// Visits all that the roots need, operands first.
template <class Visit>
void Evaluator::ForEachNeeded(Visit visit)
{
  if (!hasChoices) {
    for (const std::uint32_t place : computed) visit(place);
    return;
  }
  computed.clear();
  std::vector<bool> done(steps.size(), false);
  std::vector<std::uint32_t> open = rootPlaces;
  while (!open.empty()) {
    const std::uint32_t place = open.back();
    const std::optional<std::uint32_t> next =
        done[place] ? std::nullopt : NextNeeded(steps[place], done);
    if (next) {
      open.push_back(*next);
      continue;
    }
    open.pop_back();
    if (done[place]) continue;
    visit(place);
    done[place] = true;
    computed.push_back(place);
  }
}

/// An operand that must come before the step.
std::optional<std::uint32_t> Evaluator::NextNeeded(const Step& step,
                                                   const std::vector<bool>& done) const
{
  if (step.operation == Operation::kParameter) return Undone(step.a, done);
  if (step.operandCount == 0) return std::nullopt;
  if (!done[step.a]) return step.a;
  if (const auto chosen = Chosen(step)) return Undone(*chosen, done);
  return step.operandCount > 1 ? Undone(step.b, done) : std::nullopt;
}

/// The place whose value a choice takes; its condition has been computed. None for other steps.
std::optional<std::uint32_t> Evaluator::Chosen(const Step& step) const
{
  if (!IsChoice(step.operation)) return std::nullopt;
  const bool holds = !values[step.a].IsZero();
  switch (step.operation) {
    case Operation::kAnd:
      return holds ? step.b : step.a;
    case Operation::kOr:
      return holds ? step.a : step.b;
    default:
      return holds ? step.b : step.c;
  }
}

/// Keeps the exponent of a power if it is a whole number; returns its place, or kNoExponent.
std::uint32_t Evaluator::AddExponent(const Graph& graph, const Node& node)
{
  const NodeId exponent = node.operands[1];
  if (!graph.IsNumber(exponent) || graph.Value(exponent).get_den() != 1) return kNoExponent;
  exponents.push_back(graph.Value(exponent).get_num());
  return static_cast<std::uint32_t>(exponents.size() - 1);
}

void Evaluator::Compute(std::size_t place, mpfr_srcptr time, std::span<const Real> states)
{
  const Step& step = steps[place];
  switch (step.operation) {
    case Operation::kNumber:
    case Operation::kPi:
      return;
    case Operation::kTime:
      mpfr_set(values[place], time, MPFR_RNDN);
      return;
    case Operation::kState:
      mpfr_set(values[place], states[step.index], MPFR_RNDN);
      return;
    case Operation::kParameter:
      mpfr_set(values[place], values[step.a], MPFR_RNDN);
      return;
    default:
      break;
  }
  if (const auto chosen = Chosen(step)) {
    mpfr_set(values[place], values[*chosen], MPFR_RNDN);
  } else {
    Operate(step, values[place], values[step.a], values[step.b]);
  }
}

void Evaluator::Operate(const Step& step, mpfr_ptr result, const Real& a, const Real& b)
{
  const Outcome outcome = HasWholeExponent(step) ? ApplyPower(result, a, exponents[step.index])
                                                 : Apply(step.operation, result, a, b);
  if (outcome == Outcome::kValue) return;
  throw DomainError{outcome, step.node, step.operation == Operation::kDivide ? b : a};
}

bool Evaluator::HasWholeExponent(const Step& step) const
{
  return step.operation == Operation::kPower && step.index != kNoExponent;
}

void Evaluator::Evaluate(mpfr_srcptr time, std::span<const Real> states)
{
  ForEachNeeded([&](std::size_t place) { Compute(place, time, states); });
}

double Evaluator::ComputeSize(std::size_t place, std::span<const double> stateSizes) const
{
  const Step& step = steps[place];
  switch (step.operation) {
    case Operation::kNumber:
    case Operation::kPi:
    case Operation::kTime:
      return Log2Size(values[place]);
    case Operation::kState:
      return std::max(Log2Size(values[place]), stateSizes[step.index]);
    case Operation::kParameter:
      return sizes[step.a];
    default:
      break;
  }
  if (const auto chosen = Chosen(step)) return sizes[*chosen];
  return SizeOfResult(step.operation, values[place], {values[step.a], sizes[step.a]},
                      {values[step.b], sizes[step.b]});
}

void Evaluator::EvaluateSizes(std::span<const double> stateSizes)
{
  sizes.resize(steps.size());
  for (const std::uint32_t place : computed) sizes[place] = ComputeSize(place, stateSizes);
}

void Evaluator::ComputeAtEdge(std::size_t place, const Edge& edge, const EdgeRule& rule)
{
  const Step& step = steps[place];
  const Real &a = values[step.a], &b = values[step.b];
  Operate(step, values[place], edge.isSecond ? a : edge.argument,
          edge.isSecond ? edge.argument : b);
  sizes[place] = SizeAtEdge(edge, values[place], sizes[edge.isSecond ? step.b : step.a], rule);
}

double Evaluator::ComputeSpan(std::size_t place) const
{
  const Step& step = steps[place];
  const double own = std::isfinite(sizes[place]) ? std::abs(sizes[place]) : 0;
  return std::max({own, spans[step.a], spans[step.b], spans[step.c]});
}

bool Evaluator::IsRoot(std::size_t place) const
{
  return std::ranges::find(rootPlaces, place) != rootPlaces.end();
}

/// Whether a step has an exact value, at a time that is a fraction; then it is computed.
bool Evaluator::ComputeExactly(std::size_t place, const Rational& time)
{
  const Step& step = steps[place];
  std::optional<Rational>& exact = exactValues[place];
  if (step.operandCount == 0) {
    if (step.operation == Operation::kTime) exact = time;
    return false;
  }
  if (const auto chosen = Chosen(step)) {
    exact = exactValues[*chosen];
    return false;
  }
  const std::optional<Rational>&a = exactValues[step.a], &b = exactValues[step.b];
  exact.reset();
  if (step.operandCount == 1 && a) exact = FoldExactly(step.operation, *a);
  if (step.operandCount == 2 && a && b) exact = FoldExactly(step.operation, *a, *b);
  if (!exact) return false;
  mpfr_set_q(values[place], exact->get_mpq_t(), MPFR_RNDN);
  sizes[place] = Log2Size(values[place]);
  spans[place] = ComputeSpan(place);
  return true;
}

void Evaluator::ComputeSized(std::size_t place, mpfr_srcptr time, std::span<const Real> states,
                             std::span<const double> stateSizes, const EdgeRule& rule)
{
  const Step& step = steps[place];
  const std::optional<Edge> edge =
      EdgeAt(step.operation, HasWholeExponent(step), {values[step.a], sizes[step.a]},
             {values[step.b], sizes[step.b]}, rule);
  mpfr_clear_underflow();
  if (edge) {
    const double span = spans[edge->isSecond ? step.b : step.a];
    if (!rule.MayDeclareZero(span)) throw EdgeInDoubt{rule.spanFactor * span};
    ComputeAtEdge(place, *edge, rule);
    spans[place] = span;
    isAtJump |= IsPiecewise(step.operation);
    return;
  }
  Compute(place, time, states);
  if (mpfr_underflow_p() != 0 && values[place].IsZero()) {
    if (!IsRoot(place)) throw DomainError{Outcome::kTooSmall, step.node, values[step.a]};
    mpfr_nextabove(values[place]);
  }
  if (IsOnPole(step.operation, values[place], sizes[step.a], rule))
    throw DomainError{Outcome::kUndefined, step.node, values[step.a]};
  sizes[place] = ComputeSize(place, stateSizes);
  spans[place] = ComputeSpan(place);
}

void Evaluator::EvaluateSized(mpfr_srcptr time, std::span<const Real> states,
                              std::span<const double> stateSizes, const EdgeRule& rule,
                              const Rational* exactTime)
{
  sizes.resize(steps.size());
  spans.assign(steps.size(), 0);
  isAtJump = false;
  ForEachNeeded([&](std::size_t place) {
    if (exactTime != nullptr && ComputeExactly(place, *exactTime)) return;
    ComputeSized(place, time, states, stateSizes, rule);
  });
}

}  // namespace varno::solve
