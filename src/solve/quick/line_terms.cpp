#include "solve/quick/line_terms.h"

#include <algorithm>
#include <cmath>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/disturbance.h"

namespace varno::solve::quick {

namespace {

/// Numbers farther from 1 are not for the hardware.
constexpr Number kLargest = 1e100L;
/// A disturbance moves the last 12 bits of a number. Of those of the hardware it is to move the
/// last 4.
constexpr mpfr_prec_t kDisturbedBits = kBits + kDisturbanceBits - 4;

/// Whether a number is 0 or within range.
bool IsModerate(Number x)
{
  const Number size = std::fabs(x);
  return size == 0 || (size <= kLargest && size * kLargest >= 1);
}

bool IsKnownFunction(const Line& line)
{
  switch (line.function) {
    case Operation::kExp:
    case Operation::kSin:
    case Operation::kCos:
    case Operation::kTan:
    case Operation::kSinh:
    case Operation::kCosh:
    case Operation::kErf:
      return line.kind == LineKind::kIntegralOfProduct;
    case Operation::kLn:
    case Operation::kAsin:
    case Operation::kAcos:
    case Operation::kAtan:
    case Operation::kTanh:
    case Operation::kAsinh:
    case Operation::kAcosh:
    case Operation::kAtanh:
      return line.kind == LineKind::kIntegralOfQuotient;
    case Operation::kPower:
      return line.kind == LineKind::kPower;
    default:
      return false;
  }
}

bool IsKnown(const Line& line)
{
  switch (line.kind) {
    case LineKind::kConstant:
    case LineKind::kTime:
    case LineKind::kState:
    case LineKind::kCombination:
    case LineKind::kProduct:
    case LineKind::kSquare:
    case LineKind::kQuotient:
    case LineKind::kSquareRoot:
      return true;
    case LineKind::kPower:
    case LineKind::kIntegralOfProduct:
    case LineKind::kIntegralOfQuotient:
      return IsKnownFunction(line);
    case LineKind::kAngle:
      return false;
  }
  return false;
}

Number Value(Operation function, Number a)
{
  switch (function) {
    case Operation::kExp:
      return std::exp(a);
    case Operation::kSin:
      return std::sin(a);
    case Operation::kCos:
      return std::cos(a);
    case Operation::kTan:
      return std::tan(a);
    case Operation::kSinh:
      return std::sinh(a);
    case Operation::kCosh:
      return std::cosh(a);
    case Operation::kErf:
      return std::erf(a);
    case Operation::kLn:
      return std::log(a);
    case Operation::kAsin:
      return std::asin(a);
    case Operation::kAcos:
      return std::acos(a);
    case Operation::kAtan:
      return std::atan(a);
    case Operation::kTanh:
      return std::tanh(a);
    case Operation::kAsinh:
      return std::asinh(a);
    case Operation::kAcosh:
      return std::acosh(a);
    case Operation::kAtanh:
      return std::atanh(a);
    default:
      return std::numeric_limits<Number>::quiet_NaN();
  }
}

/// a[first] b[k-first] + ... + a[last] b[k-last]
Number Convolve(const Number* a, const Number* b, int first, int last, int k)
{
  Number sum = 0;
  for (int j = first; j <= last; ++j) sum += a[j] * b[k - j];
  return sum;
}

}  // namespace

Number ConstantOf(const Graph& graph, NodeId node, bool disturbed)
{
  if (!disturbed || IsExact(graph, node, kBits))
    return ToNumber(EvaluateConstant(graph, node, kBits));
  Real value = EvaluateConstant(graph, node, kDisturbedBits);
  Disturb(value, DisturbanceKey(graph, node));
  return ToNumber(value);
}

std::optional<Program> MakeProgram(const Tape& tape, bool disturbed)
{
  if (!std::ranges::all_of(tape.lines, IsKnown)) return std::nullopt;
  std::vector<Number> constants;
  for (const NodeId node : tape.constants) {
    constants.push_back(ConstantOf(tape.graph, node, disturbed));
    if (!IsModerate(constants.back())) return std::nullopt;
  }
  const auto constant = [&](ConstantId id) { return id == kNone ? Number(0) : constants[id]; };
  Program program{.steps = {}, .factors = {}, .rightHandSides = tape.rightHandSides};
  for (const Factor& factor : tape.factors)
    program.factors.push_back(
        {factor.line, factor.whole != 0 ? Number(factor.whole) : constant(factor.constant)});
  for (const Line& line : tape.lines) {
    program.steps.push_back({line.kind, line.function, line.negative, false, line.a, line.b,
                             line.firstFactor, line.factorCount, constant(line.constant),
                             line.index, line.degree});
    program.usesTime |= line.kind == LineKind::kTime;
  }
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const LineKind kind = tape.lines[id].kind;
    if (kind == LineKind::kIntegralOfProduct || kind == LineKind::kPower)
      program.steps[tape.lines[id].a].isWeighted = true;
    if (kind == LineKind::kIntegralOfQuotient) program.steps[id].isWeighted = true;
  }
  return program;
}

LineTerms::LineTerms(const Program& program, int order)
    : program(program),
      order(order),
      stride(static_cast<std::size_t>(order) + 1),
      terms(program.steps.size() * stride),
      weighted(program.steps.size() * stride),
      sizes(program.steps.size()),
      inverses{0}
{
  for (int k = 1; k <= order; ++k) inverses.push_back(1 / static_cast<Number>(k));
}

// ---------------------------------------------------------------------------------------------
// Term 0

bool LineTerms::Begin(Number time, std::span<const Number> states)
{
  for (LineId id = 0; id < program.steps.size(); ++id) {
    const Number value = Start(program.steps[id], time, states);
    if (!IsModerate(value)) return false;
    *Row(id) = value;
  }
  return true;
}

