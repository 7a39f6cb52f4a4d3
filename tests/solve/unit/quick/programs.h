#pragma once

#include <functional>

#include "solve/quick/line_terms.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve::quick {

/// x' = v, v' = -x from (1, 0)
inline Program Oscillator()
{
  support::Equations m;
  const support::Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  return *MakeProgram(Compile(m.Finished()), false);
}

/// y' = f(t, y) from `start`
inline Program Equation(
    const Rational& start,
    const std::function<support::Expression(support::Equations&, support::Expression)>& derivative)
{
  support::Equations m;
  const support::Expression y = m.Variable("y", start);
  m.SetDerivative(y, derivative(m, y));
  return *MakeProgram(Compile(m.Finished()), false);
}

}  // namespace varno::solve::quick
