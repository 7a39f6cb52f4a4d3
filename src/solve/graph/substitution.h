#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/number/rational.h"

namespace varno::solve {

/// A copy of a graph with numbers in the place of its parameters.
struct SubstitutedGraph {
  Graph graph;
  std::vector<NodeId> copies;  ///< for each node of the original the one that stands for it
};

/// Puts numbers in the place of a graph's parameters, and folds exactly what they feed.
///
/// Where a value decides what a graph means and not only a number in it, as that of an exponent,
/// the argument of a root, or a factor that is 0, it cannot be put in: such a parameter is called
/// structural, and a zero is refused.
class Substitution {
 public:
  /// `others` are nodes whose parameters are structural for reasons that the graph does not show.
  explicit Substitution(const Graph& graph, const std::vector<NodeId>& others = {});

  /// The numbers of the parameters that are structural, in order.
  const std::vector<std::uint32_t>& Structural() const { return structural; }
  bool IsStructural(std::uint32_t parameter) const;

  /// A copy of the graph that this was made for, with these values of its parameters, by number.
  /// None where one that is not structural makes something 0. From `firstFree` on parameters may be
  /// 0: those that nothing is made of.
  std::optional<SubstitutedGraph> Apply(const Graph& graph, std::span<const Rational> values,
                                        std::uint32_t firstFree) const;

 private:
  std::vector<NodeId> varying;  // constants that depend on parameters, operands first
  std::vector<std::uint32_t> structural;
};

}  // namespace varno::solve
