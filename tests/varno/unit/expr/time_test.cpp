#include "varno/expr/time.h"

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/expr/differential.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class TimeTest : public testing::Test {
 protected:
  ScopedGlobal global;
  const Ref t = Ref(new Time);
};

TEST_F(TimeTest, Term1Is1WhateverTheStepAndHigherTermsAre0)
{
  for (const double h : {0.1, 0.5, 4.0}) {
    global->SetStep(h);
    AcceptStep();
    EXPECT_TRUE(IsExactly(0, TermOf(t, 0)));
    EXPECT_TRUE(IsExactly(1, TermOf(t, 1)));
    for (int k = 2; k <= global->_NTERMS + 1; ++k) EXPECT_TRUE(IsExactly(0, TermOf(t, k))) << k;
  }
}

TEST_F(TimeTest, TheValueIsTheTime)
{
  mpf_set_d(global->_T, 0.75);
  EXPECT_TRUE(IsExactly(Rational(3, 4), ValueOf(t)));
}

TEST_F(TimeTest, Term0IsTheValueOfTheStepBefore)
{
  mpf_set_d(global->_T, 0.75);
  ValueOf(t);
  EXPECT_TRUE(IsExactly(0, TermOf(t, 0)));
  AcceptStep();
  mpf_set_d(global->_T, 1.5);
  EXPECT_TRUE(IsExactly(Rational(3, 4), TermOf(t, 0)));
}

TEST_F(TimeTest, ARejectedStepMovesTerm0Too)
{
  mpf_set_d(global->_T, 0.75);
  ValueOf(t);
  RejectStep();
  EXPECT_TRUE(IsExactly(Rational(3, 4), TermOf(t, 0)));
}

/// Nobody asks for the value of t in a right-hand side: there it adds h/2 in every step.
TEST_F(TimeTest, InARightHandSideTerm0Stays0)
{
  global->SetStep(0.5);
  const Ref y = MakeVariable("y", 0.0, t);
  for (int step = 1; step <= 3; ++step) {
    EXPECT_TRUE(IsExactly(0, TermOf(y, 1))) << step;
    EXPECT_TRUE(IsExactly(Rational(1, 4), TermOf(y, 2))) << step;
    EXPECT_TRUE(IsExactly(step * Rational(1, 4), ValueOf(y))) << step;
    mpf_add(global->_T, global->_T, global->_STEP);
    AcceptStep();
  }
}

TEST_F(TimeTest, TheInitialValueIs0)
{
  mpf_set_d(global->_T, 0.75);
  EXPECT_TRUE(IsExactly(0, InitValueOf(t)));
}

TEST_F(TimeTest, TheDerivativeIsTheNumber1)
{
  EXPECT_EQ(t->Derivative()->Type(), kNumber);
  EXPECT_TRUE(IsExactly(1, InitValueOf(t->Derivative())));
}

TEST_F(TimeTest, StandsForItselfInTheIntegration)
{
  EXPECT_TRUE(t->Convert() == t);
  EXPECT_EQ(TextOf(t), "t");
}

TEST_F(TimeTest, ATermIsNeverComputed)
{
  Mpf term;
  EXPECT_EXIT(t->GetDY(0, term), testing::ExitedWithCode(1),
              ExactText("#(ERR) virtual void Time::GetDY(int, __mpf_struct (&)[1]) called!!!\n"));
}

}  // namespace
}  // namespace varno
