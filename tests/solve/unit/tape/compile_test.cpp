#include "solve/tape/compile.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/tape/print.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;

std::string Printed(const Equations& equations)
{
  std::vector<std::string> names;
  for (const State& state : equations.Finished().states) names.push_back(state.name);
  return Print(Compile(equations.Finished()), names);
}

/// Equations for x and y; `f` makes the right-hand side of x' from both, y' = 0.
template <class RightHandSide>
std::string PrintedFor(RightHandSide f)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 2);
  m.SetDerivative(x, f(m, x, y));
  m.SetDerivative(y, x);
  return Printed(m);
}

// ---------------------------------------------------------------------------------------------
// Sums

TEST(Compile, SumIsOneLine)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 3*0 - 1 + c0\nx' = 2\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression y) { return 3 * x - (y - 7); }));
}

TEST(Compile, NestedSumsWithFactorsAreOneLine)
{
  // 2 (x - 3 (y - x)) - y = 8x - 7y
  EXPECT_EQ(
      "0 = x\n1 = y\n2 = 8*0 - 7*1\nx' = 2\ny' = 0\n",
      PrintedFor([](Equations&, Expression x, Expression y) { return 2 * (x - 3 * (y - x)) - y; }));
}

TEST(Compile, DivisionByANumberIsAFactor)
{
  const std::string printed =
      PrintedFor([](Equations&, Expression x, Expression y) { return (x + y) / 3; });
  EXPECT_EQ("0 = x\n1 = y\n2 = c0*0 + c0*1\nx' = 2\ny' = 0\n", printed);
}

TEST(Compile, EqualSummandsCancelExactly)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 0\nx' = 2\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression y) { return (x + y) - y - x; }));
}

TEST(Compile, WhatCancelsLeavesTheOthers)
{
  EXPECT_EQ("0 = x\n1 = y\nx' = 0\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression y) { return (2 * x + y) - y - x; }));
}

TEST(Compile, StateIsItsOwnLine)
{
  EXPECT_EQ("0 = x\n1 = y\nx' = 1\ny' = 0\n",
            PrintedFor([](Equations&, Expression, Expression y) { return y; }));
}

TEST(Compile, SumUsedTwiceIsComputedOnce)
{
  const std::string printed = PrintedFor([](Equations&, Expression x, Expression y) {
    const Expression sum = x + y;
    return sum * sum * (sum - 1);
  });
  EXPECT_EQ("0 = x\n1 = y\n2 = 0 + 1\n3 = 2^2\n4 = 2 + c0\n5 = 3 * 4\nx' = 5\ny' = 0\n", printed);
}

// ---------------------------------------------------------------------------------------------
// Products

TEST(Compile, EqualOperationsStandOnce)
{
  const std::string printed = PrintedFor([](Equations&, Expression x, Expression y) {
    return x * y + Function(Operation::kExp, x * y);
  });
  EXPECT_EQ("0 = x\n1 = y\n2 = 0 * 1\n3 = exp 2, derivative 3\n4 = 2 + 3\nx' = 4\ny' = 0\n",
            printed);
}

TEST(Compile, ProductsAreEqualInEitherOrder)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 0 * 1\n3 = 2*2\nx' = 3\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression y) { return x * y + y * x; }));
}

TEST(Compile, ConstantFactorsStayOutsideOfProducts)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 0 * 1\n3 = -5*2\nx' = 3\ny' = 0\n",
            PrintedFor(
                [](Equations&, Expression x, Expression y) { return (2 * x) * (-3 * y) + x * y; }));
}

TEST(Compile, ProductOfEqualsIsASquare)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 0^2\nx' = 2\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression) { return x * x; }));
}

