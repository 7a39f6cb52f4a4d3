#include "solve/graph/operation.h"

namespace varno::solve {

bool IsPiecewise(Operation operation)
{
  return operation > Operation::kAtan2;
}

bool IsChoice(Operation operation)
{
  return operation == Operation::kAnd || operation == Operation::kOr || operation == Operation::kIf;
}

std::string_view FunctionName(Operation operation)
{
  switch (operation) {
    case Operation::kSqrt:
      return "sqrt";
    case Operation::kCbrt:
      return "cbrt";
    case Operation::kExp:
      return "exp";
    case Operation::kLn:
      return "ln";
    case Operation::kSin:
      return "sin";
    case Operation::kCos:
      return "cos";
    case Operation::kTan:
      return "tan";
    case Operation::kCot:
      return "cotan";
    case Operation::kAsin:
      return "asin";
    case Operation::kAcos:
      return "acos";
    case Operation::kAtan:
      return "atan";
    case Operation::kAcot:
      return "acotan";
    case Operation::kSinh:
      return "sinh";
    case Operation::kCosh:
      return "cosh";
    case Operation::kTanh:
      return "tanh";
    case Operation::kCoth:
      return "cotanh";
    case Operation::kAsinh:
      return "asinh";
    case Operation::kAcosh:
      return "acosh";
    case Operation::kAtanh:
      return "atanh";
    case Operation::kAcoth:
      return "argcotanh";
    case Operation::kErf:
      return "erf";
    case Operation::kAtan2:
      return "atan2";
    case Operation::kAbs:
      return "abs";
    case Operation::kSign:
      return "sign";
    case Operation::kFloor:
      return "floor";
    case Operation::kCeil:
      return "ceil";
    case Operation::kTrunc:
      return "trunc";
    case Operation::kMin:
      return "min";
    case Operation::kMax:
      return "max";
    case Operation::kIf:
      return "if";
    default:
      return {};
  }
}

}  // namespace varno::solve
