#pragma once

#include <optional>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/number/rational.h"

namespace varno::solve {

/// slope t + constant, exactly.
struct TimeForm {
  Rational slope, constant;

  /// Where it is 0; none where it is constant.
  std::optional<Rational> Root() const;
};

/// The nodes of a growing graph that are linear in t with rational coefficients, or rational.
class TimeForms {
 public:
  explicit TimeForms(const Graph& graph) : graph(graph) {}

  /// None for other nodes, and where a coefficient is too long.
  const std::optional<TimeForm>& Of(NodeId id);

 private:
  std::optional<TimeForm> Form(NodeId id) const;

  const Graph& graph;
  std::vector<std::optional<TimeForm>> forms;
};

}  // namespace varno::solve
