#include "varno/expr/divide.h"

#include <csignal>
#include <cstddef>
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

class DivideTest : public testing::Test {
 protected:
  ScopedGlobal global;
};

TEST_F(DivideTest, OneOverOneMinusTIsTheGeometricSeries)
{
  const Ref quotient(kDivide, Series({1.0}), Series({1.0, -1.0}));
  for (int k = 0; k <= 34; ++k) EXPECT_TRUE(IsExactly(1, TermOf(quotient, k))) << k;
}

TEST_F(DivideTest, TermsAreThoseOfTheLongDivision)
{
  // A divisor that begins with 1/4 leaves no rounding.
  const std::vector<double> a = {3, -1, 4, 1, -5, 9, 2, -6};
  const std::vector<double> b = {0.25, 7, -1, 8, 2, -8};
  std::vector<Rational> remainder(a.begin(), a.end());
  const Ref quotient(kDivide, Series(a), Series(b));
  for (std::size_t k = 0; k < a.size(); ++k) {
    const Rational c = remainder[k] * 4;
    for (std::size_t j = 0; j < b.size() && k + j < a.size(); ++j) {
      remainder[k + j] -= c * Rational(b[j]);
    }
    EXPECT_TRUE(IsExactly(c, TermOf(quotient, static_cast<int>(k)))) << k;
  }
}

TEST_F(DivideTest, AQuotientTimesItsDivisorIsTheDividend)
{
  for (const mp_bitcnt_t precisionBits : {80, 123, 1000}) {
    mpf_set_default_prec(precisionBits);
    const Ref a = Series({3.0, -1.0, 4.0, 1.0, -5.0});
    const Ref b = Series({7.0, 2.0, -1.0, 0.5});
    const Ref product(kMultiply, Ref(kDivide, a, b), b);
    for (int k = 0; k < 10; ++k) {
      const Rational error = abs(Exact(TermOf(product, k)) - Exact(TermOf(a, k)));
      EXPECT_TRUE(error < 16 / Power(2, precisionBits)) << k << " at " << precisionBits << " bits";
    }
  }
}

TEST_F(DivideTest, ANumberDividesEveryTerm)
{
  global->_SIMPLIFYSMALL = false;
  const std::vector<double> series = {1, -2, 0.5, 7};
  const Ref quotient(kDivide, Series(series), Constant(2));
  for (int k = 0; k < 4; ++k) {
    EXPECT_TRUE(IsExactly(Rational(series[static_cast<std::size_t>(k)] / 2), TermOf(quotient, k)));
  }
  EXPECT_TRUE(IsExactly(0, TermOf(quotient, 4)));
}

/// Term 2 is 1 - (2^300 - 2^300). Subtracted one by one, the products would swallow the 1.
TEST_F(DivideTest, TheProductsAreAddedBeforeTheyAreSubtracted)
{
  const Ref quotient(kDivide, Series({1.0, 0.0, 1.0}), Series({1.0, 0x1p150, 0x1p300}));
  for (int k = 0; k < 2; ++k) TermOf(quotient, k);
  EXPECT_TRUE(IsExactly(1, TermOf(quotient, 2)));
}

TEST_F(DivideTest, AHighTermBringsTheLowerOnesWithIt)
{
  const Ref one = Series({1.0});
  const Ref denominator = Series({1.0, -2.0});
  for (int k = 0; k <= 10; ++k) {
    TermOf(one, k);
    TermOf(denominator, k);
  }
  const Ref quotient(kDivide, one, denominator);
  EXPECT_TRUE(IsExactly(1024, TermOf(quotient, 10)));
}

TEST_F(DivideTest, TheDerivativeFollowsTheQuotientRuleAndSharesTheOperands)
{
  const Ref y = MakeVariable("y", 0.0, MakeVariable("dy", 0.0));
  const Ref z = MakeVariable("z", 0.0, MakeVariable("dz", 0.0));
  EXPECT_EQ(TextOf(Ref(kDivide, y, z)->Derivative()),
            "((([dy] * [z]) - ([y] * [dz])) / ([z] * [z]))");
}

TEST_F(DivideTest, ADivisorThatStartsAt0EndsTheProcessByGmpsSignal)
{
  const auto divide = [] {
    std::signal(SIGFPE, SIG_DFL);
    TermOf(Ref(kDivide, Series({1.0}), Series({0.0, 1.0})), 0);
  };
  EXPECT_EXIT(divide(), testing::KilledBySignal(SIGFPE), "");
}

}  // namespace
}  // namespace varno
