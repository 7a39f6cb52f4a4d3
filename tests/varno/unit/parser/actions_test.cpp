#include "varno/parser/actions.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"

namespace varno {

namespace {

class Actions : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(Actions, AddEquationEntersTheVariableAndItsStartValue)
{
  AddEquation("x", 0, Reference("a", 0), std::nullopt);
  AddEquation("y", 1, Reference("b", 0), Mpf(2.0));
  EXPECT_EQ(VariableNamed("x").Type(), kAlgebraic);
  EXPECT_EQ(PrintedRightHandSide("x"), "a");
  EXPECT_EQ(VariableNamed("y").Type(), kDifferential);
  EXPECT_EQ(PrintedRightHandSide("y"), "b");
  ASSERT_EQ(global->_STARTVALUES.size(), 1U);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y"), 2), 0);
}

TEST_F(Actions, AnInitialValueOfZeroIsStored)
{
  AddEquation("y", 1, Reference("b", 0), Mpf(0.0));
  EXPECT_EQ(global->_STARTVALUES.count("y"), 1U);
}

TEST_F(Actions, ANegativeDerivativeOrderIsABrokenPromise)
{
  EXPECT_DEATH(AddEquation("y", -1, Reference("a", 0), std::nullopt),
               "grammar:[0-9]+: EnterDifferentialSystem: Assertion `yyvsp\\[-4\\].I > 0' failed");
}

TEST_F(Actions, TheStepFunctionMarksOnlyTheNextEquation)
{
  AddEquation("x", 0, StepFunction(""), std::nullopt);
  AddEquation("y", 0, Reference("a", 0), std::nullopt);
  EXPECT_TRUE(VariableNamed("x").UsesStepFunction());
  EXPECT_FALSE(VariableNamed("y").UsesStepFunction());
}

TEST_F(Actions, ConstantsHaveThePrecisionInForceWhateverTheirOperands)
{
  const Mpf two(2.0), three(3.0);
  mpf_set_default_prec(500);
  Mpf quotient, root;
  mpf_div(quotient, two, three);
  mpf_sqrt(root, two);
  EXPECT_EQ(mpf_cmp(Combined(kDivide, two, three), quotient), 0);
  EXPECT_EQ(mpf_cmp(Evaluated(kSqrt, two), root), 0);
  EXPECT_EQ(mpf_cmp_d(Negated(two), -2), 0);
}

TEST_F(Actions, TheParserSpeaksOfParseErrorsAndStackOverflow)
{
  EXPECT_STREQ(ParserMessage("syntax error"), "parse error");
  EXPECT_STREQ(ParserMessage("memory exhausted"), "parser stack overflow");
}

}  // namespace

}  // namespace varno
