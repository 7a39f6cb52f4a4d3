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
};

/// The name of a function as the language writes it, such as "sin".
std::string_view FunctionName(Operation operation);

}  // namespace varno::solve