Number LineTerms::Start(const Program::Step& step, Number time,
                        std::span<const Number> states) const
{
  const auto value = [this](LineId id) { return *Row(id); };
  switch (step.kind) {
    case LineKind::kConstant:
      return step.constant;
    case LineKind::kTime:
      return time;
    case LineKind::kState:
      return states[step.index];
    case LineKind::kCombination:
      return Combination(step, 0) + step.constant;
    case LineKind::kProduct:
      return value(step.a) * value(step.b);
    case LineKind::kSquare:
      return value(step.a) * value(step.a);
    case LineKind::kQuotient:
      return value(step.a) / value(step.b);
    case LineKind::kSquareRoot:
      return std::sqrt(value(step.a));
    case LineKind::kPower:
      return std::pow(value(step.a), step.constant);
    default:
      return Value(step.function, value(step.a));
  }
}

/// (3) The constant belongs to term 0 only.
Number LineTerms::Combination(const Program::Step& step, int k) const
{
  Number sum = 0;
  for (std::uint32_t i = step.firstFactor; i < step.firstFactor + step.factorCount; ++i)
    sum += program.factors[i].factor * Row(program.factors[i].line)[k];
  return sum;
}

// ---------------------------------------------------------------------------------------------
// Term k > 0

void LineTerms::Extend(Number scale)
{
  for (int k = 1; k <= order; ++k) {
    for (LineId id = 0; id < program.steps.size(); ++id) {
      const Program::Step& step = program.steps[id];
      Number* const s = Row(id);
      s[k] = Term(step, s, k, scale);
      if (step.isWeighted) weighted[id * stride + static_cast<std::size_t>(k)] = k * s[k];
    }
  }
}

/// The numbers are those of docs/solve/recurrences.md.
Number LineTerms::Term(const Program::Step& step, const Number* s, int k, Number scale) const
{
  const auto row = [this](LineId id) { return Row(id); };
  switch (step.kind) {
    case LineKind::kConstant:
      return 0;
    case LineKind::kTime:
      return k == 1 ? scale : 0;
    case LineKind::kState:  // (2)
      return scale * row(program.rightHandSides[step.index])[k - 1] * inverses[k];
    case LineKind::kCombination:
      return Combination(step, k);
    case LineKind::kProduct:  // (4)
      return Convolve(row(step.a), row(step.b), 0, k, k);
    case LineKind::kSquare: {  // (5)
      const Number* const a = row(step.a);
      const Number middle = k % 2 == 0 ? a[k / 2] * a[k / 2] : 0;
      return 2 * Convolve(a, a, 0, (k - 1) / 2, k) + middle;
    }
    case LineKind::kQuotient: {  // (6)
      const Number* const b = row(step.b);
      return (row(step.a)[k] - Convolve(b, s, 1, k, k)) / b[0];
    }
    case LineKind::kSquareRoot: {  // (7)
      const Number middle = k % 2 == 0 ? s[k / 2] * s[k / 2] : 0;
      return (row(step.a)[k] - 2 * Convolve(s, s, 1, (k - 1) / 2, k) - middle) / (2 * s[0]);
    }
    case LineKind::kPower: {  // (8)
      const Number* const a = row(step.a);
      const Number weightedSum = Convolve(Weighted(step.a), s, 1, k, k);
      const Number sum = Convolve(a, s, 1, k, k);
      return ((step.constant + 1) * weightedSum - k * sum) * inverses[k] / a[0];
    }
    case LineKind::kIntegralOfProduct: {  // (9)
      const Number sum = Convolve(Weighted(step.a), row(step.b), 1, k, k) * inverses[k];
      return step.negative ? -sum : sum;
    }
    default: {  // (10), kIntegralOfQuotient
      const Number* const b = row(step.b);
      const Number* const own = weighted.data() + (s - terms.data());
      const Number first = k * row(step.a)[k];
      return ((step.negative ? -first : first) - Convolve(own, b, 1, k - 1, k)) * inverses[k] /
             b[0];
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Sizes

void LineTerms::FindSizes()
{
  for (LineId id = 0; id < program.steps.size(); ++id) {
    const Number value = std::fabs(*Row(id));
    sizes[id] = std::max(value, SizeOf(program.steps[id], id));
  }
}

/// What an error of the operands makes of one in the line.
Number LineTerms::SizeOf(const Program::Step& step, LineId id) const
{
  const auto value = [this](LineId line) { return std::fabs(*Row(line)); };
  switch (step.kind) {
    case LineKind::kCombination: {
      Number size = std::fabs(step.constant);
      for (std::uint32_t i = step.firstFactor; i < step.firstFactor + step.factorCount; ++i)
        size =
            std::max(size, std::fabs(program.factors[i].factor) * sizes[program.factors[i].line]);
      return size;
    }
    case LineKind::kProduct:
      return std::max(sizes[step.a] * value(step.b), value(step.a) * sizes[step.b]);
    case LineKind::kSquare:
      return 2 * sizes[step.a] * value(step.a);
    case LineKind::kQuotient:
      return std::max(sizes[step.a], value(id) * sizes[step.b]) / value(step.b);
    case LineKind::kSquareRoot:
      return sizes[step.a] / (2 * value(id));
    case LineKind::kPower:
      return std::fabs(step.constant) * value(id) * sizes[step.a] / value(step.a);
    case LineKind::kIntegralOfProduct:
      return value(step.b) * sizes[step.a];
    case LineKind::kIntegralOfQuotient:
      return sizes[step.a] / value(step.b);
    default:
      return value(id);
  }
}

}  // namespace varno::solve::quick
