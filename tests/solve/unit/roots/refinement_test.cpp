#include "solve/roots/refinement.h"

#include <gtest/gtest.h>

#include "tests/solve/support/comparison.h"
#include "tests/solve/support/exact_polynomial.h"

namespace varno::solve {
namespace {

using support::IsWithin;
using support::Rounded;
using support::ToReal;
using support::WithRoots;

/// Far from as narrow as those of isolation.
RootInterval Wide(const Rational& begin, const Rational& end, int mostRoots)
{
  return {.begin = ToReal(begin),
          .end = ToReal(end),
          .signBefore = -1,
          .signAfter = mostRoots % 2 == 0 ? -1 : 1,
          .mostRoots = mostRoots};
}

TEST(RefineRoot, FindsASimpleRootToTheLastBits)
{
  const UncertainPolynomial polynomial = Rounded(WithRoots({{1, 3}, 2, -5}), 1000);
  const UncertainValue root = RefineRoot(polynomial, Wide({1, 4}, {1, 2}, 1));
  // 1/3 to 400 bits is what there is to compare with.
  EXPECT_TRUE(IsWithin(-395, root.value, ToReal({1, 3})));
  EXPECT_LT(support::Log2(root.error), -980);
}

TEST(RefineRoot, FindsThePlaceBetweenTwoRootsThatAreOne)
{
  const UncertainPolynomial polynomial = Rounded(WithRoots({{1, 3}, {1, 3}, 2}));
  const UncertainValue root = RefineRoot(polynomial, Wide({1, 4}, {1, 2}, 2));
  EXPECT_TRUE(IsWithin(-190, root.value, ToReal({1, 3})));
  EXPECT_LT(support::Log2(root.error), -180);
}

TEST(RefineRoot, FindsARootOfTheSquareRootOfTwo)
{
  // x^2 - 1/2
  const UncertainPolynomial polynomial = Rounded({Rational(-1, 2), 0, 1});
  const UncertainValue root = RefineRoot(polynomial, Wide({1, 2}, {3, 4}, 1));
  Real expected = ToReal({1, 2});
  mpfr_sqrt(expected, expected, MPFR_RNDN);
  EXPECT_TRUE(IsWithin(-195, root.value, expected));
}

}  // namespace
}  // namespace varno::solve
