#include "solve/model/exact_values.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

class ExactValuesTest : public testing::Test {
 protected:
  NodeId Number(const Rational& value) { return graph.Number(value, {}); }
  NodeId Make(Operation operation, NodeId a) { return graph.Make(operation, a, {}); }
  NodeId Make(Operation operation, NodeId a, NodeId b) { return graph.Make(operation, a, b, {}); }

  Graph graph;
  std::vector<Parameter> parameters;
  ExactValues exact{graph, parameters};
};

TEST_F(ExactValuesTest, ParametersArePutIn)
{
  parameters.push_back({"k", Number(Rational(2, 3)), {}});
  const NodeId k = graph.Parameter(0, {});
  EXPECT_EQ(exact.Of(Make(Operation::kMultiply, k, Number(3))), Rational(2));
  EXPECT_EQ(exact.Of(Make(Operation::kPower, k, Number(-1))), Rational(3, 2));
  EXPECT_EQ(exact.Of(Make(Operation::kSin, k)), std::nullopt);
  EXPECT_EQ(exact.Of(Make(Operation::kAdd, k, graph.Leaf(Operation::kTime, {}))), std::nullopt);
}

}  // namespace
}  // namespace varno::solve
