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

TEST_F(ExactValuesTest, FaultsShowAtTheOperationItself)
{
  parameters.push_back({"zero", Number(0), {}});
  const NodeId zero = graph.Parameter(0, {});
  const NodeId quotient = Make(Operation::kDivide, Number(1), zero);
  EXPECT_EQ(exact.FaultOf(quotient), "division by zero");
  EXPECT_EQ(exact.FaultOf(Make(Operation::kAdd, quotient, Number(1))), "");
  EXPECT_EQ(exact.FaultOf(Make(Operation::kDivide, Number(1), Make(Operation::kSin, zero))), "");
  EXPECT_EQ(exact.FaultOf(Make(Operation::kPower, zero, Number(-2))), "division by zero");
  EXPECT_EQ(exact.FaultOf(Make(Operation::kPower, zero, Number(0))), "");
  EXPECT_EQ(exact.FaultOf(Make(Operation::kCot, zero)), "the cotangent of zero");
}

TEST_F(ExactValuesTest, EdgesOfDomains)
{
  const auto isFault = [this](Operation operation, const Rational& a) {
    return !exact.FaultOf(Make(operation, Number(a))).empty();
  };
  EXPECT_FALSE(isFault(Operation::kSqrt, 0));
  EXPECT_TRUE(isFault(Operation::kSqrt, Rational(-1, 1000)));
  EXPECT_TRUE(isFault(Operation::kLn, 0));
  EXPECT_FALSE(isFault(Operation::kAsin, -1));
  EXPECT_TRUE(isFault(Operation::kAsin, Rational(1001, 1000)));
  EXPECT_FALSE(isFault(Operation::kAcos, 1));
  EXPECT_TRUE(isFault(Operation::kAcos, -2));
  EXPECT_FALSE(isFault(Operation::kAcosh, 1));
  EXPECT_TRUE(isFault(Operation::kAcosh, Rational(999, 1000)));
  EXPECT_TRUE(isFault(Operation::kAtanh, 1));
  EXPECT_FALSE(isFault(Operation::kAtanh, Rational(-999, 1000)));
  EXPECT_TRUE(isFault(Operation::kAcoth, -1));
  EXPECT_FALSE(isFault(Operation::kAcoth, 2));
  EXPECT_TRUE(isFault(Operation::kCoth, 0));
  EXPECT_FALSE(isFault(Operation::kCbrt, -1));
}

}  // namespace
}  // namespace varno::solve
