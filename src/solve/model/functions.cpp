#include "solve/model/functions.h"

#include <limits>
#include <unordered_map>

namespace varno::solve {

namespace {

using Piecewise = PiecewiseFunction;

constexpr BuiltInFunction Smooth(std::string_view name, Operation operation)
{
  return {name, operation};
}

constexpr BuiltInFunction New(std::string_view name, Operation operation, std::size_t arguments = 1)
{
  return {name, operation, {}, arguments, arguments, false};
}

constexpr BuiltInFunction NewPiecewise(std::string_view name, Piecewise piecewise,
                                       std::size_t minArguments = 1, std::size_t maxArguments = 1)
{
  return {name, std::nullopt, piecewise, minArguments, maxArguments, false};
}

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

// "acotgh" and "acotanh" are deliberately absent: they are names.
constexpr BuiltInFunction kFunctions[] = {
    Smooth("sin", Operation::kSin),
    Smooth("cos", Operation::kCos),
    Smooth("tan", Operation::kTan),
    Smooth("tg", Operation::kTan),
    Smooth("cotan", Operation::kCot),
    Smooth("cotg", Operation::kCot),
    Smooth("asin", Operation::kAsin),
    Smooth("arcsin", Operation::kAsin),
    Smooth("acos", Operation::kAcos),
    Smooth("arccos", Operation::kAcos),
    Smooth("atan", Operation::kAtan),
    Smooth("atg", Operation::kAtan),
    Smooth("arctan", Operation::kAtan),
    Smooth("arctg", Operation::kAtan),
    Smooth("acotan", Operation::kAcot),
    Smooth("acotg", Operation::kAcot),
    Smooth("arccotan", Operation::kAcot),
    Smooth("arccotg", Operation::kAcot),
    Smooth("sinh", Operation::kSinh),
    Smooth("cosh", Operation::kCosh),
    Smooth("tanh", Operation::kTanh),
    Smooth("tgh", Operation::kTanh),
    Smooth("cotanh", Operation::kCoth),
    Smooth("cotgh", Operation::kCoth),
    Smooth("asinh", Operation::kAsinh),
    Smooth("argsinh", Operation::kAsinh),
    Smooth("acosh", Operation::kAcosh),
    Smooth("argcosh", Operation::kAcosh),
    Smooth("atanh", Operation::kAtanh),
    Smooth("atgh", Operation::kAtanh),
    Smooth("argtanh", Operation::kAtanh),
    Smooth("argtgh", Operation::kAtanh),
    Smooth("argcotanh", Operation::kAcoth),
    Smooth("argcotgh", Operation::kAcoth),
    Smooth("sqrt", Operation::kSqrt),
    Smooth("exp", Operation::kExp),
    Smooth("ln", Operation::kLn),
    {"trunc", std::nullopt, Piecewise::kTrunc},

    New("log", Operation::kLn),
    New("cbrt", Operation::kCbrt),
    New("erf", Operation::kErf),
    New("atan2", Operation::kAtan2, 2),
    NewPiecewise("abs", Piecewise::kAbs),
    NewPiecewise("sign", Piecewise::kSign),
    NewPiecewise("min", Piecewise::kMin, 2, kAnyNumber),
    NewPiecewise("max", Piecewise::kMax, 2, kAnyNumber),
    NewPiecewise("floor", Piecewise::kFloor),
    NewPiecewise("ceil", Piecewise::kCeil),
    NewPiecewise("if", Piecewise::kIf, 3, 3),
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
