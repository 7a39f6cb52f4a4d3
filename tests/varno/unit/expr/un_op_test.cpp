#include "varno/expr/un_op.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/expr/equation.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class UnOpTest : public testing::Test {
 protected:
  ScopedGlobal global;
  const Ref y = MakeVariable("y", 3.0, MakeVariable("dy", 0.0));
};

TEST_F(UnOpTest, ANegationNegatesTermsValueAndInitialValue)
{
  const Ref negation(kUnMinus, Series({1.0, -2.0, 0.0, 0.5}));
  const Rational terms[] = {-1, 2, 0, Rational(-1, 2), 0};
  int k = 0;
  for (const Rational& term : terms) {
    EXPECT_TRUE(IsExactly(term, TermOf(negation, k))) << k;
    ++k;
  }
  EXPECT_TRUE(IsExactly(Rational(1, 2), ValueOf(negation)));
  EXPECT_TRUE(IsExactly(-1, InitValueOf(negation)));
}

TEST_F(UnOpTest, TheDerivativeOfANegationIsTheNegatedDerivative)
{
  EXPECT_EQ(TextOf(Ref(kUnMinus, y)->Derivative()), "(-[dy])");
}

TEST_F(UnOpTest, ANegationIsConvertedOverItsConvertedOperand)
{
  const Ref negation(kUnMinus, Ref(new Equation("y", 0)));
  const Ref converted = negation->Convert();
  EXPECT_EQ(TextOf(negation), "(-y)");
  EXPECT_EQ(TextOf(converted), "(-[y])");
}

TEST_F(UnOpTest, AFunctionHasNoTerms)
{
  for (int code = kSin; code <= kTrunc; ++code) {
    const Ref function(ExprType{code}, y);
    EXPECT_EXIT(TermOf(function, 0), testing::ExitedWithCode(1),
                ExactText("#(ERR) virtual void UnOp::GetDY(int, __mpf_struct (&)[1]) called!\n"))
        << code;
  }
}

TEST_F(UnOpTest, AFunctionOtherThanSineAndTruncationHasNoValue)
{
  for (int code = kCos; code < kTrunc; ++code) {
    const Ref function(ExprType{code}, y);
    EXPECT_EXIT(ValueOf(function), testing::ExitedWithCode(1),
                ExactText("#(ERR) virtual void UnOp::Result(__mpf_struct (&)[1], bool) called!\n"))
        << code;
  }
}

TEST_F(UnOpTest, AFunctionOtherThanSineHasNoDerivative)
{
  for (int code = kCos; code <= kTrunc; ++code) {
    EXPECT_TRUE(Ref(ExprType{code}, y)->Derivative().IsEmpty()) << code;
  }
}

TEST_F(UnOpTest, TheSineHasAValueAndADerivative)
{
  EXPECT_NEAR(mpf_get_d(ValueOf(Ref(kSin, Series({0.5, 0.25})))), std::sin(0.75), 1e-9);
  EXPECT_EQ(TextOf(Ref(kSin, y)->Derivative()), "([dy] * cos([y]))");
}

TEST_F(UnOpTest, ATruncationHasTheValueTowardsZero)
{
  EXPECT_TRUE(IsExactly(3, ValueOf(Ref(kTrunc, Series({3.0, 0.75})))));
  EXPECT_TRUE(IsExactly(-3, ValueOf(Ref(kTrunc, Series({-3.0, -0.75})))));
}

}  // namespace
}  // namespace varno
