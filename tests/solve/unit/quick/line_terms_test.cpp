#include "solve/quick/line_terms.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/taylor_terms.h"

namespace varno::solve::quick {
namespace {

using support::Equations;
using support::Expression;
using support::PowerSeries;
using support::Quadrature;
using support::SeriesRequest;
using support::TermsOf;

using MakeExpression = std::function<Expression(Equations&)>;

constexpr int kOrder = 20;
/// A time that is exact, and one at which each function below has a value.
constexpr double kTime = 0.625;

/// The terms of an expression of t about kTime are those of the series by MPFR.
void ExpectTermsOf(const MakeExpression& make)
{
  const PowerSeries expected =
      TermsOf(make, SeriesRequest{.order = kOrder, .time = kTime, .scaleExponent = -1});
  const Tape tape = Compile(Quadrature(make));
  const auto program = MakeProgram(tape, false);
  ASSERT_TRUE(program);
  LineTerms terms(*program, kOrder);
  const Number start = 0;
  ASSERT_TRUE(terms.Begin(kTime, {&start, 1}));
  terms.Extend(0.5L);
  const auto found = terms.Of(program->rightHandSides[0]);
  Number largest = 0;
  for (int k = 0; k <= kOrder; ++k) {
    const Number term = ToNumber(expected[k]);
    largest = std::max(largest, std::fabs(term));
    // Later terms are made of earlier ones.
    EXPECT_LE(std::fabs(found[k] - term), 64 * (k + 1) * kUnit * largest) << "term " << k;
  }
}

Expression Of(Operation operation, Expression argument)
{
  return support::Function(operation, argument);
}

TEST(QuickLineTerms, AreThoseOfArithmetic)
{
  ExpectTermsOf([](Equations& m) { return m.Time(); });
  ExpectTermsOf([](Equations& m) { return 3 * m.Time() - Rational(1, 3); });
  ExpectTermsOf([](Equations& m) { return 1 / (m.Time() + 2); });
  ExpectTermsOf([](Equations& m) {
    const Expression u = 1 / (m.Time() + 2);
    return u * u * (u + 1);
  });
  ExpectTermsOf([](Equations& m) { return Of(Operation::kSqrt, m.Time() + 1); });
  ExpectTermsOf([](Equations& m) { return Power(m.Time() + 1, Rational(-7, 3)); });
}

TEST(QuickLineTerms, AreThoseOfFunctions)
{
  for (const Operation function :
       {Operation::kExp, Operation::kSin, Operation::kCos, Operation::kTan, Operation::kSinh,
        Operation::kCosh, Operation::kErf, Operation::kLn, Operation::kAsin, Operation::kAcos,
        Operation::kAtan, Operation::kTanh, Operation::kAsinh, Operation::kAtanh}) {
    SCOPED_TRACE(FunctionName(function));
    ExpectTermsOf([&](Equations& m) { return Of(function, m.Time()); });
    ExpectTermsOf([&](Equations& m) { return Of(function, 1 / (m.Time() + 1)); });
  }
  ExpectTermsOf([](Equations& m) { return Of(Operation::kAcosh, m.Time() + 1); });
}

TEST(QuickLineTerms, OtherOperationsHaveNoProgram)
{
  for (const Operation function : {Operation::kCbrt, Operation::kCot, Operation::kAcoth}) {
    const Tape tape = Compile(Quadrature([&](Equations& m) { return Of(function, m.Time() + 1); }));
    EXPECT_FALSE(MakeProgram(tape, false)) << FunctionName(function);
  }
}

TEST(QuickLineTerms, ConstantsBeyondTheRangeHaveNoProgram)
{
  Rational huge = 1;
  for (int i = 0; i < 101; ++i) huge *= 10;
  EXPECT_FALSE(
      MakeProgram(Compile(Quadrature([&](Equations& m) { return huge * m.Time(); })), false));
  EXPECT_FALSE(
      MakeProgram(Compile(Quadrature([&](Equations& m) { return m.Time() / huge; })), false));
}

TEST(QuickLineTerms, TellsOfValuesBeyondTheRange)
{
  const Tape tape = Compile(Quadrature([](Equations& m) { return Of(Operation::kExp, m.Time()); }));
  const auto program = MakeProgram(tape, false);
  LineTerms terms(*program, kOrder);
  const Number start = 0;
  EXPECT_TRUE(terms.Begin(200, {&start, 1}));
  EXPECT_FALSE(terms.Begin(240, {&start, 1}));   // 1e104
  EXPECT_FALSE(terms.Begin(-240, {&start, 1}));  // not 0
}

TEST(QuickLineTerms, WhatHasNoValueIsToldOf)
{
  const Number start = 0;
  for (const Operation function : {Operation::kSqrt, Operation::kLn}) {
    const Tape tape = Compile(Quadrature([&](Equations& m) { return Of(function, m.Time()); }));
    const auto program = MakeProgram(tape, false);
    EXPECT_FALSE(LineTerms(*program, kOrder).Begin(-1, {&start, 1})) << FunctionName(function);
  }
  const Tape tape = Compile(Quadrature([](Equations& m) { return 1 / m.Time(); }));
  const auto program = MakeProgram(tape, false);
  EXPECT_FALSE(LineTerms(*program, kOrder).Begin(0, {&start, 1}));
}

// What cancels shows in the size.
TEST(QuickLineTerms, SizesTellOfWhatCancels)
{
  const Tape tape =
      Compile(Quadrature([](Equations& m) { return 1000 * (Of(Operation::kCos, m.Time()) - 1); }));
  const auto program = MakeProgram(tape, false);
  LineTerms terms(*program, kOrder);
  const Number start = 0;
  ASSERT_TRUE(terms.Begin(0x1p-10L, {&start, 1}));
  terms.FindSizes();
  const LineId line = program->rightHandSides[0];
  EXPECT_LT(std::fabs(terms.Of(line)[0]), 0.001L);
  EXPECT_NEAR(static_cast<double>(terms.Size(line)), 1000, 1);
}

TEST(QuickLineTerms, DisturbedConstantsMoveUnlessTheyAreExact)
{
  Equations m;
  const Expression third = m.Number(Rational(1, 3)), half = m.Number(Rational(1, 2));
  const Graph& graph = m.Finished().graph;
  EXPECT_EQ(ConstantOf(graph, third.id, false), 1 / 3.0L);
  const Number moved = ConstantOf(graph, third.id, true) - 1 / 3.0L;
  EXPECT_GT(std::fabs(moved), 0);
  EXPECT_LE(std::fabs(moved), 16 * kUnit);
  EXPECT_EQ(ConstantOf(graph, half.id, true), 0.5L);
}

}  // namespace
}  // namespace varno::solve::quick