TEST(Compile, IntegerPowersAreProducts)
{
  // x^13 = ((x^2 x)^2)^2 x: 13 is 1101 in binary.
  EXPECT_EQ("0 = x\n1 = y\n2 = 0^2\n3 = 0 * 2\n4 = 3^2\n5 = 4^2\n6 = 0 * 5\nx' = 6\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression) { return Power(x, 13); }));
}

TEST(Compile, PowersShareTheirProducts)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 0^2\n3 = 0 * 2\n4 = 2 + 3\nx' = 4\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression) { return x * x + Power(x, 3); }));
}

TEST(Compile, NegativePowerIsAQuotient)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 0^2\n3 = c0\n4 = 3 / 2\nx' = 4\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression) { return Power(x, -2); }));
}

TEST(Compile, HalfPowerIsARoot)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = sqrt 0\n3 = 2*2\nx' = 3\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression) {
              return Power(x, Rational(1, 2)) + Function(Operation::kSqrt, x);
            }));
}

TEST(Compile, RealPowerHasItsRecurrence)
{
  EXPECT_EQ(
      "0 = x\n1 = y\n2 = 0^c0\nx' = 2\ny' = 0\n",
      PrintedFor([](Equations&, Expression x, Expression) { return Power(x, Rational(-3, 2)); }));
}

// The zeroth power is 1 of everything, 0 included.
TEST(Compile, ZerothPowerIsOne)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = c0\nx' = 2\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression) { return Power(x, 0); }));
}

TEST(Compile, PowerOfAConstantIsAnExponential)
{
  EXPECT_EQ(
      "0 = x\n1 = y\n2 = c0*0\n3 = exp 2, derivative 3\nx' = 3\ny' = 0\n",
      PrintedFor([](Equations& m, Expression x, Expression) { return Power(m.Number(2), x); }));
}

TEST(Compile, PowerOfALineIsAnExponentialOfALogarithm)
{
  EXPECT_EQ(
      "0 = x\n1 = y\n2 = ln 0, derivative 1/0\n3 = 1 * 2\n4 = exp 3, derivative 4\nx' = 4\ny' = "
      "0\n",
      PrintedFor([](Equations&, Expression x, Expression y) { return Power(x, y); }));
}

// ---------------------------------------------------------------------------------------------
// Functions

TEST(Compile, SinAndCosAreOnePair)
{
  EXPECT_EQ(
      "0 = x\n1 = y\n2 = sin 0, derivative 3\n3 = cos 0, derivative -2\n4 = 2 + 3\nx' = 4\ny' = "
      "0\n",
      PrintedFor([](Equations&, Expression x, Expression) {
        return Function(Operation::kCos, x) + Function(Operation::kSin, x);
      }));
}

TEST(Compile, TanFollowsItsSquare)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = tan 0, derivative 4\n3 = 2^2\n4 = 3 + c0\nx' = 2\ny' = 0\n",
            PrintedFor(
                [](Equations&, Expression x, Expression) { return Function(Operation::kTan, x); }));
}

TEST(Compile, TanhDividesByASquare)
{
  EXPECT_EQ(
      "0 = x\n1 = y\n2 = sinh 0, derivative 3\n3 = cosh 0, derivative 2\n4 = 3^2\n5 = tanh 0, "
      "derivative 1/4\nx' = 5\ny' = 0\n",
      PrintedFor(
          [](Equations&, Expression x, Expression) { return Function(Operation::kTanh, x); }));
}

TEST(Compile, AsinAndAcosShareTheRoot)
{
  EXPECT_EQ(
      "0 = x\n1 = y\n2 = 0^2\n3 = -2 + c0\n4 = sqrt 3\n5 = asin 0, derivative 1/4\n"
      "6 = acos 0, derivative -1/4\n7 = 5 + 6\nx' = 7\ny' = 0\n",
      PrintedFor([](Equations&, Expression x, Expression) {
        const Expression asin = Function(Operation::kAsin, x), acos = Function(Operation::kAcos, x);
        return asin + acos;
      }));
}

