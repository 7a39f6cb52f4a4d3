#include "solve/evaluation/constant.h"

#include <limits>
#include <optional>
#include <unordered_set>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// Bits beyond those asked for: at first, when something may be called 0, and at most.
constexpr mpfr_prec_t kFirstGuardBits = 64;
constexpr mpfr_prec_t kZeroGuardBits = 4096;
constexpr mpfr_prec_t kMostGuardBits = 1 << 18;
/// A cancellation of second order, as in cos(1e-3000) - 1, takes twice the bits of its constants.
constexpr double kTimesTheLargest = 4;
/// Bits that the roundings of the operations themselves may cost.
constexpr double kRoundingBits = 24;

/// A constant computed with some bits more than are asked for.
class Trial {
 public:
  Trial(const Graph& graph, NodeId node, mpfr_prec_t bits, mpfr_prec_t guard,
        std::span<const NodeId> parameters)
      : evaluator(graph, {node}, bits + guard, parameters),
        node(node),
        bits(bits),
        guard(static_cast<double>(guard))
  {}

  /// The value where it has enough bits left, or is 0 for all that can be said. Throws DomainError.
  std::optional<Real> Value()
  {
    const double clearBits = static_cast<double>(bits) + guard - kRoundingBits;
    const EdgeRule edges{.noiseBits = clearBits,
                         .zeroBits = clearBits,
                         .mayDeclareZero = guard >= kZeroGuardBits,
                         .spanFactor = kTimesTheLargest};
    try {
      evaluator.EvaluateSized(nullptr, {}, {}, edges);
    } catch (const EdgeInDoubt&) {
      return std::nullopt;
    }
    if (mpfr_underflow_p() != 0) throw DomainError{Outcome::kTooSmall, node, Real(bits)};
    const double size = evaluator.Size(0), cancelled = size - Log2Size(evaluator[0]);
    const bool isExact = evaluator[0].IsZero() && size == -std::numeric_limits<double>::infinity();
    Real result(bits);
    if (isExact || cancelled < guard - kRoundingBits) {
      mpfr_set(result, evaluator[0], MPFR_RNDN);
      return result;
    }
    return edges.MayDeclareZero(evaluator.Span(0)) ? std::optional(result) : std::nullopt;
  }

 private:
  Evaluator evaluator;
  NodeId node;
  mpfr_prec_t bits;
  double guard;
};

}  // namespace

Real EvaluateConstant(const Graph& graph, NodeId node, mpfr_prec_t bits,
                      std::span<const NodeId> parameters)
{
  for (mpfr_prec_t guard = kFirstGuardBits; guard <= kMostGuardBits; guard *= 4) {
    Trial trial(graph, node, bits, guard, parameters);
    if (std::optional<Real> value = trial.Value()) return *std::move(value);
  }
  throw DomainError{Outcome::kInDoubt, node, Real(bits)};
}

std::unordered_map<NodeId, Real> ConstantsIn(const Graph& graph, const std::vector<NodeId>& roots,
                                             mpfr_prec_t bits)
{
  std::unordered_map<NodeId, Real> constants;
  std::vector<NodeId> open = roots;
  std::unordered_set<NodeId> seen;
  while (!open.empty()) {
    const NodeId id = open.back();
    open.pop_back();
    const Node& node = graph[id];
    if (node.operandCount == 0 || !seen.insert(id).second) continue;
    if (node.dependence == Dependence::kNothing) {
      try {
        constants.emplace(id, EvaluateConstant(graph, id, bits));
        continue;
      } catch (const DomainError&) {
        // Whoever evaluates it will find that it has no value.
      }
    }
    for (int i = 0; i < node.operandCount; ++i) open.push_back(node.operands[i]);
  }
  return constants;
}

}  // namespace varno::solve
