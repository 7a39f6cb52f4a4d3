#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/language/syntax.h"
#include "solve/source/place.h"

namespace varno::solve {

/// A first-order equation x' = f. An equation of order n makes n of them: y, y', ..., each but the
/// last with the next one as its right-hand side.
struct State {
  std::string name;  ///< with its apostrophes: "y", "y'", "y''"
  NodeId rightHandSide;
  NodeId start;  ///< constant: the value at the start point
  Place place;   ///< of the name in its equation
};

/// A definition that depends neither on variables nor on t; settings may change its value. Its
/// value has a smaller number than its kParameter leaf, so that a pass over the graph meets it
/// first.
struct Parameter {
  std::string name;
  NodeId value;  ///< constant; may use parameters that come before it
  Place place;
};

/// What a row shows: a variable or a definition.
struct Column {
  std::string name;
  NodeId value;  ///< a kState leaf for a variable
};

/// A state takes a new value.
struct EventAssignment {
  std::uint32_t state;
  NodeId value;
  Place place;  ///< of the state's name
};

/// What happens where an expression crosses zero.
struct Event {
  std::string name;
  NodeId expression;
  Crossing crossing;  ///< which of them count, as time grows
  bool stops;         ///< the run ends there
  /// All of them at once, from the values before.
  std::vector<EventAssignment> assignments;
  Place place;  ///< of the name
};

/// A system of first-order equations with everything resolved: a value that no run changes.
struct Model {
  Graph graph;
  std::vector<State> states;
  std::vector<Parameter> parameters;
  std::vector<Column> columns;  ///< in the order of the file
  std::vector<Event> events;    ///< in the order of the file
  /// The point of the start statements; none when the file has none ("& c" then holds at --from).
  std::optional<NodeId> startPoint;

  /// All nodes that it names, but for those of parameters.
  std::vector<NodeId*> Nodes();
};

}  // namespace varno::solve