TEST(Compile, AngleDividesByTheSquares)
{
  EXPECT_EQ("0 = x\n1 = y\n2 = 1^2\n3 = 0^2\n4 = 2 + 3\n5 = atan2 1 0, squares 4\nx' = 5\ny' = 0\n",
            PrintedFor([](Equations&, Expression x, Expression y) {
              return Function(Operation::kAtan2, y, x);
            }));
}

// ---------------------------------------------------------------------------------------------
// Constants and time

TEST(Compile, ConstantExpressionIsOneConstant)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x,
                  Function(Operation::kSin, m.Pi() / 3) * Power(m.Number(2), Rational(1, 2)) * x);
  EXPECT_EQ("0 = x\n1 = c0*0\nx' = 1\n", Printed(m));
}

TEST(Compile, WhatNoEquationNeedsIsLeftOut)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  Function(Operation::kTan, x);
  m.SetDerivative(x, x);
  EXPECT_EQ("0 = x\nx' = 0\n", Printed(m));
}

TEST(Compile, ConstantDerivativeIsALine)
{
  Equations m;
  m.SetDerivative(m.Variable("x", 1), m.Number(3));
  EXPECT_EQ("0 = x\n1 = c0\nx' = 1\n", Printed(m));
}

TEST(Compile, TellsFunctionsOfTimeFromThoseOfStates)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, Function(Operation::kSin, m.Time()) * x);
  const Tape tape = Compile(m.Finished());
  std::vector<bool> dependsOnStates;
  for (const Line& line : tape.lines) dependsOnStates.push_back(line.dependsOnStates);
  // x, t, sin t, cos t, x sin t
  EXPECT_EQ((std::vector<bool>{true, false, false, false, true}), dependsOnStates);
}

// ---------------------------------------------------------------------------------------------
// Degrees

/// The degree in t of the line of x', for x'' = v with v' = -10.
std::int32_t DegreeOf(Expression (*f)(Equations&, Expression x, Expression v))
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 2), y = m.Variable("y", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, m.Number(-10));
  m.SetDerivative(y, f(m, x, v));
  const Tape tape = Compile(m.Finished());
  return tape.lines[tape.rightHandSides[2]].degree;
}

TEST(Compile, KnowsPolynomialsByTheirStructure)
{
  EXPECT_EQ(0, DegreeOf([](Equations& m, Expression, Expression) { return m.Number(4); }));
  EXPECT_EQ(1, DegreeOf([](Equations&, Expression, Expression v) { return v; }));
  EXPECT_EQ(2, DegreeOf([](Equations&, Expression x, Expression v) { return x + 3 * v; }));
  EXPECT_EQ(7, DegreeOf([](Equations& m, Expression x, Expression v) {
              return m.Time() * (x * x) * (v * v);
            }));
  EXPECT_EQ(50,
            DegreeOf([](Equations& m, Expression, Expression) { return Power(1 - m.Time(), 50); }));
  EXPECT_EQ(-1, DegreeOf([](Equations&, Expression x, Expression) { return 1 / x; }));
  EXPECT_EQ(-1, DegreeOf([](Equations&, Expression x, Expression) {
    return x + Function(Operation::kExp, x);
  }));
}

TEST(Compile, StateThatFeedsItselfIsNoPolynomial)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 1);
  m.SetDerivative(x, y);
  m.SetDerivative(y, x);
  const Tape tape = Compile(m.Finished());
  EXPECT_EQ(-1, tape.lines[0].degree);
  EXPECT_EQ(-1, tape.lines[1].degree);
}

// ---------------------------------------------------------------------------------------------
// Large models. What took more than linear time would not end within the limit of the test.

constexpr int kMany = 100'000;

// 10^60 (sqrt(1 + 10^-60 cos(t - t)) - 1), of which all digits cancel but for a constant
TEST(Compile, FunctionsOfWhatCancelsAreConstants)
{
  Equations m;
  const Rational large("1000000000000000000000000000000000000000000000000000000000000");
  const Expression t = m.Time(), x = m.Variable("x", 0);
  const Expression cos = Function(Operation::kCos, t - t) * Function(Operation::kExp, x - x);
  m.SetDerivative(x, large * (Function(Operation::kSqrt, 1 + cos / large) - 1));
  const Tape tape = Compile(m.Finished());
  EXPECT_EQ(LineKind::kConstant, tape.lines[tape.rightHandSides[0]].kind);
}

