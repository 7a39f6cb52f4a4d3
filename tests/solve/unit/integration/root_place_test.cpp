#include "solve/integration/root_place.h"

#include <gtest/gtest.h>

#include "solve/number/real.h"

namespace varno::solve {
namespace {

/// A root at numerator/denominator of the scale, rounded to 200 bits and right to 190.
RootAhead RootAt(long numerator, long denominator)
{
  RootAhead root{.lines = {}, .place = Real(200), .error = Real(64), .mayGoOn = false};
  const Rational place(numerator, denominator);
  mpfr_set_q(root.place, place.get_mpq_t(), MPFR_RNDN);
  mpfr_set_ui_2exp(root.error, 1, -190, MPFR_RNDN);
  return root;
}

TEST(TimeOfRoot, IsTheSimpleFractionThatItMustBe)
{
  const Moment start(Rational(1, 7));
  EXPECT_EQ(TimeOfRoot(RootAt(1, 3), start, false, 1), Moment(Rational(17, 21)));
  EXPECT_EQ(TimeOfRoot(RootAt(1, 3), start, true, 1), Moment(Rational(-11, 21)));
}

TEST(TimeOfRoot, StaysWhereNoFractionIsSimple)
{
  RootAhead root = RootAt(1, 3);
  mpfr_sqrt_ui(root.place, 2, MPFR_RNDN);
  Rational place;
  mpfr_get_q(place.get_mpq_t(), root.place);
  EXPECT_EQ(TimeOfRoot(root, Moment(), false, 0), Moment(place));
}

}  // namespace
}  // namespace varno::solve
