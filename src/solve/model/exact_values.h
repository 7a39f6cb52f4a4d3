#pragma once

#include <optional>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/model/model.h"
#include "solve/number/rational.h"

namespace varno::solve {

/// The nodes of a growing graph that have an exact rational value, with the parameters put in.
class ExactValues {
 public:
  ExactValues(const Graph& graph, const std::vector<Parameter>& parameters)
      : graph(graph), parameters(parameters)
  {}

  /// The exact value of a node; none for what depends on t or states, is irrational, too long, or
  /// has no value.
  const std::optional<Rational>& Of(NodeId id);

 private:
  void Evaluate(NodeId id);

  const Graph& graph;
  const std::vector<Parameter>& parameters;
  std::vector<std::optional<Rational>> values;
};

}  // namespace varno::solve
