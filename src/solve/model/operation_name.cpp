#include "solve/model/operation_name.h"

namespace varno::solve {

std::string_view OperationName(Operation operation)
{
  switch (operation) {
    case Operation::kNumber: return "number";
    case Operation::kPi: return "pi";
    case Operation::kTime: return "t";
    case Operation::kState: return "state";
    case Operation::kParameter: return "parameter";
    case Operation::kNegate:
    case Operation::kSubtract: return "-";
    case Operation::kAdd: return "+";
    case Operation::kMultiply: return "*";
    case Operation::kDivide: return "/";
    case Operation::kPower: return "^";
    case Operation::kSqrt: return "sqrt";
    case Operation::kCbrt: return "cbrt";
    case Operation::kExp: return "exp";
    case Operation::kLn: return "ln";
    case Operation::kSin: return "sin";
    case Operation::kCos: return "cos";
    case Operation::kTan: return "tan";
    case Operation::kCot: return "cot";
    case Operation::kAsin: return "asin";
    case Operation::kAcos: return "acos";
    case Operation::kAtan: return "atan";
    case Operation::kAcot: return "acot";
    case Operation::kSinh: return "sinh";
    case Operation::kCosh: return "cosh";
    case Operation::kTanh: return "tanh";
    case Operation::kCoth: return "coth";
    case Operation::kAsinh: return "asinh";
    case Operation::kAcosh: return "acosh";
    case Operation::kAtanh: return "atanh";
    case Operation::kAcoth: return "acoth";
    case Operation::kErf: return "erf";
    case Operation::kAtan2: return "atan2";
  }
  return {};
}

}  // namespace varno::solve
