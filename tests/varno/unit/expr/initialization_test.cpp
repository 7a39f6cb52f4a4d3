#include "varno/expr/initialization.h"

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/expr/equation.h"
#include "varno/expr/function.h"
#include "varno/expr/number.h"

namespace varno {

using namespace support;

namespace {

using Ref = Expr::Ref;

class Initialization : public testing::Test {
 protected:
  Differential& Enter(const char* name, const Ref& rightHandSide)
  {
    const Ref variable(new Differential(name, rightHandSide));
    global->_EQUATIONS[name] = variable;
    return VariableOf(variable);
  }

  ScopedGlobal global;
};

TEST_F(Initialization, PutsVariablesInThePlaceOfReferences)
{
  Differential& x = Enter("x", Ref(new Equation("y", 0)));
  Enter("y", Ref(new Number(1)));
  InitializeEquations();
  EXPECT_EQ(x.RightHandSide(), global->_EQUATIONS.at("y"));
}

TEST_F(Initialization, SetsTheNotedStartValueOr0)
{
  global->_STARTVALUES.emplace("x", arith::Mpf(2.5));
  Differential& x = Enter("x", Ref(new Number(1)));
  Differential& y = Enter("y", Ref(new Number(1)));
  InitializeEquations();
  // The first term of a series is the start value.
  EXPECT_TRUE(IsExactly(Rational(5, 2), x.Term(0)));
  EXPECT_TRUE(IsExactly(0, y.Term(0)));
  EXPECT_TRUE(IsExactly(0, global->_STARTVALUES.at("y")));
}

TEST_F(Initialization, EntersTheEquationsThatFunctionsBecome)
{
  // e' = x' e with e(0) = exp(0) = 1
  Enter("x", Ref(new Exp(Ref(new Equation("x", 0)))));
  InitializeEquations();
  ASSERT_TRUE(global->_EQUATIONS.contains("%0"));
  EXPECT_EQ(global->_EQUATIONS.size(), 2U);
  EXPECT_TRUE(IsExactly(1, global->_EQUATIONS.at("%0")->Term(0)));
}

TEST_F(Initialization, LetsOperationsForgetTheTermsThatNobodyNeeds)
{
  Differential& x = Enter("x", Ref(kPlus, Ref(new Equation("x", 0)), Ref(new Number(1))));
  InitializeEquations();
  EXPECT_TRUE(x.RightHandSide()->KeepsLatestTermOnly());
}

TEST_F(Initialization, AnEquationWithAStepFunctionEndsTheRun)
{
  Enter("x", Ref()).MarkStepFunction();
  EXPECT_EXIT(InitializeEquations(), testing::ExitedWithCode(1),
              ExactText("#(ERR) Equation \"x\" uses a step function, which has no value\n"));
}

}  // namespace
}  // namespace varno
