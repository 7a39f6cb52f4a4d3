#pragma once

#include <cstdint>

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

}  // namespace varno::solve