TEST(CompileLarge, LongSumIsOneLine)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 1);
  Expression sum = x;
  for (int i = 1; i < kMany; ++i) sum = sum + (i % 2 == 0 ? x : Rational(i) * y);
  m.SetDerivative(x, sum);
  // x: 1 + 49,999 even numbers below 100,000; y: the odd ones, 50,000^2
  EXPECT_EQ("0 = x\n1 = y\n2 = 50000*0 + c0*1\n3 = 0\nx' = 2\ny' = 3\n", Printed(m));
}

TEST(CompileLarge, SumOfManyOperandsGrowsOnEitherSide)
{
  Equations m;
  std::vector<Expression> states;
  for (int i = 0; i < kMany / 10; ++i) states.push_back(m.Variable("x" + std::to_string(i), 1));
  Expression left = states[0], right = states[0];
  for (std::size_t i = 1; i < states.size(); ++i) {
    left = left + states[i];
    right = states[i] + right;
  }
  m.SetDerivative(states[0], left);
  m.SetDerivative(states[1], right);
  const Tape tape = Compile(m.Finished());
  EXPECT_EQ(states.size(), tape.lines[tape.rightHandSides[0]].factorCount);
  EXPECT_EQ(tape.rightHandSides[0], tape.rightHandSides[1]);
}

TEST(CompileLarge, NestedSubtractionsNeedNoQuadraticTime)
{
  // x0 - (x1 - (x2 - ...)): each level turns the signs of all below.
  Equations m;
  std::vector<Expression> states;
  for (int i = 0; i < kMany; ++i) states.push_back(m.Variable("x", 1));
  Expression nested = states.back();
  for (std::size_t i = states.size() - 1; i-- > 0;) nested = states[i] - nested;
  m.SetDerivative(states[0], nested);
  const Tape tape = Compile(m.Finished());
  EXPECT_LT(tape.lines.size(), states.size() + kMany / 32);
  EXPECT_LT(tape.factors.size(), states.size() + kMany / 16);
}

TEST(CompileLarge, NestedProductsNeedNoRecursion)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 1);
  Expression nested = x;
  for (int i = 0; i < kMany; ++i) nested = y * nested + 1;
  m.SetDerivative(x, nested);
  const Tape tape = Compile(m.Finished());
  EXPECT_EQ(2U + 1 + 2 * kMany, tape.lines.size());
}

TEST(CompileLarge, NestedFunctionsNeedNoRecursion)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  Expression nested = x;
  for (int i = 0; i < kMany; ++i) nested = Function(Operation::kSin, nested);
  m.SetDerivative(x, nested);
  EXPECT_EQ(1U + 2 * kMany, Compile(m.Finished()).lines.size());
}

// A diffusion line: x_i' = x_(i-1) - 2 x_i + x_(i+1) - x_i^3
TEST(CompileLarge, TenThousandEquationsHaveThreeLinesEach)
{
  constexpr std::size_t kCount = 10'000;
  Equations m;
  std::vector<Expression> x;
  for (std::size_t i = 0; i < kCount; ++i) x.push_back(m.Variable("x" + std::to_string(i), 1));
  for (std::size_t i = 0; i < kCount; ++i) {
    const Expression left = x[(i + kCount - 1) % kCount], right = x[(i + 1) % kCount];
    m.SetDerivative(x[i], left - 2 * x[i] + right - Power(x[i], 3));
  }
  const Tape tape = Compile(m.Finished());
  // the state, its square, its cube, the sum
  EXPECT_EQ(4 * kCount, tape.lines.size());
}

}  // namespace
}  // namespace varno::solve
