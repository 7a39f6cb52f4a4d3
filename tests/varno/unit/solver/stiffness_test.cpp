#include "varno/solver/stiffness.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/core/global_data.h"
#include "varno/expr/algebraic.h"
#include "varno/parser/equation_table.h"

namespace varno {

using namespace support;
namespace {

class StiffnessTest : public testing::Test {
 protected:
  /// A variable whose last term has this index and this value.
  void EnterVariable(const std::string& name, int index, double lastTerm)
  {
    for (int k = 0; k < global->_NTERMS; ++k) mpf_set_ui(global->_STEPDIV[k], 1);
    std::vector<double> rightHandSide(static_cast<std::size_t>(index) + 1, 0.0);
    if (index > 0) rightHandSide[static_cast<std::size_t>(index) - 1] = lastTerm;
    const Expr::Ref variable =
        MakeVariable(name, index == 0 ? lastTerm : 0.0, Series(rightHandSide));
    for (int k = 0; k <= index + 1; ++k) TermOf(variable, k);
  }

  ScopedGlobal global;
  const CapturedOutput output;
};

TEST_F(StiffnessTest, ComparesTheBinaryExponentsOfTheLastTerms)
{
  EnterVariable("a", 1, 0.125);  // 0.5 2^-2
  EnterVariable("b", 2, 32.0);   // 0.5 2^6
  EnterVariable("c", 3, 3.0);    // 0.75 2^2
  EXPECT_FALSE(TestStiffness());
  EXPECT_EQ(output.Commentary(), "#(TST) Max(b)=6  Min(a)=-2  Diff=8\n");
  EXPECT_EQ(output.Results(), "");
}

TEST_F(StiffnessTest, ASystemIsStiffWhenTheyDifferByMoreThanTheSetting)
{
  EnterVariable("a", 1, 0.125);
  EnterVariable("b", 1, 32.0);
  global->_STIFFEXPDIFF = 8;
  EXPECT_FALSE(TestStiffness());
  global->_STIFFEXPDIFF = 7;
  EXPECT_TRUE(TestStiffness());
  EXPECT_EQ(output.Commentary(),
            "#(TST) Max(b)=6  Min(a)=-2  Diff=8\n"
            "#(COMP) System is STIFF!\n"
            "#(TST) Max(b)=6  Min(a)=-2  Diff=8\n");
}

TEST_F(StiffnessTest, SignsDoNotCount)
{
  EnterVariable("a", 1, -32.0);
  EnterVariable("b", 1, 0.125);
  TestStiffness();
  EXPECT_EQ(output.Commentary(), "#(TST) Max(a)=6  Min(b)=-2  Diff=8\n");
  EXPECT_TRUE(IsExactly(32, global->_STIFFMAX));
  EXPECT_TRUE(IsExactly(Rational(1, 8), global->_STIFFMIN));
}

TEST_F(StiffnessTest, OfEqualTermsTheFirstByNameCounts)
{
  EnterVariable("b", 1, 4.0);
  EnterVariable("a", 1, -4.0);
  EnterVariable("c", 2, 4.0);
  TestStiffness();
  EXPECT_EQ(output.Commentary(), "#(TST) Max(a)=3  Min(a)=3  Diff=0\n");
}

TEST_F(StiffnessTest, ATermOf0HasTheExponent0)
{
  EnterVariable("a", 1, 0.0);
  EnterVariable("b", 1, 0x1p-30);
  EXPECT_TRUE(TestStiffness());
  EXPECT_EQ(output.Commentary(),
            "#(COMP) System is STIFF!\n"
            "#(TST) Max(b)=-29  Min(a)=0  Diff=29\n");
}

TEST_F(StiffnessTest, OnlyTermsBehindTerm0Count)
{
  EnterVariable("a", 0, 0x1p-60);
  EnterVariable("b", 1, 4.0);
  EXPECT_FALSE(TestStiffness());
  EXPECT_EQ(output.Commentary(), "#(TST) Max(b)=3  Min(b)=3  Diff=0\n");
}

/// 1e1000 is between 2^3321 and 2^3322.
TEST_F(StiffnessTest, WithoutAnyTermTheStartMeasuresStandWithoutNames)
{
  EnterVariable("a", 0, 4.0);
  EnterEquation(Expr::Ref(new Algebraic("x", Constant(4.0))));
  EXPECT_FALSE(TestStiffness());
  EXPECT_EQ(output.Commentary(), "#(TST) Max()=3322  Min()=3322  Diff=0\n");
}

TEST_F(StiffnessTest, EveryTestStartsAfresh)
{
  EnterVariable("a", 1, 0.125);
  TestStiffness();
  AcceptStep();
  EnterVariable("a", 1, 32.0);
  TestStiffness();
  EXPECT_TRUE(IsExactly(32, global->_STIFFMIN));
  EXPECT_TRUE(IsExactly(32, global->_STIFFMAX));
}

TEST_F(StiffnessTest, TheMeasuresStartBeyondAllTermsAtThePrecisionInForce)
{
  mpf_set_default_prec(500);
  ResetStiffnessMeasures();
  EXPECT_TRUE(IsExactly(Exact(Mpf("1e1000")), global->_STIFFMIN));
  EXPECT_TRUE(IsExactly(Exact(Mpf("-1e1000")), global->_STIFFMAX));
  EXPECT_GE(mpf_get_prec(global->_STIFFMIN), 500U);
  EXPECT_GE(mpf_get_prec(global->_STIFFMAX), 500U);
}

}  // namespace
}  // namespace varno
