#include "solve/model/real_values.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

class RealValuesTest : public testing::Test {
 protected:
  NodeId Number(const Rational& value) { return graph.Number(value, {}); }
  NodeId Make(Operation operation, NodeId a) { return graph.Make(operation, a, {}); }
  NodeId Make(Operation operation, NodeId a, NodeId b) { return graph.Make(operation, a, b, {}); }
  double ValueOf(NodeId id) { return real.Of(id).value().ToDouble(); }

  Graph graph;
  std::vector<Parameter> parameters;
  RealValues real{graph, parameters};
};

// Expected values from the C library.
TEST_F(RealValuesTest, OfConstants)
{
  parameters.push_back({"k", Make(Operation::kExp, Number(2)), {}});
  const NodeId pi = graph.Leaf(Operation::kPi, {}), k = graph.Parameter(0, {});
  EXPECT_DOUBLE_EQ(ValueOf(pi), std::numbers::pi);
  EXPECT_DOUBLE_EQ(ValueOf(Make(Operation::kAdd, pi, k)), std::numbers::pi + std::exp(2));
  EXPECT_DOUBLE_EQ(ValueOf(Number(Rational(-1, 4))), -0.25);
}

TEST_F(RealValuesTest, NoneWhereThereIsNone)
{
  const NodeId logarithm = Make(Operation::kLn, Number(-1));
  EXPECT_FALSE(real.Of(logarithm));
  EXPECT_FALSE(real.Of(Make(Operation::kAdd, logarithm, Number(1))));
  EXPECT_FALSE(real.Of(graph.Leaf(Operation::kTime, {})));
  EXPECT_FALSE(real.Of(Make(Operation::kSin, graph.State(0, {}))));
}

// sqrt(1 + 10^-200) - 1 = 10^-200/2 - ...; sin(pi) = 0
TEST_F(RealValuesTest, HoweverMuchCancels)
{
  Integer large;
  mpz_ui_pow_ui(large.get_mpz_t(), 10, 200);
  const NodeId root = Make(Operation::kSqrt, Number(1 + Rational(1) / large));
  EXPECT_DOUBLE_EQ(ValueOf(Make(Operation::kSubtract, root, Number(1))), 5e-201);
  EXPECT_TRUE(real.Of(Make(Operation::kSin, graph.Leaf(Operation::kPi, {})))->IsZero());
}

// Thousands of operations, one below the other, must not exhaust the stack.
TEST_F(RealValuesTest, Deep)
{
  NodeId sine = Make(Operation::kSin, Number(1));
  for (int i = 0; i < 20'000; ++i) sine = Make(Operation::kSqrt, Make(Operation::kSin, sine));
  EXPECT_TRUE(real.Of(sine));
}

}  // namespace
}  // namespace varno::solve
