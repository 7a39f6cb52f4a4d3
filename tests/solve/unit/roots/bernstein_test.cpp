// What Bernstein's form tells of polynomials whose roots are known.

#include "solve/roots/bernstein.h"

#include <gtest/gtest.h>

#include "tests/solve/support/exact_polynomial.h"

namespace varno::solve {
namespace {

using support::Rounded;
using support::WithRoots;

TEST(Bernstein, TellsOneSimpleRoot)
{
  const Bernstein::Signs signs = Bernstein(Rounded(WithRoots({{1, 3}, 2}))).ReadSigns();
  EXPECT_TRUE(signs.changeOnce);
  EXPECT_FALSE(signs.allEqual);
  EXPECT_FALSE(signs.nothingStandsOut);
  EXPECT_EQ(signs.first, 1);
  EXPECT_EQ(signs.last, -1);
}

TEST(Bernstein, TellsThatThereIsNoRoot)
{
  const Bernstein::Signs signs = Bernstein(Rounded({-1, -2, -3})).ReadSigns();
  EXPECT_TRUE(signs.allEqual);
  EXPECT_EQ(signs.first, -1);
}

TEST(Bernstein, LeavesTwoRootsToItsHalves)
{
  const Bernstein whole(Rounded(WithRoots({{1, 5}, {4, 5}})));
  EXPECT_FALSE(whole.ReadSigns().allEqual);
  EXPECT_FALSE(whole.ReadSigns().changeOnce);
  const auto [left, right] = whole.Halves();
  EXPECT_TRUE(left.ReadSigns().changeOnce);
  EXPECT_TRUE(right.ReadSigns().changeOnce);
}

// At 1/2 the value is (1/2 - 1/5) (1/2 - 4/5) < 0, the end of one half and the start of the other.
TEST(Bernstein, HasTheValuesAtTheEnds)
{
  const auto [left, right] = Bernstein(Rounded(WithRoots({{1, 5}, {4, 5}}))).Halves();
  EXPECT_EQ(left.ReadSigns().first, 1);
  EXPECT_EQ(left.ReadSigns().last, -1);
  EXPECT_EQ(right.ReadSigns().first, -1);
  EXPECT_EQ(right.ReadSigns().last, 1);
}

TEST(Bernstein, IsUncertainAtARootAtTheEnd)
{
  EXPECT_EQ(Bernstein(Rounded(WithRoots({0}))).ReadSigns().first, 0);
  EXPECT_EQ(Bernstein(Rounded(WithRoots({1}))).ReadSigns().last, 0);
}

TEST(Bernstein, SeesNothingBehindLargeErrors)
{
  UncertainPolynomial polynomial = Rounded({1, 1});
  for (Real& error : polynomial.errors) mpfr_set_ui(error, 10, MPFR_RNDU);
  EXPECT_TRUE(Bernstein(polynomial).ReadSigns().nothingStandsOut);
}

TEST(Bernstein, TellsWhatIsMonotone)
{
  EXPECT_TRUE(Bernstein(Rounded({5, 1, 1})).IsMonotone());
  EXPECT_FALSE(Bernstein(Rounded(WithRoots({{1, 5}, {4, 5}}))).IsMonotone());
}

}  // namespace
}  // namespace varno::solve
