#pragma once

#include <cstdint>
#include <vector>

#include "solve/graph/graph.h"

namespace varno::solve {

/// The number of a line in its tape.
using LineId = std::uint32_t;
/// The number of a constant in its tape.
using ConstantId = std::uint32_t;

inline constexpr std::uint32_t kNone = UINT32_MAX;

/// What a line does, that is: which recurrence its terms follow (docs/solve/recurrences.md).
enum class LineKind : std::uint8_t {
  kConstant,            ///< constant
  kTime,                ///< t
  kState,               ///< state `index`
  kCombination,         ///< constant + sum of factor * line
  kProduct,             ///< a b
  kSquare,              ///< a a
  kQuotient,            ///< a / b
  kSquareRoot,          ///< sqrt(a)
  kPower,               ///< a^constant, not an integer power
  kIntegralOfProduct,   ///< f(a), with derivative  sign b a'; b may be a later line
  kIntegralOfQuotient,  ///< f(a), with derivative  sign a' / b
  kAngle,               ///< atan2(a, b), with c = a^2 + b^2
};

/// One term of a linear combination: a small whole number, or a constant, times a line.
struct Factor {
  LineId line;
  std::int32_t whole;   ///< 0: the constant counts
  ConstantId constant;  ///< kNone when `whole` counts
};

/// One operation on whole series.
struct Line {
  LineKind kind;
  /// The function whose value starts the series: of kIntegralOf..., and of kPower (kPower or
  /// kCbrt).
  Operation function;
  bool negative;                           ///< the sign of kIntegralOf...
  bool dependsOnStates;                    ///< not on t alone
  LineId a, b, c;                          ///< operands, kNone where there is none
  std::uint32_t firstFactor, factorCount;  ///< of kCombination, in Tape::factors
  ConstantId constant;                     ///< of kConstant, kCombination, kPower; kNone: 0
  std::uint32_t index;                     ///< of kState
  /// The degree of the line as a polynomial in t; -1 when it is none by its structure.
  std::int32_t degree;
  /// The expression, for messages; of a state its right-hand side.
  NodeId node;
};

/// The right-hand sides of a model as a list of operations, each after its operands (but for the
/// derivative of a function that is defined by an equation with itself, such as tan' = 1 + tan^2).
///
/// Equal operations stand in it once; what is constant is left to `constants`; sums of any length,
/// with their constant factors, are one line each; only what feeds a right-hand side or a watched
/// expression is in it.
/// The first lines are the states, in their order.
struct Tape {
  std::vector<Line> lines;
  std::vector<Factor> factors;
  /// Expressions in `graph` that depend neither on t nor on states.
  std::vector<NodeId> constants;
  /// For each state the line of its derivative.
  std::vector<LineId> rightHandSides;
  /// The lines of expressions whose signs are watched (conditions, events), in the order asked for;
  /// one that depends neither on t nor on states is a line of its own, too.
  std::vector<LineId> watched;
  /// The model's expressions with its parameters bound, and those that the tape has made.
  Graph graph;
};

}  // namespace varno::solve
