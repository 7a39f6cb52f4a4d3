#include "solve/model/number_literal.h"

#include <string>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

Rational PowerOfTen(unsigned long exponent)
{
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, exponent);
  return power;
}

/// The value of a literal; -99 when it is no exact number.
Rational ValueOf(std::string_view text)
{
  Graph graph;
  const std::optional<NodeId> node = AddNumber(graph, text, {});
  if (!node || !graph.IsNumber(*node)) return -99;
  return graph.Value(*node);
}

TEST(AddNumber, AllForms)
{
  EXPECT_EQ(ValueOf("0"), 0);
  EXPECT_EQ(ValueOf("007"), 7);
  EXPECT_EQ(ValueOf("2."), 2);
  EXPECT_EQ(ValueOf(".5"), Rational(1, 2));
  EXPECT_EQ(ValueOf("0.1"), Rational(1, 10));
  EXPECT_EQ(ValueOf("1.25e2"), 125);
  EXPECT_EQ(ValueOf("1E+3"), 1000);
  EXPECT_EQ(ValueOf("1.5e-3"), Rational(3, 2000));
  EXPECT_EQ(ValueOf("3e00000000000000000000000002"), 300);
  EXPECT_EQ(ValueOf("3e-0"), 3);
}

TEST(AddNumber, LargeAndSmallOnesAreOrdinary)
{
  EXPECT_EQ(ValueOf("1e300"), PowerOfTen(300));
  EXPECT_EQ(ValueOf("1e-300"), 1 / PowerOfTen(300));
  EXPECT_EQ(ValueOf("1e1000"), PowerOfTen(1000));
  EXPECT_EQ(ValueOf("1e-1000"), 1 / PowerOfTen(1000));
}

TEST(AddNumber, ManyDigitsAreKept)
{
  EXPECT_EQ(ValueOf("0." + std::string(10000, '3')),
            (PowerOfTen(10000) - 1) / 3 / PowerOfTen(10000));
}

TEST(AddNumber, HugeExponentsStayPowers)
{
  Graph graph;
  const std::optional<NodeId> node = AddNumber(graph, "2.5e999999999", {});
  ASSERT_TRUE(node.has_value());
  ASSERT_EQ(graph[*node].operation, Operation::kMultiply);
  EXPECT_EQ(graph.Value(graph[*node].operands[0]), 25);
  const Node& power = graph[graph[*node].operands[1]];
  ASSERT_EQ(power.operation, Operation::kPower);
  EXPECT_EQ(graph.Value(power.operands[0]), 10);
  EXPECT_EQ(graph.Value(power.operands[1]), 999999998);
}

TEST(AddNumber, ZeroIsZeroWhateverItsExponent)
{
  EXPECT_EQ(ValueOf("0e999999999999999999999999"), 0);
  EXPECT_EQ(ValueOf("0.000e-999999999999999999999999"), 0);
}

TEST(AddNumber, ExponentsBeyondTheLimitAreRefused)
{
  Graph graph;
  EXPECT_TRUE(AddNumber(graph, "1e1000000000000000000", {}).has_value());
  EXPECT_FALSE(AddNumber(graph, "1e1000000000000000001", {}).has_value());
  EXPECT_TRUE(AddNumber(graph, "1e-1000000000000000000", {}).has_value());
  EXPECT_FALSE(AddNumber(graph, "0.1e-1000000000000000000", {}).has_value());
  EXPECT_FALSE(AddNumber(graph, "1e99999999999999999999999999999999999", {}).has_value());
}

}  // namespace
}  // namespace varno::solve
