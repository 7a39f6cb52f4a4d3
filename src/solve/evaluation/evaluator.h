#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/edges.h"
#include "solve/graph/graph.h"
#include "solve/number/rational.h"
#include "solve/number/real.h"

namespace varno::solve {

/// Computes the values of expressions by MPFR, operation by operation. Of an `if` only the chosen
/// branch is looked at, of `and` and `or` the second condition only where the first one does not
/// decide.
///
/// This is the plain way: it serves constants, columns and checks. The integration has its own
/// (series/).
class Evaluator {
 public:
  /// For these nodes. What is needed of the graph is copied.
  /// `parameters` are the nodes of the values of the parameters, if there are any; `constants` the
  /// values of nodes that are known.
  Evaluator(const Graph& graph, const std::vector<NodeId>& roots, mpfr_prec_t bits,
            std::span<const NodeId> parameters = {},
            const std::unordered_map<NodeId, Real>& constants = {});

  /// Computes all roots. `time` and `states` have any precision. Throws DomainError.
  void Evaluate(mpfr_srcptr time, std::span<const Real> states);
  /// Computes the sizes of all roots, after Evaluate, from log2 of the sizes of the states.
  void EvaluateSizes(std::span<const double> stateSizes);

  /// All of it, where arguments on the edge of a domain or at a jump count as on it, on whichever
  /// side of it they were rounded. What is not 0 but too small for the arithmetic is, as a root,
  /// the smallest number there is. With the time as a fraction, if it is one, what is made of it
  /// and numbers alone by what FoldExactly knows is exact. Throws DomainError and EdgeInDoubt.
  void EvaluateSized(mpfr_srcptr time, std::span<const Real> states,
                     std::span<const double> stateSizes, const EdgeRule& rule,
                     const Rational* exactTime = nullptr);

  /// Value of root number i after Evaluate.
  const Real& operator[](std::size_t i) const { return values[rootPlaces[i]]; }
  /// log2 of the size of root number i after EvaluateSizes.
  double Size(std::size_t i) const { return sizes[rootPlaces[i]]; }
  std::size_t Count() const { return rootPlaces.size(); }
  /// Of all numbers that root number i is made of, how far they are from 1: the largest |log2
  /// size|, after EvaluateSized.
  double Span(std::size_t i) const { return spans[rootPlaces[i]]; }
  /// Whether anything is made of the time.
  bool UsesTime() const { return usesTime; }
  /// Whether anything has a kink or a jump by itself, or is a condition.
  bool HasPiecewise() const { return hasPiecewise; }
  /// Whether EvaluateSized found an argument to be at a jump without knowing it exactly.
  bool IsAtJump() const { return isAtJump; }

 private:
  struct Step {
    Operation operation;
    std::uint8_t operandCount;
    NodeId node;
    std::uint32_t a, b, c;  // places of the operands in `values`
    std::uint32_t index;    // of a state, or of a whole exponent
  };

  template <class Visit>
  void ForEachNeeded(Visit visit);
  std::optional<std::uint32_t> NextNeeded(const Step& step, const std::vector<bool>& done) const;
  std::optional<std::uint32_t> Chosen(const Step& step) const;
  std::uint32_t AddExponent(const Graph& graph, const Node& node);
  void Compute(std::size_t place, mpfr_srcptr time, std::span<const Real> states);
  void Operate(const Step& step, mpfr_ptr result, const Real& a, const Real& b);
  bool HasWholeExponent(const Step& step) const;
  bool IsRoot(std::size_t place) const;
  void ComputeAtEdge(std::size_t place, const Edge& edge, const EdgeRule& rule);
  void ComputeSized(std::size_t place, mpfr_srcptr time, std::span<const Real> states,
                    std::span<const double> stateSizes, const EdgeRule& rule);
  bool ComputeExactly(std::size_t place, const Rational& time);
  double ComputeSize(std::size_t place, std::span<const double> stateSizes) const;
  double ComputeSpan(std::size_t place) const;

  std::vector<Step> steps;
  std::vector<Integer> exponents;  // of powers: a Real may not hold them exactly
  std::vector<Real> values;
  std::vector<double> sizes, spans;
  std::vector<std::optional<Rational>> exactValues;  // of EvaluateSized
  std::vector<std::uint32_t> rootPlaces;
  std::vector<std::uint32_t> computed;  // places, in the order of the latest evaluation
  bool usesTime = false, hasPiecewise = false, hasChoices = false, isAtJump = false;
};

}  // namespace varno::solve
