#include "solve/tape/degree.h"

#include <algorithm>

namespace varno::solve {

namespace {

constexpr std::int32_t kNoPolynomial = -1;
/// Beyond it a polynomial is treated like any other function.
constexpr std::int32_t kLargestDegree = 1'000'000;
/// States found to be polynomials only after more passes than this are left out: chains of that
/// length gain nothing.
constexpr int kMostPasses = 64;

std::int32_t Limited(std::int32_t degree)
{
  return degree > kLargestDegree ? kNoPolynomial : degree;
}

std::int32_t CombinationDegree(const Tape& tape, const Line& line)
{
  std::int32_t degree = 0;
  for (std::uint32_t i = 0; i < line.factorCount; ++i) {
    const std::int32_t operand = tape.lines[tape.factors[line.firstFactor + i].line].degree;
    if (operand == kNoPolynomial) return kNoPolynomial;
    degree = std::max(degree, operand);
  }
  return degree;
}

std::int32_t Degree(const Tape& tape, const Line& line)
{
  switch (line.kind) {
    case LineKind::kConstant:
      return 0;
    case LineKind::kTime:
      return 1;
    case LineKind::kState: {
      const std::int32_t derivative = tape.lines[tape.rightHandSides[line.index]].degree;
      return derivative == kNoPolynomial ? kNoPolynomial : Limited(derivative + 1);
    }
    case LineKind::kCombination:
      return CombinationDegree(tape, line);
    case LineKind::kProduct: {
      const std::int32_t a = tape.lines[line.a].degree, b = tape.lines[line.b].degree;
      return a == kNoPolynomial || b == kNoPolynomial ? kNoPolynomial : Limited(a + b);
    }
    case LineKind::kSquare: {
      const std::int32_t a = tape.lines[line.a].degree;
      return a == kNoPolynomial ? kNoPolynomial : Limited(2 * a);
    }
    default:
      return kNoPolynomial;
  }
}

}  // namespace

void SetDegrees(Tape& tape)
{
  // A state that feeds itself never gets a degree, nor does what depends on it.
  bool changed = true;
  for (int pass = 0; changed && pass < kMostPasses; ++pass) {
    changed = false;
    for (Line& line : tape.lines) {
      const std::int32_t degree = Degree(tape, line);
      changed |= degree != line.degree;
      line.degree = degree;
    }
  }
}

}  // namespace varno::solve
