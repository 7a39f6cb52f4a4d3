#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/model/model.h"
#include "solve/number/real.h"

namespace varno::solve {

/// The values of constant nodes of a growing graph that are not rational, such as sin(1), to decide
/// on which side of a bound they lie.
class RealValues {
 public:
  RealValues(const Graph& graph, const std::vector<Parameter>& parameters)
      : graph(graph), parameters(parameters)
  {}

  /// The value, right to 2^-64 of itself, and 0 where thousands of bits cannot tell it from 0; none
  /// for what depends on t or states, is out of range, or has no value.
  const std::optional<Real>& Of(NodeId id);

 private:
  struct Known {
    std::optional<Real> value;
    double size;  ///< log2, see evaluation/size.h
  };

  bool NeedOperands(const Node& node, std::vector<NodeId>& open) const;
  Known Evaluate(NodeId id);
  Known Operate(NodeId id);
  std::optional<Real> Sharpen(NodeId id);

  const Graph& graph;
  const std::vector<Parameter>& parameters;
  std::unordered_map<NodeId, Known> known;
  int sharpened = 0;
};

}  // namespace varno::solve
