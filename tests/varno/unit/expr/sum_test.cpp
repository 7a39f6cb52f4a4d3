#include "varno/expr/sum.h"

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class SumTest : public testing::Test {
 protected:
  ScopedGlobal global;
  const Ref a = Series({1.0, 2.0, -4.0, 0.5});
  const Ref b = Series({3.0, -2.0, 0.0, 0.25, 8.0});
};

TEST_F(SumTest, TermsAddAndSubtractOneByOne)
{
  const struct {
    Rational sum, difference;
  } terms[] = {{4, -2}, {0, 4}, {-4, -4}, {Rational(3, 4), Rational(1, 4)}, {8, -8}, {0, 0}};
  const Ref sum(kPlus, a, b);
  const Ref difference(kMinus, a, b);
  int k = 0;
  for (const auto& term : terms) {
    EXPECT_TRUE(IsExactly(term.sum, TermOf(sum, k))) << k;
    EXPECT_TRUE(IsExactly(term.difference, TermOf(difference, k))) << k;
    ++k;
  }
}

TEST_F(SumTest, ASumMinusOneOperandIsTheOther)
{
  const Ref back(kMinus, Ref(kPlus, a, b), b);
  for (int k = 0; k < 8; ++k) EXPECT_TRUE(IsExactly(Exact(TermOf(a, k)), TermOf(back, k))) << k;
}

TEST_F(SumTest, TermsHaveTheDigitsOfThePrecisionInForce)
{
  mpf_set_default_prec(123);
  const Ref sum(kPlus, Series({1.0}), Series({0x1p-122}));
  EXPECT_TRUE(IsExactly(1 + 1 / Power(2, 122), TermOf(sum, 0)));
}

TEST_F(SumTest, DerivativesAddAndSubtract)
{
  const Ref y = MakeVariable("y", 0.0, MakeVariable("dy", 0.0));
  const Ref z = MakeVariable("z", 0.0, MakeVariable("dz", 0.0));
  EXPECT_EQ(TextOf(Ref(kPlus, y, z)->Derivative()), "([dy] + [dz])");
  EXPECT_EQ(TextOf(Ref(kMinus, y, z)->Derivative()), "([dy] - [dz])");
}

TEST_F(SumTest, DerivativesOfConstantOperandsAreSimplifiedAway)
{
  const Ref y = MakeVariable("y", 0.0, MakeVariable("dy", 0.0));
  EXPECT_EQ(TextOf(Ref(kPlus, y, Constant(5))->Derivative()), "[dy]");
  EXPECT_EQ(TextOf(Ref(kMinus, Constant(5), y)->Derivative()), "(-[dy])");
}

}  // namespace
}  // namespace varno
