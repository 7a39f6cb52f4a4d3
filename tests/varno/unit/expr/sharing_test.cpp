#include "varno/expr/sharing.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/bin_op.h"
#include "varno/expr/initialization.h"
#include "varno/expr/un_op.h"

namespace varno {
namespace {

class SharingTest : public testing::Test {
 protected:
  /// Prepares equations as a run does; sharing is a part of it.
  static void Prepare(const std::string& input)
  {
    ASSERT_TRUE(ParsedInput(input).accepted) << input;
    InitializeEquations();
  }

  static Expr::Ref RightHandSide(const std::string& name)
  {
    return VariableNamed(name).RightHandSide();
  }

  static BinOp& Operation(const Expr::Ref& node)
  {
    EXPECT_TRUE(kPlus <= node->Type() && node->Type() <= kDivide);
    return static_cast<BinOp&>(*node);
  }

  ScopedGlobal global;
};

TEST_F(SharingTest, EqualSubexpressionsBecomeOneNode)
{
  Prepare("x' = (x*y - y)/(x*y - y); y' = x;");
  const BinOp& quotient = Operation(RightHandSide("x"));
  EXPECT_EQ(quotient.Left(), quotient.Right());
}

TEST_F(SharingTest, WholeRightHandSidesAreShared)
{
  Prepare("x' = -(x + y); y' = -(x + y);");
  EXPECT_EQ(RightHandSide("x"), RightHandSide("y"));
}

TEST_F(SharingTest, EqualNumbersBecomeOneNode)
{
  Prepare("x' = 3*x; y' = y/3 + 4*y;");
  EXPECT_EQ(Operation(RightHandSide("x")).Left(),
            Operation(Operation(RightHandSide("y")).Left()).Right());
}

TEST_F(SharingTest, DifferentNumbersStayApart)
{
  Prepare("x' = 3*x; y' = 4*x;");
  EXPECT_FALSE(RightHandSide("x") == RightHandSide("y"));
}

TEST_F(SharingTest, TheKindAndTheOrderOfTheOperandsMatter)
{
  Prepare("a' = x*y; b' = y*x; c' = x + y; d' = x/y; x' = 1; y' = 1;");
  EXPECT_FALSE(RightHandSide("a") == RightHandSide("b"));
  EXPECT_FALSE(RightHandSide("a") == RightHandSide("c"));
  EXPECT_FALSE(RightHandSide("a") == RightHandSide("d"));
}

TEST_F(SharingTest, TheTimeStaysApart)
{
  Prepare("x' = t*x; y' = t*x;");
  EXPECT_FALSE(RightHandSide("x") == RightHandSide("y"));
  EXPECT_EQ(PrintedRightHandSide("y"), "(t * [x])");
}

TEST_F(SharingTest, AlgebraicVariablesStayApart)
{
  Prepare("x' = a*x; y' = a*x; a = 2*x;");
  EXPECT_FALSE(RightHandSide("x") == RightHandSide("y"));
}

TEST_F(SharingTest, PartsOfExpressionsThatStayApartAreShared)
{
  Prepare("x' = t*(x*y); y' = t*(x*y);");
  EXPECT_EQ(Operation(RightHandSide("x")).Right(), Operation(RightHandSide("y")).Right());
}

}  // namespace
}  // namespace varno
