#include "solve/language/syntax.h"

#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(Syntax, SubtreesStandTogether)
{
  Syntax syntax;
  const ExpressionId other = syntax.AddLeaf(ExpressionKind::kPi, {0, 0, 2});
  const ExpressionId a = syntax.AddName({0, 3, 4}, 2, {0, 3, 6});
  const ExpressionId b = syntax.AddLeaf(ExpressionKind::kTime, {0, 7, 8});
  const ExpressionId negated = syntax.Add(ExpressionKind::kNegate, {&b, 1}, {0, 6, 8}, {0, 6, 7});
  const std::array operands = {a, negated};
  const ExpressionId sum = syntax.Add(ExpressionKind::kAdd, operands, {0, 3, 8}, {0, 5, 6});

  EXPECT_EQ(syntax[other].first, other);
  EXPECT_EQ(syntax[sum].first, a);
  EXPECT_EQ(syntax[negated].first, b);
  EXPECT_EQ(syntax[a].order, 2U);
  EXPECT_EQ(syntax[a].name, (Place{0, 3, 4}));
  EXPECT_THAT(syntax.Operands(sum), testing::ElementsAre(a, negated));
  EXPECT_THAT(syntax.Operands(other), testing::IsEmpty());
}

TEST(Syntax, ParenthesesWidenThePlace)
{
  Syntax syntax;
  const ExpressionId id = syntax.AddLeaf(ExpressionKind::kPi, {0, 1, 3});
  EXPECT_EQ(syntax.Parenthesise(id, {0, 0, 4}), id);
  EXPECT_TRUE(syntax[id].parenthesised);
  EXPECT_EQ(syntax[id].place, (Place{0, 0, 4}));
}

TEST(Syntax, Conditions)
{
  EXPECT_TRUE(IsCondition(ExpressionKind::kLess));
  EXPECT_TRUE(IsCondition(ExpressionKind::kGreaterEqual));
  EXPECT_TRUE(IsCondition(ExpressionKind::kNot));
  EXPECT_FALSE(IsCondition(ExpressionKind::kStep));
  EXPECT_FALSE(IsCondition(ExpressionKind::kCall));
}

}  // namespace
}  // namespace varno::solve
