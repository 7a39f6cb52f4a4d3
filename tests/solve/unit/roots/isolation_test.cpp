#include "solve/roots/isolation.h"

#include <cmath>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "solve/number/rational.h"
#include "solve/roots/refinement.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/exact_polynomial.h"

namespace varno::solve {
namespace {

using support::ExactPolynomial;
using support::IsWithin;
using support::Rounded;
using support::ToReal;
using support::WithRoots;

bool Holds(const RootInterval& interval, const Rational& root)
{
  return mpfr_cmp_q(static_cast<mpfr_srcptr>(interval.begin), root.get_mpq_t()) <= 0 &&
         mpfr_cmp_q(static_cast<mpfr_srcptr>(interval.end), root.get_mpq_t()) >= 0;
}

/// Exactly these roots are found, simple ones, and refined to this part of 1.
void ExpectSimpleRoots(const UncertainPolynomial& polynomial, const std::vector<Rational>& roots,
                       double log2Error)
{
  const std::vector<RootInterval> found = IsolateRoots(polynomial);
  ASSERT_EQ(found.size(), roots.size());
  for (std::size_t i = 0; i < roots.size(); ++i) {
    EXPECT_TRUE(Holds(found[i], roots[i])) << roots[i];
    EXPECT_TRUE(found[i].IsSimple()) << roots[i];
    const UncertainValue place = RefineRoot(polynomial, found[i]);
    EXPECT_TRUE(IsWithin(log2Error, place.value, ToReal(roots[i]))) << roots[i];
    Real difference(32);
    mpfr_sub(difference, place.value, ToReal(roots[i]), MPFR_RNDA);
    EXPECT_LE(support::Log2(difference), support::Log2(place.error)) << roots[i];
  }
}

TEST(IsolateRoots, FindsKnownRoots)
{
  const std::vector<Rational> roots{{1, 7}, {1, 3}, {1, 2}, {3, 4}, {9, 10}};
  ExpectSimpleRoots(Rounded(WithRoots(roots)), roots, -180);
}

TEST(IsolateRoots, LooksBetween0And1Only)
{
  const ExactPolynomial all = WithRoots({{-1, 2}, {-1, 1000}, {1, 3}, {1001, 1000}, 5});
  ExpectSimpleRoots(Rounded(all), {{1, 3}}, -180);
}

TEST(IsolateRoots, FindsNoneWhereThereIsNone)
{
  EXPECT_TRUE(IsolateRoots(Rounded({1})).empty());
  EXPECT_TRUE(IsolateRoots(Rounded({1, 1})).empty());
  // (x - 1/2)^2 + 10^-40 comes near to 0, but its errors, some 2^-200, leave it above.
  ExactPolynomial near = WithRoots({{1, 2}, {1, 2}});
  near[0] += Rational("1/10000000000000000000000000000000000000000");
  EXPECT_TRUE(IsolateRoots(Rounded(near)).empty());
}

// 1e60 (x - 1/2)^2 + 1: the divisor of a peak of width 1e-30
TEST(IsolateRoots, TellsAComplexPairFromADoubleRoot)
{
  ExactPolynomial peak = WithRoots({{1, 2}, {1, 2}});
  for (Rational& coefficient : peak)
    coefficient *= Rational("1000000000000000000000000000000000000000000000000000000000000");
  peak[0] += 1;
  EXPECT_EQ(IsolateRoots(Rounded(peak, 180)).size(), 1U);
  EXPECT_TRUE(IsolateRoots(Rounded(peak, 220)).empty());
}

// All but one of the roots of Wilkinson's polynomial of degree 20, x in units of 20.5
TEST(IsolateRoots, FindsWilkinsonsRoots)
{
  std::vector<Rational> roots;
  for (int k = 1; k <= 20; ++k) roots.emplace_back(2 * k, 41);
  for (Rational& root : roots) root.canonicalize();
  ExpectSimpleRoots(Rounded(WithRoots(roots)), roots, -140);
}

// T_n(2 x - 1) has the roots (1 + cos((k - 1/2) pi / n)) / 2.
TEST(IsolateRoots, FindsChebyshevsRoots)
{
  constexpr int kDegree = 40;
  ExactPolynomial before{1}, now{-1, 2};
  for (int n = 1; n < kDegree; ++n) {
    // T_(n+1) = 2 u T_n - T_(n-1) with u = 2 x - 1
    ExactPolynomial next(now.size() + 1, 0);
    for (std::size_t k = 0; k < now.size(); ++k) {
      next[k] -= 2 * now[k];
      next[k + 1] += 4 * now[k];
    }
    for (std::size_t k = 0; k < before.size(); ++k) next[k] -= before[k];
    before = std::exchange(now, next);
  }
  const UncertainPolynomial polynomial = Rounded(now, 400);
  const std::vector<RootInterval> found = IsolateRoots(polynomial);
  ASSERT_EQ(found.size(), static_cast<std::size_t>(kDegree));
  for (int k = 1; k <= kDegree; ++k) {
    const RootInterval& interval = found[static_cast<std::size_t>(kDegree - k)];
    EXPECT_TRUE(interval.IsSimple());
    Real expected(400);
    mpfr_const_pi(expected, MPFR_RNDN);
    mpfr_mul_ui(expected, expected, 2 * static_cast<unsigned long>(k) - 1, MPFR_RNDN);
    mpfr_div_ui(expected, expected, 2UL * kDegree, MPFR_RNDN);
    mpfr_cos(expected, expected, MPFR_RNDN);
    mpfr_add_ui(expected, expected, 1, MPFR_RNDN);
    mpfr_div_2ui(expected, expected, 1, MPFR_RNDN);
    EXPECT_TRUE(IsWithin(-250, RefineRoot(polynomial, interval).value, expected)) << k;
  }
}

TEST(IsolateRoots, SaysThatADoubleRootIsOne)
{
  const UncertainPolynomial polynomial = Rounded(WithRoots({{1, 3}, {1, 3}, {4, 5}}));
  const std::vector<RootInterval> found = IsolateRoots(polynomial);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_TRUE(Holds(found[0], {1, 3}));
  EXPECT_FALSE(found[0].IsSimple());
  EXPECT_FALSE(found[0].IsCrossing());
  EXPECT_EQ(found[0].signBefore, -1);
  EXPECT_EQ(found[0].mostRoots, 2);
  // The root itself is blurred to about 100 bits of 200, the place between both is not.
  Real width(32);
  mpfr_sub(width, found[0].end, found[0].begin, MPFR_RNDU);
  EXPECT_LT(support::Log2(width), -85);
  EXPECT_TRUE(IsWithin(-190, RefineRoot(polynomial, found[0]).value, ToReal({1, 3})));
  EXPECT_TRUE(found[1].IsSimple());
}

TEST(IsolateRoots, SaysThatATripleRootCrosses)
{
  const UncertainPolynomial polynomial = Rounded(WithRoots({{1, 3}, {1, 3}, {1, 3}}));
  const std::vector<RootInterval> found = IsolateRoots(polynomial);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_TRUE(found[0].IsCrossing());
  EXPECT_FALSE(found[0].IsSimple());
  EXPECT_EQ(found[0].mostRoots, 3);
  EXPECT_TRUE(IsWithin(-190, RefineRoot(polynomial, found[0]).value, ToReal({1, 3})));
}

// Two roots 2^-40 apart are told apart by 200 bits, not by 60.
TEST(IsolateRoots, TellsClosePairsApartWhereItCan)
{
  const Rational close = Rational(1, 3) + Rational(1, Integer(1) << 40);
  const ExactPolynomial exact = WithRoots({{1, 3}, close});
  ExpectSimpleRoots(Rounded(exact), {{1, 3}, close}, -140);
  const std::vector<RootInterval> found = IsolateRoots(Rounded(exact, 60));
  ASSERT_EQ(found.size(), 1U);
  EXPECT_TRUE(Holds(found[0], {1, 3}));
  EXPECT_TRUE(Holds(found[0], close));
  EXPECT_EQ(found[0].mostRoots, 2);
}

TEST(IsolateRoots, FindsRootsAtBothEnds)
{
  const std::vector<RootInterval> found = IsolateRoots(Rounded(WithRoots({0, {1, 2}, 1})));
  ASSERT_EQ(found.size(), 3U);
  EXPECT_TRUE(Holds(found[0], 0));
  EXPECT_EQ(found[0].signBefore, 0);
  EXPECT_EQ(found[0].signAfter, 1);
  EXPECT_TRUE(found[1].IsSimple());
  EXPECT_TRUE(Holds(found[2], 1));
  EXPECT_EQ(found[2].signBefore, -1);
  EXPECT_EQ(found[2].signAfter, 0);
}

TEST(IsolateRoots, FindsARootNearTheBegin)
{
  const Rational near("1/1000000000000000000000000000000");
  ExpectSimpleRoots(Rounded(WithRoots({near, {1, 2}})), {near, {1, 2}}, -180);
}

// What is unknown everywhere is one interval.
TEST(IsolateRoots, LeavesOpenWhatIsUnknownEverywhere)
{
  UncertainPolynomial polynomial = Rounded({1, -2, 3});
  for (Real& error : polynomial.errors) mpfr_set_ui(error, 10, MPFR_RNDU);
  const std::vector<RootInterval> found = IsolateRoots(polynomial);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_TRUE(Holds(found[0], 0));
  EXPECT_TRUE(Holds(found[0], 1));
  EXPECT_EQ(found[0].signBefore, 0);
}

// x - 1/2 with an error of 1/100 in its first coefficient: the root lies within 1/100 of 1/2.
TEST(IsolateRoots, ErrorsWidenTheInterval)
{
  UncertainPolynomial polynomial = Rounded(WithRoots({{1, 2}}));
  mpfr_set_q(polynomial.errors[0], Rational(1, 100).get_mpq_t(), MPFR_RNDU);
  const std::vector<RootInterval> found = IsolateRoots(polynomial);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_TRUE(found[0].IsSimple());
  EXPECT_TRUE(Holds(found[0], {49, 100}));
  EXPECT_TRUE(Holds(found[0], {51, 100}));
  EXPECT_NEAR(RefineRoot(polynomial, found[0]).error.ToDouble(), 0.01, 1e-6);
}

}  // namespace
}  // namespace varno::solve
