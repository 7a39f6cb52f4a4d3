#include "solve/model/value_faults.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

class ValueFaultsTest : public testing::Test {
 protected:
  NodeId Number(const Rational& value) { return graph.Number(value, {}); }
  NodeId Pi() { return graph.Leaf(Operation::kPi, {}); }
  NodeId Make(Operation operation, NodeId a) { return graph.Make(operation, a, {}); }
  NodeId Make(Operation operation, NodeId a, NodeId b) { return graph.Make(operation, a, b, {}); }

  Graph graph;
  std::vector<Parameter> parameters;
  ValueFaults faults{graph, parameters};
};

TEST_F(ValueFaultsTest, FaultsShowAtTheOperationItself)
{
  parameters.push_back({"zero", Number(0), {}});
  const NodeId zero = graph.Parameter(0, {});
  const NodeId quotient = Make(Operation::kDivide, Number(1), zero);
  EXPECT_EQ(faults.Of(quotient), "division by zero");
  EXPECT_EQ(faults.Of(Make(Operation::kAdd, quotient, Number(1))), "");
  EXPECT_EQ(faults.Of(Make(Operation::kDivide, graph.State(0, {}), zero)), "division by zero");
  EXPECT_EQ(faults.Of(Make(Operation::kDivide, zero, graph.State(0, {}))), "");
  EXPECT_EQ(faults.Of(Make(Operation::kPower, zero, Number(-2))), "division by zero");
  EXPECT_EQ(faults.Of(Make(Operation::kPower, zero, Number(0))), "");
  EXPECT_EQ(faults.Of(Make(Operation::kCot, zero)), "the cotangent of zero");
}

TEST_F(ValueFaultsTest, EdgesOfDomains)
{
  const auto isFault = [this](Operation operation, const Rational& a) {
    return !faults.Of(Make(operation, Number(a))).empty();
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

TEST_F(ValueFaultsTest, IrrationalArguments)
{
  const NodeId one = Number(1), pi = Pi(), minusPi = Make(Operation::kNegate, pi);
  EXPECT_NE(faults.Of(Make(Operation::kLn, minusPi)), "");
  EXPECT_EQ(faults.Of(Make(Operation::kLn, pi)), "");
  EXPECT_NE(faults.Of(Make(Operation::kSqrt, minusPi)), "");
  EXPECT_NE(faults.Of(Make(Operation::kAsin, pi)), "");
  EXPECT_NE(faults.Of(Make(Operation::kAcos, minusPi)), "");
  EXPECT_NE(faults.Of(Make(Operation::kPower, minusPi, pi)), "");
  EXPECT_EQ(faults.Of(Make(Operation::kPower, minusPi, Number(3))), "");
  EXPECT_EQ(faults.Of(Make(Operation::kPower, pi, minusPi)), "");
  EXPECT_NE(faults.Of(Make(Operation::kAcoth, Make(Operation::kSin, one))), "");
  EXPECT_EQ(faults.Of(Make(Operation::kAtanh, Make(Operation::kSin, one))), "");
}

TEST_F(ValueFaultsTest, WhatCancelsToNothingIsZero)
{
  const NodeId one = Number(1), pi = Pi(), half = Make(Operation::kDivide, pi, Number(2));
  const NodeId zero = Make(Operation::kSin, pi);
  EXPECT_EQ(faults.Of(Make(Operation::kDivide, one, zero)), "division by zero");
  EXPECT_NE(faults.Of(Make(Operation::kLn, zero)), "");
  EXPECT_EQ(faults.Of(Make(Operation::kSqrt, zero)), "");
  EXPECT_EQ(faults.Of(Make(Operation::kTan, half)), "the tangent at one of its poles");
  EXPECT_EQ(faults.Of(Make(Operation::kTan, pi)), "");
  EXPECT_EQ(faults.Of(Make(Operation::kCot, pi)), "the cotangent at one of its poles");
  EXPECT_EQ(faults.Of(Make(Operation::kCot, half)), "");
}

// Whether rounding takes sin(1)^2 + cos(1)^2 above 1 says nothing.
TEST_F(ValueFaultsTest, WhatMayLieOnTheEdgeIsNoFault)
{
  const NodeId one = Number(1), two = Number(2);
  const auto square = [&](Operation function) {
    return Make(Operation::kPower, Make(function, one), two);
  };
  const NodeId sum = Make(Operation::kAdd, square(Operation::kSin), square(Operation::kCos));
  for (const Operation function : {Operation::kAsin, Operation::kAcos, Operation::kAcosh})
    EXPECT_EQ(faults.Of(Make(function, sum)), "");
}

// sqrt(1 + 10^-200) - 1 is positive, however many bits it takes to see it.
TEST_F(ValueFaultsTest, WhatOnlySeemsToBeZeroIsNoFault)
{
  Integer large;
  mpz_ui_pow_ui(large.get_mpz_t(), 10, 200);
  const NodeId root = Make(Operation::kSqrt, Number(1 + Rational(1) / large));
  const NodeId little = Make(Operation::kSubtract, root, Number(1));
  EXPECT_EQ(faults.Of(Make(Operation::kLn, little)), "");
  EXPECT_EQ(faults.Of(Make(Operation::kDivide, Number(1), little)), "");
  EXPECT_NE(faults.Of(Make(Operation::kSqrt, Make(Operation::kNegate, little))), "");
}

}  // namespace
}  // namespace varno::solve
