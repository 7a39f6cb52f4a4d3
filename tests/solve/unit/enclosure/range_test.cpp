// What interval arithmetic must hold, by hand.

#include "solve/enclosure/range.h"

#include <cmath>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

Range Between(double left, double right)
{
  Range range(53);
  mpfi_interv_d(range, left, right);
  return range;
}

void ExpectEnds(const Range& range, double left, double right)
{
  EXPECT_EQ(mpfr_get_d(range.Left(), MPFR_RNDN), left);
  EXPECT_EQ(mpfr_get_d(range.Right(), MPFR_RNDN), right);
}

TEST(Range, IsComputedFromItsEnds)
{
  ExpectEnds(Between(1, 2) + Between(-4, 8), -3, 10);
  ExpectEnds(Between(1, 2) - Between(-4, 8), -7, 6);
  ExpectEnds(-Between(1, 2), -2, -1);
  ExpectEnds(Between(-1, 2) * Between(-4, 8), -8, 16);
  ExpectEnds(Between(1, 2) / Between(4, 8), 0.125, 0.5);
}

TEST(Range, HasNoBoundsWhereADivisorMayBeZero)
{
  EXPECT_FALSE((Between(1, 2) / Between(-1, 1)).IsBounded());
}

TEST(Range, RoundsOutwards)
{
  const Range third = Between(1, 1) / Between(3, 3);
  EXPECT_LT(mpfr_cmp(third.Left(), third.Right()), 0);
  Range one = third * Between(3, 3);
  EXPECT_LE(mpfr_cmp_ui(one.Left(), 1), 0);
  EXPECT_GE(mpfr_cmp_ui(one.Right(), 1), 0);
}

TEST(Range, KnowsItsSign)
{
  EXPECT_TRUE(Range(53).IsZero());
  EXPECT_TRUE(Between(-1, 0).HasZero());
  EXPECT_FALSE(Between(1, 2).HasZero());
  EXPECT_TRUE(Between(1, 2).IsPositive());
  EXPECT_FALSE(Between(0, 2).IsPositive());
}

TEST(Range, HasAMagnitude)
{
  EXPECT_EQ(Between(-5, 2).Magnitude().ToDouble(), 5);
  EXPECT_EQ(Between(-5, 7).Magnitude().ToDouble(), 7);
  EXPECT_TRUE(std::isinf((Between(1, 2) / Range(53)).Magnitude().ToDouble()));
}

TEST(Range, GrowsToHoldANumber)
{
  Range range = Between(1, 2);
  Real five;
  mpfr_set_ui(five, 5, MPFR_RNDN);
  range.Include(five);
  ExpectEnds(range, 1, 5);
}

}  // namespace
}  // namespace varno::solve
