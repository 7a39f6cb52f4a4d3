#pragma once

#include <optional>
#include <string>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/model/exact_values.h"
#include "solve/model/model.h"
#include "solve/model/real_values.h"

namespace varno::solve {

/// Tells which operations of a growing graph cannot have a value, because of operands that are
/// constant: 1/0, x/0, asin(2), ln(-pi).
class ValueFaults {
 public:
  ValueFaults(const Graph& graph, const std::vector<Parameter>& parameters)
      : graph(graph), exact(graph, parameters), real(graph, parameters)
  {}

  /// What is wrong with this operation: "division by zero"; else empty. Of the operands' own faults
  /// it does not tell.
  std::string Of(NodeId operation);
  /// Whether a condition that is made of fractions holds; none for others.
  std::optional<bool> Holds(NodeId condition);

 private:
  std::optional<int> Compare(NodeId constant, int bound);
  std::optional<bool> IsInteger(NodeId constant);
  bool IsPole(NodeId angle, bool ofTangent);
  const char* OfPower(NodeId base, NodeId exponent);

  const Graph& graph;
  ExactValues exact;
  RealValues real;
};

}  // namespace varno::solve
