#include "solve/quick/pair.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve::quick {
namespace {

using support::Equations;
using support::Expression;

Pair::Problem ProblemOf(const Model& model, const Way& way)
{
  const Tape tape = Compile(model);
  Pair::Problem problem{*MakeProgram(tape, true), *MakeProgram(tape, false), {}, {}, way};
  for (const State& state : model.states) {
    problem.disturbedStart.push_back(ConstantOf(model.graph, state.start, true));
    problem.start.push_back(ConstantOf(model.graph, state.start, false));
  }
  return problem;
}

bool GoTo(Pair& pair, Number place)
{
  while (pair.Reached() < place) {
    if (!pair.Step()) return false;
  }
  return true;
}

TEST(QuickPair, RunsAgreeWithinTheUncertainty)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  Pair pair(ProblemOf(m.Finished(), {0, false, 30}));
  for (Number place = 1; place <= 30; ++place) {
    ASSERT_TRUE(GoTo(pair, place));
    pair.StatesAt(place);
    const Number size = pair.Size(0), unknown = pair.Uncertainty(size);
    EXPECT_LT(std::fabs(pair.First()[0] - pair.Second()[0]), unknown);
    EXPECT_LT(std::fabs(pair.Second()[0] - std::cos(place)), unknown);
    EXPECT_LT(unknown, 1e-14L);
  }
}

// x' = x - cos t - sin t from 1 has the solution cos t, which others leave like exp(t).
TEST(QuickPair, UncertaintyGrowsWithAnUnstableSolution)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x - support::Function(Operation::kCos, m.Time()) -
                         support::Function(Operation::kSin, m.Time()));
  Pair pair(ProblemOf(m.Finished(), {0, false, 30}));
  ASSERT_TRUE(GoTo(pair, 1));
  EXPECT_LT(pair.Uncertainty(1), 1e-15L);
  ASSERT_TRUE(GoTo(pair, 30));
  EXPECT_GT(pair.Uncertainty(1), 1e-8L);
  pair.StatesAt(30);
  EXPECT_LT(std::fabs(pair.Second()[0] - std::cos(30.0L)), pair.Uncertainty(1));
}

TEST(QuickPair, IsTheSameOnTwoThreads)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, (1 - x * x) * v - x);
  const Pair::Problem problem = ProblemOf(m.Finished(), {0, false, 100});
  Pair alone(problem), shared(problem, 2);
  for (Number place = 1; place <= 100; ++place) {
    ASSERT_TRUE(GoTo(alone, place));
    ASSERT_TRUE(GoTo(shared, place));
    alone.StatesAt(place);
    shared.StatesAt(place);
    EXPECT_EQ(alone.First()[0], shared.First()[0]);
    EXPECT_EQ(alone.Second()[0], shared.Second()[0]);
    EXPECT_EQ(alone.Uncertainty(1), shared.Uncertainty(1));
  }
  EXPECT_EQ(alone.Best().Steps(), shared.Best().Steps());
}

// The saddle of x' = x - x^3 - y + y^3/8, y' = -y: rounding leaves x = y/2.
TEST(QuickPair, UncertaintyRemembersWhereRunsDiffered)
{
  Equations m;
  const Expression x = m.Variable("x", Rational(7, 6)), y = m.Variable("y", Rational(7, 3));
  m.SetDerivative(x, x - x * x * x - y + y * y * y / 8);
  m.SetDerivative(y, -y);
  Pair pair(ProblemOf(m.Finished(), {0, false, 140}));
  ASSERT_TRUE(GoTo(pair, 60));
  EXPECT_GT(pair.Uncertainty(1), 1e-3L);
}

TEST(QuickPair, DifferencesThatAreNoNumbersCount)
{
  Equations m;
  m.Variable("x", 1);
  Pair pair(ProblemOf(m.Finished(), {0, false, 1}));
  pair.AddDifference(0, 0);
  EXPECT_LT(pair.Uncertainty(1), 1e-15L);
  pair.AddDifference(1, 0);
  EXPECT_FALSE(pair.Uncertainty(1) < 1);
}

// Some 10^5 steps
TEST(QuickPair, GivesUpALongWay)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  Pair pair(ProblemOf(m.Finished(), {0, false, 1e6L}));
  EXPECT_FALSE(GoTo(pair, 1e6L));
}

}  // namespace
}  // namespace varno::solve::quick
