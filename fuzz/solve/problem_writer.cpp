#include "fuzz/solve/problem_writer.h"

#include <iterator>

namespace varno::solve {

namespace {

constexpr int kMostDepth = 6;
constexpr std::size_t kMostBytesOfText = 2000;
constexpr const char* kVariables[] = {"x", "y", "z"};

}  // namespace

/// One of 0, 1, ..., count - 1.
std::size_t ProblemWriter::Choose(std::size_t count)
{
  if (bytes.empty()) return 0;
  const auto byte = static_cast<std::uint8_t>(bytes.front());
  bytes.remove_prefix(1);
  return byte % count;
}

std::string ProblemWriter::Write()
{
  variableCount = 1 + Choose(std::size(kVariables));
  secondOrder = Choose(2) == 1;
  Definitions();
  for (std::size_t i = 0; i < variableCount; ++i) Equation(kVariables[i]);
  return text;
}

/// The names that Leaf() uses beside the variables.
void ProblemWriter::Definitions()
{
  constant = true;
  text += "k = ";
  Constant(2);
  text += ";\nm = ";
  Number();
  text += ";\n";
  constant = false;
  text += "function f(u, v) = ";
  text += OneOf({"u*v", "u + v", "u/v", "sin(u)*v", "u^2 - v", "exp(-u^2) + v", "sqrt(u^2 + v^2)"});
  text += ";\na = ";
  text += OneOf({"x", "t", "k*x + t", "x^2", "sin(x)", "x*t", "1/x", "sqrt(1 - x)"});
  text += ";\n";
}

void ProblemWriter::Equation(const std::string& name)
{
  text += name;
  text += secondOrder ? "'' = " : "' = ";
  Sum(kMostDepth);
  if (Choose(4) != 0) {
    text += " & ";
    constant = true;
    Constant(2);
    constant = false;
  }
  text += ";\n";
}

void ProblemWriter::Sum(int depth)
{
  Expression(depth);
  for (std::size_t more = Choose(3); more > 0; --more) {
    text += OneOf({" + ", " - ", " + k*", " - 1e-30*"});
    Expression(depth - 1);
  }
}

void ProblemWriter::Constant(int depth)
{
  if (depth == 0 || Choose(2) == 0) return Number();
  Expression(depth);
}

void ProblemWriter::Expression(int depth)
{
  if (depth <= 0 || text.size() > kMostBytesOfText) return Leaf();
  switch (Choose(9)) {
    case 0:
    case 1:
      return Leaf();
    case 2:
      return Call(depth);
    case 3:
      text += '(';
      Sum(depth - 1);
      text += ')';
      return;
    case 4:
      Leaf();
      text += '*';
      return Expression(depth - 1);
    case 5:
      Leaf();
      text += '/';
      return Expression(depth - 1);
    case 6:
      text += '-';
      return Expression(depth - 1);
    case 7:
      text += '(';
      Sum(depth - 1);
      text += ')';
      text +=
          OneOf({"^2", "^3", "^(1/2)", "^-1", "^k", "^(3/2)", "^0", "^40", "^(-3/2)", "^m", "^t"});
      return;
    default:
      text += '(';
      Sum(depth - 1);
      text += ")*";
      return Expression(depth - 1);
  }
}

void ProblemWriter::Leaf()
{
  if (constant) {
    text += OneOf({"1", "0", "pi", "2", "1/3", "0.1"});
    return;
  }
  switch (Choose(4)) {
    case 0:
      text += kVariables[Choose(variableCount)];
      if (secondOrder && Choose(4) == 3) text += '\'';
      return;
    case 1:
      text += 't';
      return;
    case 2:
      text += OneOf({"k", "a", "m"});
      return;
    default:
      return Number();
  }
}

void ProblemWriter::Call(int depth)
{
  static constexpr const char* const kFunctions[] = {
      "sin",    "cos",   "exp",   "ln",     "sqrt",      "tan",  "atan",
      "asin",   "acos",  "cotan", "acotan", "sinh",      "cosh", "tanh",
      "cotanh", "asinh", "acosh", "atanh",  "argcotanh", "erf",  "cbrt"};
  static constexpr const char* const kOfTwo[] = {"f", "atan2"};
  const std::size_t choice = Choose(std::size(kFunctions) + std::size(kOfTwo));
  if (choice < std::size(kFunctions)) {
    text += kFunctions[choice];
    text += '(';
    Sum(depth - 1);
  } else {
    text += kOfTwo[choice - std::size(kFunctions)];
    text += '(';
    Sum(depth - 1);
    text += ", ";
    Sum(depth - 2);
  }
  text += ')';
}

void ProblemWriter::Number()
{
  text += OneOf({"1",           "0",     "2",      "0.1",     "1/3",  "-1",     "3",
                 "10",          "1e-10", "1e10",   "1e-40",   "1e40", "1e-300", "1e300",
                 "(1 + 1e-30)", "pi",    "1e1000", "1e-1000", "7",    "100"});
}

}  // namespace varno::solve
