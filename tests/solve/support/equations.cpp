#include "tests/solve/support/equations.h"

namespace varno::solve::support {

namespace {

Expression Constant(Expression beside, const Rational& value)
{
  return {beside.graph, beside.graph->Number(value, {})};
}

}  // namespace

Expression Function(Operation function, Expression argument)
{
  return {argument.graph, argument.graph->Make(function, argument.id, {})};
}

Expression Function(Operation function, Expression a, Expression b)
{
  return {a.graph, a.graph->Make(function, a.id, b.id, {})};
}

Expression operator-(Expression a)
{
  return Function(Operation::kNegate, a);
}
Expression operator+(Expression a, Expression b)
{
  return Function(Operation::kAdd, a, b);
}
Expression operator-(Expression a, Expression b)
{
  return Function(Operation::kSubtract, a, b);
}
Expression operator*(Expression a, Expression b)
{
  return Function(Operation::kMultiply, a, b);
}
Expression operator/(Expression a, Expression b)
{
  return Function(Operation::kDivide, a, b);
}
Expression operator+(Expression a, const Rational& b)
{
  return a + Constant(a, b);
}
Expression operator-(Expression a, const Rational& b)
{
  return a - Constant(a, b);
}
Expression operator*(Expression a, const Rational& b)
{
  return a * Constant(a, b);
}
Expression operator/(Expression a, const Rational& b)
{
  return a / Constant(a, b);
}
Expression operator+(const Rational& a, Expression b)
{
  return Constant(b, a) + b;
}
Expression operator-(const Rational& a, Expression b)
{
  return Constant(b, a) - b;
}
Expression operator*(const Rational& a, Expression b)
{
  return Constant(b, a) * b;
}
Expression operator/(const Rational& a, Expression b)
{
  return Constant(b, a) / b;
}
Expression Power(Expression base, Expression exponent)
{
  return Function(Operation::kPower, base, exponent);
}
Expression Power(Expression base, const Rational& exponent)
{
  return Power(base, Constant(base, exponent));
}

Expression Equations::Variable(const std::string& name, const Rational& start)
{
  return Variable(name, Number(start));
}

Expression Equations::Variable(const std::string& name, Expression start)
{
  const auto index = static_cast<std::uint32_t>(model.states.size());
  model.states.push_back({name, model.graph.Number(0, {}), start.id, {}});
  return {&model.graph, model.graph.State(index, {})};
}

void Equations::SetDerivative(Expression variable, Expression rightHandSide)
{
  model.states[model.graph[variable.id].index].rightHandSide = rightHandSide.id;
}

}  // namespace varno::solve::support
