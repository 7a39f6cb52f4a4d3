#include "solve/tape/line_table.h"

#include <limits>
#include <utility>

namespace varno::solve {

namespace {

/// A line without operands.
Line Empty(LineKind kind, NodeId id)
{
  return {.kind = kind,
          .function = Operation::kNumber,
          .negative = false,
          .dependsOnStates = false,
          .a = kNone,
          .b = kNone,
          .c = kNone,
          .firstFactor = 0,
          .factorCount = 0,
          .constant = kNone,
          .index = 0,
          .degree = -1,
          .node = id};
}

Line WithOperands(LineKind kind, LineId a, LineId b, NodeId id)
{
  Line line = Empty(kind, id);
  line.a = a;
  line.b = b;
  return line;
}

template <class T>
void AppendBytes(std::string& bytes, T value)
{
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

std::size_t LineTable::KeyHash::operator()(const Key& key) const
{
  std::size_t hash = 0;
  for (const std::uint32_t part : key) hash = (hash ^ part) * 0x9E3779B97F4A7C15u + (hash >> 29);
  return hash;
}

LineId LineTable::Add(const Line& line)
{
  tape.lines.push_back(line);
  Line& added = tape.lines.back();
  added.dependsOnStates = line.kind == LineKind::kState;
  for (const LineId operand : {line.a, line.b, line.c}) {
    if (operand != kNone) added.dependsOnStates |= tape.lines[operand].dependsOnStates;
  }
  for (std::uint32_t i = 0; i < line.factorCount; ++i) {
    added.dependsOnStates |= tape.lines[tape.factors[line.firstFactor + i].line].dependsOnStates;
  }
  return static_cast<LineId>(tape.lines.size() - 1);
}

LineId LineTable::Intern(Line line)
{
  const Key key{static_cast<std::uint32_t>(line.kind),
                static_cast<std::uint32_t>(line.function),
                line.a,
                line.b,
                line.c,
                line.constant};
  const auto [place, isNew] = known.try_emplace(key, 0);
  if (isNew) place->second = Add(line);
  return place->second;
}

ConstantId LineTable::ConstantNumber(NodeId value)
{
  if (arithmetic.IsZero(value)) return kNone;
  const auto [place, isNew] =
      constantNumbers.try_emplace(value, static_cast<ConstantId>(tape.constants.size()));
  if (isNew) tape.constants.push_back(value);
  return place->second;
}

void LineTable::AddState(std::uint32_t index, NodeId id)
{
  Line line = Empty(LineKind::kState, id);
  line.index = index;
  Add(line);
}

LineId LineTable::Time(NodeId id)
{
  return Intern(Empty(LineKind::kTime, id));
}

LineId LineTable::Constant(NodeId value, NodeId id)
{
  Line line = Empty(LineKind::kConstant, id);
  line.constant = ConstantNumber(value);
  return Intern(line);
}

LineId LineTable::Product(LineId a, LineId b, NodeId id)
{
  if (a == b) return Intern(WithOperands(LineKind::kSquare, a, kNone, id));
  if (b < a) std::swap(a, b);
  return Intern(WithOperands(LineKind::kProduct, a, b, id));
}

LineId LineTable::Quotient(LineId a, LineId b, NodeId id)
{
  return Intern(WithOperands(LineKind::kQuotient, a, b, id));
}

LineId LineTable::SquareRoot(LineId a, NodeId id)
{
  return Intern(WithOperands(LineKind::kSquareRoot, a, kNone, id));
}

LineId LineTable::Power(LineId a, Operation function, NodeId exponent, NodeId id)
{
  Line line = WithOperands(LineKind::kPower, a, kNone, id);
  line.function = function;
  line.constant = ConstantNumber(exponent);
  return Intern(line);
}

LineId LineTable::Angle(LineId y, LineId x, LineId squares, NodeId id)
{
  Line line = WithOperands(LineKind::kAngle, y, x, id);
  line.c = squares;
  return Intern(line);
}

LineId LineTable::FunctionOf(Operation function, LineId a, bool negative, NodeId id)
{
  // Interned without its derivative, which follows from the function.
  Line line = WithOperands(LineKind::kIntegralOfProduct, a, kNone, id);
  line.function = function;
  line.negative = negative;
  return Intern(line);
}

LineId LineTable::IntegralOfProduct(Operation function, LineId a, LineId derivative, bool negative,
                                    NodeId id)
{
  const LineId line = FunctionOf(function, a, negative, id);
  SetDerivative(line, derivative);
  return line;
}

LineId LineTable::IntegralOfQuotient(Operation function, LineId a, LineId divisor, bool negative,
                                     NodeId id)
{
  Line line = WithOperands(LineKind::kIntegralOfQuotient, a, divisor, id);
  line.function = function;
  line.negative = negative;
  return Intern(line);
}

Factor LineTable::ToFactor(const LinearForm::Term& term)
{
  const Graph& graph = tape.graph;
  if (graph.IsNumber(term.factor)) {
    const Rational& value = graph.Value(term.factor);
    if (value.get_den() == 1 && abs(value.get_num()) <= std::numeric_limits<std::int32_t>::max()) {
      return {term.line, static_cast<std::int32_t>(value.get_num().get_si()), kNone};
    }
  }
  return {term.line, 0, ConstantNumber(term.factor)};
}

LineId LineTable::Materialise(LinearForm form, NodeId id)
{
  arithmetic.Normalise(form);
  if (form.terms.empty()) return Constant(form.constant, id);
  if (form.terms.size() == 1 && arithmetic.IsZero(form.constant) &&
      arithmetic.IsOne(form.terms[0].factor)) {
    return form.terms[0].line;
  }
  Line line = Empty(LineKind::kCombination, id);
  line.constant = ConstantNumber(form.constant);
  line.firstFactor = static_cast<std::uint32_t>(tape.factors.size());
  line.factorCount = static_cast<std::uint32_t>(form.terms.size());
  std::string key;
  AppendBytes(key, line.constant);
  for (const LinearForm::Term& term : form.terms) {
    const Factor factor = ToFactor(term);
    AppendBytes(key, factor.line);
    AppendBytes(key, factor.whole);
    AppendBytes(key, factor.constant);
    tape.factors.push_back(factor);
  }
  const auto [place, isNew] = combinations.try_emplace(std::move(key), 0);
  if (isNew) {
    place->second = Add(line);
  } else {
    tape.factors.resize(line.firstFactor);
  }
  return place->second;
}

std::pair<NodeId, LineId> LineTable::FactorAndLine(LinearForm form, NodeId id)
{
  arithmetic.Normalise(form);
  if (form.terms.size() == 1 && arithmetic.IsZero(form.constant)) {
    return {form.terms[0].factor, form.terms[0].line};
  }
  return {arithmetic.One(), Materialise(std::move(form), id)};
}

}  // namespace varno::solve
