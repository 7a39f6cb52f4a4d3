// Exact rational arithmetic tells what the values are.

#include "solve/roots/polynomial.h"

#include <gtest/gtest.h>

#include "tests/solve/support/comparison.h"
#include "tests/solve/support/exact_polynomial.h"

namespace varno::solve {
namespace {

using support::ExactPolynomial;
using support::IsWithin;
using support::Rounded;
using support::ToReal;
using support::ValueAt;
using support::WithRoots;

constexpr mpfr_prec_t kBits = 200;

TEST(UncertainPolynomial, BoundsTheErrorOfValues)
{
  const ExactPolynomial exact = WithRoots({{1, 3}, {2, 7}, {3, 5}, {1, 3}});
  const UncertainPolynomial polynomial = Rounded(exact, 70);
  for (const Rational& x : {Rational(0), Rational(1, 3), Rational(5, 8), Rational(1)}) {
    Real place(70), difference(32);
    mpfr_set_q(place, x.get_mpq_t(), MPFR_RNDN);
    const UncertainValue value = Evaluate(polynomial, place);
    mpfr_sub(difference, value.value, ToReal(ValueAt(exact, x)), MPFR_RNDA);
    EXPECT_LE(
        mpfr_cmpabs(static_cast<mpfr_srcptr>(difference), static_cast<mpfr_srcptr>(value.error)), 0)
        << x;
    EXPECT_LT(support::Log2(value.error), -60);
  }
}

TEST(UncertainPolynomial, IsRestrictedToAPart)
{
  // (x - 1/3)^3 in x = 1/3 + y/4 is y^3/64, exact but for the error of 1/3.
  const UncertainPolynomial polynomial = Rounded(WithRoots({{1, 3}, {1, 3}, {1, 3}}));
  Real begin(kBits), width(10);
  mpfr_set_q(begin, Rational(1, 3).get_mpq_t(), MPFR_RNDN);
  mpfr_set_q(width, Rational(1, 4).get_mpq_t(), MPFR_RNDN);
  const UncertainPolynomial part = Restricted(polynomial, begin, width);
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_TRUE(
        IsWithin(-190, part.coefficients[k], ToReal(k == 3 ? Rational(1, 64) : Rational(0))))
        << k;
    EXPECT_GE(support::Log2(part.errors[k]), -203 - 2 * static_cast<double>(k));
    EXPECT_LE(support::Log2(part.errors[k]), -185);
  }
}

TEST(UncertainPolynomial, HasADerivative)
{
  // 1 + 2 x + 3 x^2
  const UncertainPolynomial derivative = Derivative(Rounded({1, 2, 3}));
  ASSERT_EQ(derivative.Degree(), 1U);
  EXPECT_TRUE(IsWithin(-190, derivative.coefficients[0], ToReal(2)));
  EXPECT_TRUE(IsWithin(-190, derivative.coefficients[1], ToReal(6)));
  EXPECT_EQ(Derivative(Rounded({5})).Degree(), 0U);
  EXPECT_TRUE(Derivative(Rounded({5})).coefficients[0].IsZero());
}

TEST(UncertainValue, HasASignWhereItsErrorLeavesOne)
{
  EXPECT_EQ((UncertainValue{ToReal({-1, 3}), ToReal({1, 4})}.Sign()), -1);
  EXPECT_EQ((UncertainValue{ToReal({1, 3}), ToReal({1, 4})}.Sign()), 1);
  EXPECT_EQ((UncertainValue{ToReal({1, 3}), ToReal({1, 2})}.Sign()), 0);
  EXPECT_EQ((UncertainValue{ToReal(0), ToReal(0)}.Sign()), 0);
}

}  // namespace
}  // namespace varno::solve
