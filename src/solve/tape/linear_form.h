#pragma once

#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// constant + sum of factor * line, while a tape is being made. Constants and factors are
/// expressions of the graph.
struct LinearForm {
  struct Term {
    LineId line;
    NodeId factor;
  };
  NodeId constant;
  std::vector<Term> terms;
};

/// The arithmetic of linear forms over one graph, in which it makes the constants that it needs.
class LinearArithmetic {
 public:
  explicit LinearArithmetic(Graph& graph);

  LinearForm Constant(NodeId constant) const { return {constant, {}}; }
  LinearForm Single(LineId line) const { return {zero, {{line, one}}}; }

  LinearForm Add(LinearForm a, LinearForm b);
  LinearForm Scale(LinearForm a, NodeId factor);

  /// Brings the terms into the order of their lines, each line once, and drops factors that are 0.
  void Normalise(LinearForm& form);

  bool IsZero(NodeId constant) const { return constant == zero; }
  bool IsOne(NodeId constant) const { return constant == one; }
  NodeId Zero() const { return zero; }
  NodeId One() const { return one; }
  NodeId MinusOne() const { return minusOne; }
  NodeId OneThird();
  /// 2 / sqrt(pi)
  NodeId TwoBySqrtPi();

 private:
  NodeId Sum(NodeId a, NodeId b);
  NodeId Product(NodeId a, NodeId b);

  Graph& graph;
  NodeId zero, one, minusOne;
};

}  // namespace varno::solve
