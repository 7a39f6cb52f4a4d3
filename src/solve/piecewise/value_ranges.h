#pragma once

#include <vector>

#include "solve/enclosure/range.h"
#include "solve/graph/graph.h"

namespace varno::solve {

/// What the values of a growing graph's nodes lie between, whatever the time and the states are:
/// 5/4 + cos(x) between 1/4 and 9/4. Intervals as MPFI rounds them, outwards.
class ValueRanges {
 public:
  explicit ValueRanges(const Graph& graph) : graph(graph) {}

  /// Unbounded where nothing is known. Where an operation is not defined it has no value, which
  /// need not lie in the range.
  const Range& Of(NodeId id);
  /// 1 or -1 where all values have this sign, and none is 0; else 0.
  int SignOf(NodeId id);

 private:
  Range RangeOf(const Node& node) const;
  Range ProductOf(const Node& node) const;
  Range PowerOf(const Node& node) const;

  const Graph& graph;
  std::vector<Range> ranges;  // of the first nodes
};

}  // namespace varno::solve
