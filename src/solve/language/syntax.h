#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "solve/source/place.h"

namespace varno::solve {

/// The number of an expression in its syntax tree.
using ExpressionId = std::uint32_t;

enum class ExpressionKind : std::uint8_t {
  kNumber,  ///< its text is what `name` holds
  kPi,
  kTime,
  kName,  ///< with the order of its derivative marks
  kNegate,
  kAdd,
  kSubtract,
  kMultiply,
  kDivide,
  kPower,
  kLess,
  kLessEqual,
  kGreater,
  kGreaterEqual,
  kAnd,
  kOr,
  kNot,
  kCall,  ///< of the function with the name at `name`; operands are its arguments
  /// [subject < limits : value; ...]: the operands are the subject and then the segments.
  kStep,
  kSegment,  ///< of a step function: its limits, and last its value
};

/// True for comparisons, and, or, not: they hold or not, and have no number for a value.
bool IsCondition(ExpressionKind kind);

struct Expression {
  ExpressionKind kind;
  bool parenthesised;
  /// Derivative marks of a kName.
  std::uint32_t order;
  /// The first expression of this one's subtree: the subtree is first..this, without a gap.
  ExpressionId first;
  std::uint32_t operandBegin;
  std::uint32_t operandCount;
  Place place;  ///< with the parentheses around it
  /// The token that makes it what it is: the name of a kName or kCall, the number, the operator.
  Place name;
};

/// What an equation or a start statement is about: a name with derivative marks.
struct Head {
  Place name;
  std::uint32_t order = 0;
  Place place;  ///< with the marks
};

/// "y'' = right;", "y' = right & start;"; with order 0 a definition.
struct EquationStatement {
  Head head;
  ExpressionId right;
  std::optional<ExpressionId> start;
};

/// "y'(point) = value;", in a file or as a setting.
struct StartStatement {
  Head head;
  ExpressionId point;
  ExpressionId value;
};

/// "function f(u, v) = body;"
struct FunctionStatement {
  Place name;
  std::vector<Place> parameters;
  ExpressionId body;
};

enum class Crossing : std::uint8_t { kBoth, kRising, kFalling };

/// "y = value" after an event.
struct Assignment {
  Head head;
  ExpressionId value;
};

/// "event name: expression falling stop { y = value; };"
struct EventStatement {
  Place name;
  ExpressionId expression;
  Crossing crossing = Crossing::kBoth;
  bool stops = false;
  std::vector<Assignment> assignments;
};

/// "mu = value", a setting of a parameter.
struct ParameterSetting {
  Head head;
  ExpressionId value;
};

/// A text as a tree: statements, and all their expressions in one row.
///
/// Operands stand before the expressions that use them, and each expression's subtree stands
/// together. So a pass over a tree is a loop from its first expression to its last, and no depth of
/// nesting exhausts a stack.
class Syntax {
 public:
  ExpressionId AddLeaf(ExpressionKind kind, Place place, std::uint32_t order = 0);
  ExpressionId AddName(Place name, std::uint32_t order, Place place);
  /// `name` is the operator, or the name of the function.
  ExpressionId Add(ExpressionKind kind, std::span<const ExpressionId> operands, Place place,
                   Place name);
  /// Notes the parentheses around an expression.
  ExpressionId Parenthesise(ExpressionId id, Place place);

  const Expression& operator[](ExpressionId id) const { return expressions[id]; }
  std::span<const ExpressionId> Operands(ExpressionId id) const;
  std::size_t Size() const { return expressions.size(); }
  /// True when no statement could be read.
  bool IsEmpty() const
  {
    return equations.empty() && starts.empty() && functions.empty() && events.empty();
  }

  std::vector<EquationStatement> equations;  ///< and definitions, in the order of the file
  std::vector<StartStatement> starts;
  std::vector<FunctionStatement> functions;
  std::vector<EventStatement> events;
  std::vector<ParameterSetting> settings;
  /// Of a text that is an expression alone.
  std::optional<ExpressionId> expression;
  /// Names that seem to be defined by statements that could not be read.
  std::vector<Place> lostNames;

 private:
  std::vector<Expression> expressions;
  std::vector<ExpressionId> operandLists;
};

}  // namespace varno::solve
