#include "varno/expr/number.h"

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class NumberTest : public testing::Test {
 protected:
  ScopedGlobal global;
};

TEST_F(NumberTest, IsBuiltFromANumberATextOrADouble)
{
  const Mpf quarter("0.25");
  EXPECT_TRUE(IsExactly(Rational(1, 4), InitValueOf(Ref(new Number(quarter)))));
  EXPECT_TRUE(IsExactly(Rational(-1, 4), InitValueOf(Ref(new Number("-0.25")))));
  EXPECT_TRUE(IsExactly(Rational(0.1), InitValueOf(Ref(new Number(0.1)))));
  EXPECT_TRUE(IsExactly(-7, InitValueOf(Ref(new Number(-7)))));
}

TEST_F(NumberTest, IsItsOnlyTermItsValueAndItsInitialValue)
{
  const Ref number = Constant(2.5);
  for (int k = 0; k <= global->_NTERMS + 1; ++k) {
    EXPECT_TRUE(IsExactly(k == 0 ? Rational(5, 2) : 0, TermOf(number, k))) << k;
  }
  EXPECT_TRUE(IsExactly(Rational(5, 2), ValueOf(number)));
  AcceptStep();
  EXPECT_TRUE(IsExactly(Rational(5, 2), ValueOf(number)));
  EXPECT_TRUE(IsExactly(Rational(5, 2), InitValueOf(number)));
}

TEST_F(NumberTest, TheDerivativeIsTheNumber0)
{
  const Ref derivative = Constant(2.5)->Derivative();
  EXPECT_EQ(derivative->Type(), kNumber);
  EXPECT_TRUE(IsExactly(0, InitValueOf(derivative)));
}

TEST_F(NumberTest, StandsForItselfInTheIntegration)
{
  const Ref number = Constant(2.5);
  EXPECT_TRUE(number->Convert() == number);
}

TEST_F(NumberTest, PrintsInTheFormatOfAllNumbers)
{
  EXPECT_EQ(TextOf(Constant(-2.5)), "-2.50000000000e+00");
  EXPECT_EQ(TextOf(Constant(0.0)), " 0.00000000000e+00");
}

TEST_F(NumberTest, ATermIsNeverComputed)
{
  Mpf term;
  EXPECT_EXIT(Constant(1)->GetDY(0, term), testing::ExitedWithCode(1),
              ExactText("#(ERR) virtual void Number::GetDY(int, __mpf_struct (&)[1]) called!!!\n"));
}

}  // namespace
}  // namespace varno
