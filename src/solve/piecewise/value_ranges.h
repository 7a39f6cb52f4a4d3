#pragma once

#include <optional>
#include <vector>

#include "solve/enclosure/range.h"
#include "solve/graph/graph.h"

namespace varno::solve {

/// What the values of a growing graph's nodes lie between, whatever the time and the states are:
/// 5/4 + cos(x) between 1/4 and 9/4. Intervals as MPFI rounds them, outwards.
class ValueRanges {
 public:
  explicit ValueRanges(const Graph& graph) : graph(graph) {}

  /// None where there may be no value, as of 2 + sqrt(x); whole where nothing else is known.
  const std::optional<Range>& Of(NodeId id);
  /// 1 or -1 where there are always values, which all have this sign, and none is 0; else 0.
  int SignOf(NodeId id);

 private:
  std::optional<Range> RangeOf(NodeId id) const;
  std::optional<Range> RangeOfPower(const Node& node) const;

  const Graph& graph;
  std::vector<std::optional<Range>> ranges;  // of the first nodes
};

}  // namespace varno::solve
