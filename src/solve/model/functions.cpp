#include "solve/model/functions.h"

#include <limits>
#include <unordered_map>

namespace varno::solve {

namespace {

constexpr BuiltInFunction Old(std::string_view name, Operation operation)
{
  return {name, operation};
}

constexpr BuiltInFunction New(std::string_view name, Operation operation, std::size_t arguments = 1)
{
  return {name, operation, arguments, arguments, false};
}

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

// "acotgh" and "acotanh" are deliberately absent: they are names.
constexpr BuiltInFunction kFunctions[] = {
    Old("sin", Operation::kSin),
    Old("cos", Operation::kCos),
    Old("tan", Operation::kTan),
    Old("tg", Operation::kTan),
    Old("cotan", Operation::kCot),
    Old("cotg", Operation::kCot),
    Old("asin", Operation::kAsin),
    Old("arcsin", Operation::kAsin),
    Old("acos", Operation::kAcos),
    Old("arccos", Operation::kAcos),
    Old("atan", Operation::kAtan),
    Old("atg", Operation::kAtan),
    Old("arctan", Operation::kAtan),
    Old("arctg", Operation::kAtan),
    Old("acotan", Operation::kAcot),
    Old("acotg", Operation::kAcot),
    Old("arccotan", Operation::kAcot),
    Old("arccotg", Operation::kAcot),
    Old("sinh", Operation::kSinh),
    Old("cosh", Operation::kCosh),
    Old("tanh", Operation::kTanh),
    Old("tgh", Operation::kTanh),
    Old("cotanh", Operation::kCoth),
    Old("cotgh", Operation::kCoth),
    Old("asinh", Operation::kAsinh),
    Old("argsinh", Operation::kAsinh),
    Old("acosh", Operation::kAcosh),
    Old("argcosh", Operation::kAcosh),
    Old("atanh", Operation::kAtanh),
    Old("atgh", Operation::kAtanh),
    Old("argtanh", Operation::kAtanh),
    Old("argtgh", Operation::kAtanh),
    Old("argcotanh", Operation::kAcoth),
    Old("argcotgh", Operation::kAcoth),
    Old("sqrt", Operation::kSqrt),
    Old("exp", Operation::kExp),
    Old("ln", Operation::kLn),
    Old("trunc", Operation::kTrunc),

    New("log", Operation::kLn),
    New("cbrt", Operation::kCbrt),
    New("erf", Operation::kErf),
    New("atan2", Operation::kAtan2, 2),
    New("abs", Operation::kAbs),
    New("sign", Operation::kSign),
    {"min", Operation::kMin, 2, kAnyNumber, false},
    {"max", Operation::kMax, 2, kAnyNumber, false},
    New("floor", Operation::kFloor),
    New("ceil", Operation::kCeil),
    New("if", Operation::kIf, 3),
};

struct Habit {
  std::string_view name;
  std::string_view hint;
};

constexpr std::string_view kStepHint =
    "write if(x >= 0, 1, 0), or for a step in time [t < a : 0; b : 1]";
constexpr std::string_view kRemainderHint = "the remainder of a by b is a - b*floor(a/b)";
constexpr std::string_view kDerivativeHint = "the derivative of x is written x'";

constexpr Habit kForeignFunctions[] = {
    {"log10", "write ln(x)/ln(10)"},
    {"lg", "write ln(x)/ln(10)"},
    {"log2", "write ln(x)/ln(2)"},
    {"ld", "write ln(x)/ln(2)"},
    {"log1p", "write ln(1 + x)"},
    {"expm1", "write exp(x) - 1"},
    {"exp10", "write 10^x"},
    {"exp2", "write 2^x"},
    {"pow", "powers are written x^y"},
    {"power", "powers are written x^y"},
    {"sqr", "powers are written x^2"},
    {"square", "powers are written x^2"},
    {"root", "roots are sqrt(x), cbrt(x) and x^(1/n)"},
    {"hypot", "write sqrt(x^2 + y^2)"},
    {"heaviside", kStepHint},
    {"Heaviside", kStepHint},
    {"heav", kStepHint},
    {"step", kStepHint},
    {"theta", kStepHint},
    {"where", "write if(a < b, u, v)"},
    {"ifelse", "write if(a < b, u, v)"},
    {"piecewise", "write if(a < b, u, v)"},
    {"mod", kRemainderHint},
    {"fmod", kRemainderHint},
    {"rem", kRemainderHint},
    {"fabs", "write abs(x)"},
    {"sgn", "write sign(x)"},
    {"signum", "write sign(x)"},
    {"int", "write trunc(x)"},
    {"round", "write floor(x + 0.5)"},
    {"ceiling", "write ceil(x)"},
    {"arctan2", "write atan2(y, x)"},
    {"cot", "write cotan(x)"},
    {"ctg", "write cotan(x)"},
    {"coth", "write cotanh(x)"},
    {"acot", "write acotan(x)"},
    {"acoth", "write argcotanh(x)"},
    {"acotanh", "write argcotanh(x)"},
    {"acotgh", "write argcotgh(x)"},
    {"arcsinh", "write asinh(x)"},
    {"arsinh", "write asinh(x)"},
    {"arccosh", "write acosh(x)"},
    {"arcosh", "write acosh(x)"},
    {"arctanh", "write atanh(x)"},
    {"artanh", "write atanh(x)"},
    {"sec", "write 1/cos(x)"},
    {"csc", "write 1/sin(x)"},
    {"sech", "write 1/cosh(x)"},
    {"csch", "write 1/sinh(x)"},
    {"erfc", "write 1 - erf(x)"},
    {"diff", kDerivativeHint},
    {"der", kDerivativeHint},
    {"ddt", kDerivativeHint},
    {"D", kDerivativeHint},
};

constexpr Habit kForeignNames[] = {
    {"e", "Euler's number is exp(1)"},
    {"E", "Euler's number is exp(1)"},
    {"Pi", "write pi"},
    {"PI", "write pi"},
    {"M_PI", "write pi"},
    {"time", "the time is t"},
    {"T", "the time is t"},
    {"true", "conditions are comparisons, as in x < 1"},
    {"false", "conditions are comparisons, as in x < 1"},
};

template <std::size_t n>
std::string HintFrom(const Habit (&habits)[n], std::string_view name)
{
  for (const Habit& habit : habits) {
    if (habit.name == name) return std::string(habit.hint);
  }
  return {};
}

}  // namespace

std::span<const BuiltInFunction> BuiltInFunctions()
{
  return kFunctions;
}

const BuiltInFunction* FindBuiltInFunction(std::string_view name)
{
  static const std::unordered_map<std::string_view, const BuiltInFunction*> byName = [] {
    std::unordered_map<std::string_view, const BuiltInFunction*> table;
    for (const BuiltInFunction& function : kFunctions) table.emplace(function.name, &function);
    return table;
  }();
  const auto found = byName.find(name);
  return found == byName.end() ? nullptr : found->second;
}

std::string HintOnForeignFunction(std::string_view name)
{
  return HintFrom(kForeignFunctions, name);
}

std::string HintOnForeignName(std::string_view name)
{
  return HintFrom(kForeignNames, name);
}

}  // namespace varno::solve
