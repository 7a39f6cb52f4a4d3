#include "varno/expr/algebraic.h"

#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/expr/multiply.h"
#include "varno/expr/time.h"
#include "varno/parser/equation_table.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class AlgebraicTest : public testing::Test {
 protected:
  static Ref MakeAlgebraic(const char* name, const Ref& rightHandSide = Ref())
  {
    Ref variable(new Algebraic(name, rightHandSide));
    EnterEquation(variable);
    return variable;
  }

  ScopedGlobal global;
  const Ref rightHandSide = Series({1.0, 2.0, 4.0});
  const Ref x = MakeAlgebraic("x", rightHandSide);
};

TEST_F(AlgebraicTest, IsNoDifferentialVariable)
{
  EXPECT_EQ(x->Type(), kAlgebraic);
  EXPECT_NE(x->Type(), kDifferential);
}

TEST_F(AlgebraicTest, StartsFrom0AndTakesTheValueOfTheStepBefore)
{
  EXPECT_TRUE(IsExactly(0, TermOf(x, 0)));
  EXPECT_TRUE(IsExactly(7, ValueOf(x)));
  EXPECT_TRUE(IsExactly(0, TermOf(x, 0)));
  AcceptStep();
  EXPECT_TRUE(IsExactly(7, TermOf(x, 0)));
}

TEST_F(AlgebraicTest, ARejectedStepMovesTheValueToo)
{
  ValueOf(x);
  RejectStep();
  EXPECT_TRUE(IsExactly(7, TermOf(x, 0)));
}

TEST_F(AlgebraicTest, AStartValueHoldsInTheFirstStep)
{
  VariableOf(x).SetStartValue(Mpf(5.0));
  EXPECT_TRUE(IsExactly(5, TermOf(x, 0)));
}

TEST_F(AlgebraicTest, IsAConstantOverTheStep)
{
  VariableOf(x).SetStartValue(Mpf(5.0));
  for (int k = 1; k <= global->_NTERMS + 1; ++k) EXPECT_TRUE(IsExactly(0, TermOf(x, k))) << k;
  const Ref product(kMultiply, x, Series({1.0, 2.0}));
  EXPECT_TRUE(IsExactly(10, TermOf(product, 1)));
}

TEST_F(AlgebraicTest, TheInitialValueAndTheDerivativeAreThoseOfTheRightHandSide)
{
  const Ref y = MakeVariable("y", 3.0, MakeVariable("dy", 0.0));
  const Ref twice = MakeAlgebraic("twice", Ref(kMultiply, Constant(2), y));
  EXPECT_TRUE(IsExactly(6, InitValueOf(twice)));
  EXPECT_TRUE(twice->Derivative() == VariableOf(twice).RightHandSide()->Derivative());
  EXPECT_EQ(TextOf(twice->Derivative()), "( 2.00000000000e+00 * [dy])");
}

TEST_F(AlgebraicTest, AnAlgebraicVariableMayUseAnotherTwice)
{
  const Ref square = MakeAlgebraic("square", Ref(kMultiply, x, x));
  const Ref fourth = MakeAlgebraic("fourth", Ref(kMultiply, square, square));
  EXPECT_TRUE(IsExactly(1, InitValueOf(fourth)));
  EXPECT_FALSE(fourth->Derivative().IsEmpty());
}

TEST_F(AlgebraicTest, AnInitialValueThatLeadsBackToTheVariableEndsTheRun)
{
  const auto message = ExactText("#(ERR) Algebraic equation \"a\" depends on itself\n");
  const Ref a = MakeAlgebraic("a");
  VariableOf(a).SetRightHandSide(Ref(kPlus, a, x));
  EXPECT_EXIT(InitValueOf(a), testing::ExitedWithCode(1), message);
  EXPECT_EXIT(a->Derivative(), testing::ExitedWithCode(1), message);

  const Ref b = MakeAlgebraic("b", Ref(kPlus, x, a));
  VariableOf(a).SetRightHandSide(Ref(kMinus, b, x));
  EXPECT_EXIT(InitValueOf(a), testing::ExitedWithCode(1), message);
  EXPECT_EXIT(a->Derivative(), testing::ExitedWithCode(1), message);
}

/// a = b + 1, b = a + 1: the one asked first finds the value of the step before in the other.
TEST_F(AlgebraicTest, ValuesThatLeadBackToTheVariableUseTheLastOne)
{
  const Ref a = MakeAlgebraic("a");
  const Ref b = MakeAlgebraic("b", Ref(kPlus, a, Constant(1)));
  VariableOf(a).SetRightHandSide(Ref(kPlus, b, Constant(1)));
  for (int step = 1; step <= 3; ++step) {
    EXPECT_TRUE(IsExactly(2 * step, ValueOf(a))) << step;
    EXPECT_TRUE(IsExactly(2 * step - 1, ValueOf(b))) << step;
    AcceptStep();
  }
}

TEST_F(AlgebraicTest, StandsForItselfInTheIntegration)
{
  EXPECT_TRUE(x->Convert() == x);
}

TEST_F(AlgebraicTest, PrintsAsItsNameInBraces)
{
  EXPECT_EQ(TextOf(x), "{x}");
  std::ostringstream out;
  VariableOf(MakeAlgebraic("a", Ref(kPlus, x, Ref(new Time)))).DumpTree(out);
  EXPECT_EQ(out.str(), "#(TREEDUMP) ALG: \ta = ({x} + t);\n");
}

TEST_F(AlgebraicTest, HasNoLastTerm)
{
  ValueOf(x);
  int k = 99;
  Mpf term(99.0);
  VariableOf(x).LastTerm(k, term);
  EXPECT_EQ(k, -1);
  EXPECT_TRUE(IsExactly(99, term));
  EXPECT_EQ(VariableOf(x).CachedTerms(), 0);
}

TEST_F(AlgebraicTest, ATermIsNeverComputed)
{
  Mpf term;
  EXPECT_EXIT(
      x->GetDY(0, term), testing::ExitedWithCode(1),
      ExactText("#(ERR) virtual void Algebraic::GetDY(int, __mpf_struct (&)[1]) called!!!\n"));
}

}  // namespace
}  // namespace varno
