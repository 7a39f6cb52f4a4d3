// Values put in afterwards against the same graph built with them.

#include "solve/graph/substitution.h"

#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

class SubstitutionTest : public testing::Test {
 protected:
  NodeId Number(long value) { return graph.Number(value, {}); }
  NodeId Make(Operation operation, NodeId a) { return graph.Make(operation, a, {}); }
  NodeId Make(Operation operation, NodeId a, NodeId b) { return graph.Make(operation, a, b, {}); }
  std::vector<std::uint32_t> Structural() const { return Substitution(graph).Structural(); }

  Graph graph;
  NodeId x = graph.State(0, {});
  NodeId p = graph.Parameter(0, {});
  NodeId q = graph.Parameter(1, {});
  const std::vector<std::uint32_t> none{}, first{0}, second{1};
};

TEST_F(SubstitutionTest, FoldsWhatParametersFeed)
{
  const NodeId difference = Make(Operation::kSubtract, p, q);
  const NodeId square = Make(Operation::kPower, difference, Number(2));
  const NodeId product = Make(Operation::kMultiply, square, x);
  const auto bound = Substitution(graph).Apply(graph, std::vector<Rational>{5, 2}, 2);
  ASSERT_TRUE(bound);
  ASSERT_EQ(graph.Size(), bound->copies.size());
  EXPECT_EQ(3, bound->graph.Value(bound->copies[difference]));
  EXPECT_EQ(9, bound->graph.Value(bound->copies[square]));
  const Node& copy = bound->graph[bound->copies[product]];
  EXPECT_EQ(Operation::kMultiply, copy.operation);
  EXPECT_EQ(bound->copies[square], copy.operands[0]);
}

TEST_F(SubstitutionTest, LeavesTheGraphForOtherValues)
{
  const NodeId half = Make(Operation::kDivide, p, Number(2));
  const Substitution substitution(graph);
  for (const long value : {7, 8, 9}) {
    const auto bound = substitution.Apply(graph, std::vector<Rational>{value, 1}, 2);
    ASSERT_TRUE(bound);
    Rational expected(value, 2);
    expected.canonicalize();
    EXPECT_EQ(expected, bound->graph.Value(bound->copies[half]));
  }
  EXPECT_FALSE(graph.IsNumber(half));
}

TEST_F(SubstitutionTest, IrrationalFunctionsStayOperations)
{
  const NodeId sine = Make(Operation::kSin, p);
  const NodeId twice = Make(Operation::kMultiply, Number(2), sine);
  const auto bound = Substitution(graph).Apply(graph, std::vector<Rational>{3, 1}, 2);
  ASSERT_TRUE(bound);
  EXPECT_EQ(Operation::kSin, bound->graph[bound->copies[sine]].operation);
  EXPECT_EQ(Operation::kMultiply, bound->graph[bound->copies[twice]].operation);
  EXPECT_TRUE(bound->graph.IsNumber(bound->copies[p]));
}

TEST_F(SubstitutionTest, ExponentsAndDomainsAreStructural)
{
  EXPECT_EQ(none, Structural());
  Make(Operation::kPower, x, Make(Operation::kAdd, p, Number(1)));
  EXPECT_EQ(first, Structural());
  Make(Operation::kSqrt, q);
  EXPECT_EQ((std::vector<std::uint32_t>{0, 1}), Structural());
}

TEST_F(SubstitutionTest, RootsOfWhatVariesWithStatesAreNot)
{
  Make(Operation::kSqrt, Make(Operation::kMultiply, p, x));
  Make(Operation::kPower, Make(Operation::kAdd, x, q), Number(3));
  EXPECT_EQ(none, Structural());
}

TEST_F(SubstitutionTest, ConditionsAreStructuralWhereConstantsDecideThem)
{
  Make(Operation::kLess, x, Make(Operation::kMultiply, p, Number(2)));
  Make(Operation::kFloor, Make(Operation::kAdd, x, p));
  EXPECT_EQ(none, Structural());
  Make(Operation::kMin, q, Number(3));
  EXPECT_EQ(second, Structural());
}

TEST_F(SubstitutionTest, OthersCanMakeThemStructural)
{
  const Substitution substitution(graph, {Make(Operation::kMultiply, Number(2), q)});
  EXPECT_EQ(second, substitution.Structural());
  EXPECT_TRUE(substitution.IsStructural(1));
  EXPECT_FALSE(substitution.IsStructural(0));
}

TEST_F(SubstitutionTest, RefusesZeros)
{
  Make(Operation::kMultiply, Make(Operation::kSubtract, p, q), x);
  const Substitution substitution(graph);
  EXPECT_FALSE(substitution.Apply(graph, std::vector<Rational>{0, 1}, 2));
  EXPECT_FALSE(substitution.Apply(graph, std::vector<Rational>{1, 1}, 2));
  EXPECT_TRUE(substitution.Apply(graph, std::vector<Rational>{2, 1}, 2));
}

TEST_F(SubstitutionTest, FreeParametersMayBeZero)
{
  EXPECT_TRUE(Substitution(graph).Apply(graph, std::vector<Rational>{1, 0}, 1));
}

}  // namespace
}  // namespace varno::solve
