#include "varno/expr/multiply.h"

#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/expr/differential.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class MultiplyTest : public testing::Test {
 protected:
  ScopedGlobal global;
};

TEST_F(MultiplyTest, TheGeometricSeriesTimesItsDenominatorIs1)
{
  const Ref geometric = Series(std::vector<double>(35, 1.0));
  const Ref denominator = Series({1.0, -1.0});
  for (const Ref& product :
       {Ref(kMultiply, geometric, denominator), Ref(kMultiply, denominator, geometric)}) {
    for (int k = 0; k <= 34; ++k) EXPECT_TRUE(IsExactly(k == 0 ? 1 : 0, TermOf(product, k))) << k;
  }
}

TEST_F(MultiplyTest, TermsAreThoseOfTheNaiveProduct)
{
  const std::vector<double> a = {3, -1, 4, 1, -5, 9, 2, -6, 5, 3};
  const std::vector<double> b = {2, 7, -1, 8, 2, -8, 1, 8, 2, -8, 4, 5};
  std::vector<long> naive(a.size() + b.size(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j < b.size(); ++j) naive[i + j] += std::lround(a[i] * b[j]);
  }
  const Ref product(kMultiply, Series(a), Series(b));
  for (std::size_t k = 0; k < naive.size(); ++k) {
    EXPECT_TRUE(IsExactly(naive[k], TermOf(product, static_cast<int>(k)))) << k;
  }
}

TEST_F(MultiplyTest, ANumberScalesEveryTerm)
{
  const std::vector<double> series = {1, -2, 0.5, 7};
  for (const Ref& product :
       {Ref(kMultiply, Constant(3), Series(series)), Ref(kMultiply, Series(series), Constant(3))}) {
    for (int k = 0; k < 4; ++k) {
      EXPECT_TRUE(IsExactly(Rational(3 * series[static_cast<std::size_t>(k)]), TermOf(product, k)));
    }
    EXPECT_TRUE(IsExactly(0, TermOf(product, 4)));
  }
}

/// Term 2 is 2^300 - 2^300 + 1. Added from the other end, the 1 would be lost.
TEST_F(MultiplyTest, ProductsAreAddedFromTheHighestTermOfTheLeftOperandOn)
{
  const Ref product(kMultiply, Series({1.0, -0x1p150, 0x1p300}), Series({1.0, 0x1p150, 1.0}));
  for (int k = 0; k < 2; ++k) TermOf(product, k);
  EXPECT_TRUE(IsExactly(1, TermOf(product, 2)));
}

TEST_F(MultiplyTest, ATermBefore0Is0)
{
  const Ref product(kMultiply, Series({3.0}), Series({5.0}));
  Mpf term(99.0);
  product->GetDY(-1, term);
  EXPECT_TRUE(IsExactly(0, term));
}

TEST_F(MultiplyTest, TheOperandsComputeEachTermOnce)
{
  const Ref a = Series({1.0, 2.0});
  const Ref b = Series({3.0, 4.0});
  const Ref product(kMultiply, a, b);
  const Ref cube(kMultiply, product, product);
  for (int k = 0; k <= 20; ++k) TermOf(cube, k);
  std::vector<int> upTo20(21);
  std::iota(upTo20.begin(), upTo20.end(), 0);
  EXPECT_EQ(SeriesOf(a).computedTerms, upTo20);
  EXPECT_EQ(SeriesOf(b).computedTerms, upTo20);
}

TEST_F(MultiplyTest, TheDerivativeFollowsTheProductRuleAndSharesTheOperands)
{
  const Ref y = MakeVariable("y", 0.0, MakeVariable("dy", 0.0));
  const Ref z = MakeVariable("z", 0.0, MakeVariable("dz", 0.0));
  EXPECT_EQ(TextOf(Ref(kMultiply, y, z)->Derivative()), "(([dy] * [z]) + ([y] * [dz]))");
  EXPECT_EQ(TextOf(Ref(kMultiply, Constant(2), y)->Derivative()), "( 2.00000000000e+00 * [dy])");
}

/// Unlike the other operations: the functions in the operands make temporary equations, numbered in
/// this order.
TEST_F(MultiplyTest, TheInitialValueOfTheRightOperandComesFirst)
{
  const Ref left(kExp, Ref(kExp, MakeVariable("x", 1.0)));
  const Ref right(kExp, Ref(kExp, MakeVariable("y", 0.0)));
  InitValueOf(Ref(kMultiply, left, right));
  EXPECT_TRUE(IsExactly(1, InitValueOf(global->_EQUATIONS.at("%0"))));
  EXPECT_GT(mpf_cmp_ui(InitValueOf(global->_EQUATIONS.at("%1")), 2), 0);
}

}  // namespace
}  // namespace varno
