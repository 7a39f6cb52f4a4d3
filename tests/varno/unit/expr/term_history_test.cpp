#include "varno/expr/term_history.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/bin_op.h"
#include "varno/expr/initialization.h"

namespace varno {
namespace {

class TermHistoryTest : public testing::Test {
 protected:
  /// Prepares equations as a run does; the choice of the terms to keep is a part of it.
  static void Prepare(const std::string& input)
  {
    ASSERT_TRUE(ParsedInput(input).accepted) << input;
    InitializeEquations();
  }

  static const BinOp& Operation(const Expr::Ref& node)
  {
    EXPECT_TRUE(kPlus <= node->Type() && node->Type() <= kDivide);
    return static_cast<const BinOp&>(*node);
  }

  static const Expr::Ref& RightHandSide(const std::string& name)
  {
    return VariableNamed(name).RightHandSide();
  }

  ScopedGlobal global;
};

TEST_F(TermHistoryTest, OperandsOfSumsAndOfConstantFactorsKeepTheLatestTerm)
{
  Prepare("x' = -(x + y) - 3*(x - y); y' = 1;");
  const BinOp& difference = Operation(RightHandSide("x"));
  EXPECT_TRUE(RightHandSide("x")->KeepsLatestTermOnly());
  EXPECT_TRUE(difference.Left()->KeepsLatestTermOnly());
  EXPECT_TRUE(difference.Right()->KeepsLatestTermOnly());
  EXPECT_TRUE(Operation(difference.Right()).Right()->KeepsLatestTermOnly());
}

TEST_F(TermHistoryTest, AnAlgebraicVariableIsAConstantFactor)
{
  Prepare("x' = a*(x - y); y' = 1; a = x;");
  EXPECT_TRUE(Operation(RightHandSide("x")).Right()->KeepsLatestTermOnly());
}

TEST_F(TermHistoryTest, FactorsOfAProductKeepAllTerms)
{
  Prepare("x' = (x + y)*(x - y); y' = t*(x + 2*y);");
  EXPECT_FALSE(Operation(RightHandSide("x")).Left()->KeepsLatestTermOnly());
  EXPECT_FALSE(Operation(RightHandSide("x")).Right()->KeepsLatestTermOnly());
  EXPECT_FALSE(Operation(RightHandSide("y")).Right()->KeepsLatestTermOnly());
}

TEST_F(TermHistoryTest, AQuotientAndItsDivisorKeepAllTerms)
{
  Prepare("x' = (x + y)/(x - y); y' = 1;");
  EXPECT_FALSE(RightHandSide("x")->KeepsLatestTermOnly());
  EXPECT_TRUE(Operation(RightHandSide("x")).Left()->KeepsLatestTermOnly());
  EXPECT_FALSE(Operation(RightHandSide("x")).Right()->KeepsLatestTermOnly());
}

TEST_F(TermHistoryTest, WhatIsUsedTwiceKeepsAllTerms)
{
  // The second user begins with term 0 when the first has gone through all terms.
  Prepare("x' = (x + y) + 1; y' = 3*(x + y); z' = x - y; w' = x - y;");
  EXPECT_FALSE(Operation(RightHandSide("x")).Left()->KeepsLatestTermOnly());
  EXPECT_FALSE(RightHandSide("z")->KeepsLatestTermOnly());
}

TEST_F(TermHistoryTest, VariablesKeepAllTerms)
{
  Prepare("x' = y; y' = -x;");
  EXPECT_FALSE(RightHandSide("x")->KeepsLatestTermOnly());
}

TEST_F(TermHistoryTest, TheLatestTermIsComputedOncePerStep)
{
  const Expr::Ref x = MakeVariable("x", 2.0, Constant(3));
  const Expr::Ref sum(kPlus, x, Constant(1));
  sum->KeepLatestTermOnly();
  global->SetStep(0.5);
  EXPECT_EQ(mpf_cmp_d(sum->Term(0), 3), 0);
  EXPECT_EQ(mpf_cmp_d(sum->Term(1), 1.5), 0);
  EXPECT_EQ(sum->CachedTerms(), 2);
  ValueOf(x);
  AcceptStep();
  EXPECT_EQ(mpf_cmp_d(sum->Term(0), 4.5), 0);
  EXPECT_EQ(sum->CachedTerms(), 1);
}

}  // namespace
}  // namespace varno
