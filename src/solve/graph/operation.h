#pragma once

#include <cstdint>
#include <string_view>

namespace varno::solve {

/// What a node of an expression graph is. Subtraction and quotient are operations of their own;
/// products with -1 are kNegate.
enum class Operation : std::uint8_t {
  // Leaves
  kNumber,
  kPi,
  kTime,
  kState,
  kParameter,
  // The operations of arithmetic
  kNegate,
  kAdd,
  kSubtract,
  kMultiply,
  kDivide,
  kPower,
  // Functions of one argument, smooth inside their domain
  kSqrt,
  kCbrt,
  kExp,
  kLn,
  kSin,
  kCos,
  kTan,
  kCot,
  kAsin,
  kAcos,
  kAtan,
  kAcot,
  kSinh,
  kCosh,
  kTanh,
  kCoth,
  kAsinh,
  kAcosh,
  kAtanh,
  kAcoth,
  kErf,
  // Of two: the angle of the point (second, first), as atan2(y, x)
  kAtan2,
  // Functions with kinks and jumps
  kAbs,
  kSign,
  kFloor,
  kCeil,
  kTrunc,
  kMin,
  kMax,
  // Conditions: 1 where they hold, else 0. The second operand of kAnd and kOr counts only where the
  // first one does not decide.
  kLess,
  kLessOrEqual,
  kAnd,
  kOr,
  kNot,
  // Of three: the second where the first, a condition, holds, else the third
  kIf,
};

/// True for operations with kinks or jumps everywhere in their domain, and for conditions: what
/// comes after kAtan2. kAcot and kAtan2, which are smooth but for a cut, are not among them.
bool IsPiecewise(Operation operation);
/// True for operations that look at their first operand and may leave another one out.
bool IsChoice(Operation operation);

/// The name of a function as the language writes it, such as "sin"; empty for operators and leaves.
std::string_view FunctionName(Operation operation);

}  // namespace varno::solve
