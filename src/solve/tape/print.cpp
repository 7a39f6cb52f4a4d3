#include "solve/tape/print.h"

#include <fmt/format.h>

#include "solve/graph/operation.h"

namespace varno::solve {

namespace {

std::string ConstantName(ConstantId constant)
{
  return constant == kNone ? "0" : fmt::format("c{}", constant);
}

std::string PrintFactor(const Factor& factor, bool first)
{
  if (factor.whole == 0) {
    return fmt::format("{}{}*{}", first ? "" : " + ", ConstantName(factor.constant), factor.line);
  }
  const bool negative = factor.whole < 0;
  const char* const sign = first ? (negative ? "-" : "") : (negative ? " - " : " + ");
  const long size = negative ? -static_cast<long>(factor.whole) : factor.whole;
  if (size == 1) return fmt::format("{}{}", sign, factor.line);
  return fmt::format("{}{}*{}", sign, size, factor.line);
}

std::string PrintCombination(const Tape& tape, const Line& line)
{
  std::string text;
  for (std::uint32_t i = 0; i < line.factorCount; ++i) {
    text += PrintFactor(tape.factors[line.firstFactor + i], i == 0);
  }
  if (line.constant != kNone) text += " + " + ConstantName(line.constant);
  return text;
}

std::string PrintLine(const Tape& tape, const Line& line, const std::vector<std::string>& stateNames)
{
  const char* const sign = line.negative ? "-" : "";
  switch (line.kind) {
    case LineKind::kConstant: return ConstantName(line.constant);
    case LineKind::kTime: return "t";
    case LineKind::kState: return stateNames[line.index];
    case LineKind::kCombination: return PrintCombination(tape, line);
    case LineKind::kProduct: return fmt::format("{} * {}", line.a, line.b);
    case LineKind::kSquare: return fmt::format("{}^2", line.a);
    case LineKind::kQuotient: return fmt::format("{} / {}", line.a, line.b);
    case LineKind::kSquareRoot: return fmt::format("sqrt {}", line.a);
    case LineKind::kPower: return fmt::format("{}^{}", line.a, ConstantName(line.constant));
    case LineKind::kIntegralOfProduct:
      return fmt::format("{} {}, derivative {}{}", FunctionName(line.function), line.a, sign, line.b);
    case LineKind::kIntegralOfQuotient:
      return fmt::format("{} {}, derivative {}1/{}", FunctionName(line.function), line.a, sign, line.b);
    case LineKind::kAngle: return fmt::format("atan2 {} {}, squares {}", line.a, line.b, line.c);
  }
  return {};
}

}  // namespace

std::string Print(const Tape& tape, const std::vector<std::string>& stateNames)
{
  std::string text;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    text += fmt::format("{} = {}\n", id, PrintLine(tape, tape.lines[id], stateNames));
  }
  for (std::size_t i = 0; i < tape.rightHandSides.size(); ++i) {
    text += fmt::format("{}' = {}\n", stateNames[i], tape.rightHandSides[i]);
  }
  return text;
}

}  // namespace varno::solve
