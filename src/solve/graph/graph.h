#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "solve/graph/operation.h"
#include "solve/number/rational.h"
#include "solve/source/place.h"

namespace varno::solve {

/// The number of a node in its graph. Operands have smaller numbers than the nodes that use them.
using NodeId = std::uint32_t;

/// What an expression depends on.
enum class Dependence : std::uint8_t { kNothing, kTime, kStates };

/// One operation of a graph with its operands, or a leaf.
struct Node {
  Operation operation;
  Dependence dependence;
  std::uint8_t operandCount;
  std::array<NodeId, 3> operands;
  /// The number of a state or of a parameter, for such leaves; of the value, for numbers.
  std::uint32_t index;
  /// Where it was first written.
  Place place;
};

/// Expressions with their common parts shared: building the same operation over the same operands
/// twice gives the same node. A graph only grows. Numbers are exact, and operations over numbers
/// alone are carried out exactly while their results stay small (4096 bits); nothing else is
/// simplified but what is an identity for all values (x+0, 1*x, x/1, x^1, -(-x); 0-x and -1*x are
/// -x; min(x, x) is x; what a condition that is known decides). a+b and b+a are one node, so are
/// a*b and b*a, min(a, b) and min(b, a), max(a, b) and max(b, a).
class Graph {
 public:
  NodeId Number(const Rational& value, Place place);
  NodeId Leaf(Operation operation, Place place);  ///< kPi, kTime
  NodeId State(std::uint32_t index, Place place);
  NodeId Parameter(std::uint32_t index, Place place);
  /// A unary, binary or ternary operation. A division of numbers by the number 0 stays a node.
  NodeId Make(Operation operation, NodeId a, Place place);
  NodeId Make(Operation operation, NodeId a, NodeId b, Place place);
  NodeId Make(Operation operation, NodeId a, NodeId b, NodeId c, Place place);

  const Node& operator[](NodeId id) const { return nodes[id]; }
  std::size_t Size() const { return nodes.size(); }
  bool IsNumber(NodeId id) const { return nodes[id].operation == Operation::kNumber; }
  /// The value of a node with IsNumber.
  const Rational& Value(NodeId id) const { return numbers[nodes[id].index]; }

 private:
  struct Key {
    Operation operation;
    std::array<NodeId, 3> operands;
    std::uint32_t index;
    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const;
  };
  NodeId Intern(Node node, bool commutative);
  Dependence DependenceOf(const Node& node) const;

  std::vector<Node> nodes;
  std::vector<Rational> numbers;
  std::unordered_map<Key, NodeId, KeyHash> known;
  std::unordered_multimap<std::size_t, NodeId> knownNumbers;  // by the hash of the value
};

}  // namespace varno::solve
