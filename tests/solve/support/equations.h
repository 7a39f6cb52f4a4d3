#pragma once

#include <string>

#include "solve/model/model.h"

namespace varno::solve::support {

/// An expression of a model that is made by hand.
struct Expression {
  Graph* graph;
  NodeId id;
};

Expression operator-(Expression a);
Expression operator+(Expression a, Expression b);
Expression operator-(Expression a, Expression b);
Expression operator*(Expression a, Expression b);
Expression operator/(Expression a, Expression b);
Expression operator+(Expression a, const Rational& b);
Expression operator-(Expression a, const Rational& b);
Expression operator*(Expression a, const Rational& b);
Expression operator/(Expression a, const Rational& b);
Expression operator+(const Rational& a, Expression b);
Expression operator-(const Rational& a, Expression b);
Expression operator*(const Rational& a, Expression b);
Expression operator/(const Rational& a, Expression b);

Expression Power(Expression base, Expression exponent);
Expression Power(Expression base, const Rational& exponent);
/// A function of one argument.
Expression Function(Operation function, Expression argument);
/// A function of two arguments.
Expression Function(Operation function, Expression a, Expression b);

/// Makes a model equation by equation, without the language.
class Equations {
 public:
  Expression Time() { return {&model.graph, model.graph.Leaf(Operation::kTime, {})}; }
  Expression Pi() { return {&model.graph, model.graph.Leaf(Operation::kPi, {})}; }
  Expression Number(const Rational& value) { return {&model.graph, model.graph.Number(value, {})}; }

  /// A new variable, with derivative 0 until SetDerivative.
  Expression Variable(const std::string& name, const Rational& start);
  /// The same with a constant expression as its start value.
  Expression Variable(const std::string& name, Expression start);
  void SetDerivative(Expression variable, Expression rightHandSide);

  const Model& Finished() const { return model; }

 private:
  Model model;
};

/// A model with one equation, name' = rightHandSide(t), from 0.
template <class RightHandSide>
Model Quadrature(RightHandSide rightHandSide)
{
  Equations equations;
  const Expression y = equations.Variable("y", 0);
  equations.SetDerivative(y, rightHandSide(equations));
  return equations.Finished();
}

}  // namespace varno::solve::support
