#include "solve/graph/graph.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

class GraphTest : public testing::Test {
 protected:
  NodeId Number(long numerator, long denominator = 1)
  {
    Rational value(numerator, denominator);
    value.canonicalize();
    return graph.Number(value, {});
  }
  NodeId Make(Operation operation, NodeId a) { return graph.Make(operation, a, {}); }
  NodeId Make(Operation operation, NodeId a, NodeId b) { return graph.Make(operation, a, b, {}); }

  Graph graph;
  NodeId x = graph.State(0, {});
  NodeId y = graph.State(1, {});
  NodeId t = graph.Leaf(Operation::kTime, {});
};

TEST_F(GraphTest, EqualOperationsAreOneNode)
{
  EXPECT_EQ(Make(Operation::kSin, x), Make(Operation::kSin, x));
  EXPECT_NE(Make(Operation::kSin, x), Make(Operation::kSin, y));
  EXPECT_NE(Make(Operation::kSin, x), Make(Operation::kCos, x));
  EXPECT_EQ(graph.State(1, {}), y);
  EXPECT_NE(graph.Parameter(1, {}), y);
  EXPECT_EQ(Number(2, 4), Number(1, 2));
  EXPECT_NE(Number(1, 2), Number(-1, 2));
  EXPECT_EQ(graph.Make(Operation::kAdd, x, y, t, {}), graph.Make(Operation::kAdd, x, y, t, {}));
}

TEST_F(GraphTest, SumsAndProductsCommute)
{
  EXPECT_EQ(Make(Operation::kAdd, x, y), Make(Operation::kAdd, y, x));
  EXPECT_EQ(Make(Operation::kMultiply, x, y), Make(Operation::kMultiply, y, x));
  EXPECT_NE(Make(Operation::kSubtract, x, y), Make(Operation::kSubtract, y, x));
  EXPECT_NE(Make(Operation::kDivide, x, y), Make(Operation::kDivide, y, x));
  EXPECT_NE(Make(Operation::kPower, x, y), Make(Operation::kPower, y, x));
}

TEST_F(GraphTest, TheFirstWritingIsKept)
{
  const NodeId sum = graph.Make(Operation::kAdd, y, x, {0, 3, 4});
  graph.Make(Operation::kAdd, x, y, {0, 7, 8});
  EXPECT_EQ(graph[sum].operands[0], y);
  EXPECT_EQ(graph[sum].place, (Place{0, 3, 4}));
}

TEST_F(GraphTest, OperandsHaveSmallerNumbers)
{
  const NodeId node =
      Make(Operation::kMultiply, Make(Operation::kAdd, x, Number(3)), Make(Operation::kExp, y));
  for (NodeId id = 0; id <= node; ++id) {
    for (int i = 0; i < graph[id].operandCount; ++i) EXPECT_LT(graph[id].operands[i], id);
  }
}

TEST_F(GraphTest, IdentitiesForAllValues)
{
  EXPECT_EQ(Make(Operation::kAdd, x, Number(0)), x);
  EXPECT_EQ(Make(Operation::kAdd, Number(0), x), x);
  EXPECT_EQ(Make(Operation::kSubtract, x, Number(0)), x);
  EXPECT_EQ(Make(Operation::kSubtract, Number(0), x), Make(Operation::kNegate, x));
  EXPECT_EQ(Make(Operation::kMultiply, x, Number(1)), x);
  EXPECT_EQ(Make(Operation::kMultiply, Number(1), x), x);
  EXPECT_EQ(Make(Operation::kMultiply, Number(-1), x), Make(Operation::kNegate, x));
  EXPECT_EQ(Make(Operation::kMultiply, x, Number(-1)), Make(Operation::kNegate, x));
  EXPECT_EQ(Make(Operation::kDivide, x, Number(1)), x);
  EXPECT_EQ(Make(Operation::kDivide, x, Number(-1)), Make(Operation::kNegate, x));
  EXPECT_EQ(Make(Operation::kPower, x, Number(1)), x);
  EXPECT_EQ(Make(Operation::kNegate, Make(Operation::kNegate, x)), x);
}

TEST_F(GraphTest, NothingElseIsSimplified)
{
  // 0*x, x^0, x/x and x - x have no value where x has none.
  for (const NodeId node :
       {Make(Operation::kMultiply, Number(0), x), Make(Operation::kPower, x, Number(0)),
        Make(Operation::kDivide, x, x), Make(Operation::kSubtract, x, x),
        Make(Operation::kDivide, Number(0), x), Make(Operation::kPower, Number(1), x)}) {
    EXPECT_FALSE(graph.IsNumber(node));
  }
}

TEST_F(GraphTest, NumbersAreCalculatedExactly)
{
  EXPECT_EQ(Make(Operation::kAdd, Number(1, 10), Number(2, 10)), Number(3, 10));
  EXPECT_EQ(Make(Operation::kDivide, Number(1), Number(-3)), Number(-1, 3));
  EXPECT_EQ(Make(Operation::kPower, Number(2, 3), Number(-2)), Number(9, 4));
  EXPECT_EQ(Make(Operation::kNegate, Number(5)), Number(-5));
}

TEST_F(GraphTest, ADivisionByZeroStaysANode)
{
  EXPECT_EQ(graph[Make(Operation::kDivide, Number(1), Number(0))].operation, Operation::kDivide);
  EXPECT_EQ(graph[Make(Operation::kPower, Number(0), Number(-1))].operation, Operation::kPower);
}

TEST_F(GraphTest, Dependence)
{
  const NodeId constant =
      Make(Operation::kSin, Make(Operation::kMultiply, Number(2), graph.Parameter(0, {})));
  EXPECT_EQ(graph[constant].dependence, Dependence::kNothing);
  EXPECT_EQ(graph[Make(Operation::kAdd, t, constant)].dependence, Dependence::kTime);
  EXPECT_EQ(graph[Make(Operation::kAdd, t, x)].dependence, Dependence::kStates);
  EXPECT_EQ(graph[Make(Operation::kAtan2, constant, x)].dependence, Dependence::kStates);
}

}  // namespace
}  // namespace varno::solve
