#include "solve/number/real.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

Real Third(mpfr_prec_t bits)
{
  Real third(bits);
  mpfr_set_ui(third, 1, MPFR_RNDN);
  mpfr_div_ui(third, third, 3, MPFR_RNDN);
  return third;
}

TEST(Real, BeginsAsZero)
{
  const Real number(77);
  EXPECT_TRUE(number.IsZero());
  EXPECT_EQ(77, number.Bits());
  EXPECT_EQ(0, mpfr_signbit(static_cast<mpfr_srcptr>(number)));
}

TEST(Real, CopiesBringThePrecisionAlong)
{
  const Real third = Third(200);
  const Real copy = third;
  Real assigned(64);
  assigned = third;
  EXPECT_EQ(200, copy.Bits());
  EXPECT_EQ(200, assigned.Bits());
  EXPECT_NE(0, mpfr_equal_p(third, copy));
  EXPECT_NE(0, mpfr_equal_p(third, assigned));
}

TEST(Real, MovesAndSelfAssignment)
{
  Real third = Third(200);
  Real moved = std::move(third);
  EXPECT_NEAR(1.0 / 3, moved.ToDouble(), 1e-16);
  const Real& same = moved;
  moved = same;
  EXPECT_NEAR(1.0 / 3, moved.ToDouble(), 1e-16);
  third = Third(64);  // what was moved from may be used again
  EXPECT_EQ(64, third.Bits());
}

// Numbers of few bits hold their digits themselves, others do not.
TEST(Real, ChangesBetweenShortAndLong)
{
  constexpr mpfr_prec_t kShort = Real::kOwnBits, kLong = Real::kOwnBits + 1;
  for (const mpfr_prec_t from : {kShort, kLong}) {
    for (const mpfr_prec_t to : {kShort, kLong}) {
      Real copied = Third(from), moved = Third(from), given = Third(to);
      copied = given;
      moved = std::move(given);
      given = Third(from);
      EXPECT_NE(0, mpfr_equal_p(Third(to), copied));
      EXPECT_NE(0, mpfr_equal_p(Third(to), moved));
      EXPECT_NE(0, mpfr_equal_p(Third(from), given));
      std::swap(moved, given);
      EXPECT_NE(0, mpfr_equal_p(Third(from), moved));
      EXPECT_NE(0, mpfr_equal_p(Third(to), given));
      given.SetBits(from);
      EXPECT_EQ(from, given.Bits());
      EXPECT_TRUE(given.IsZero());
    }
  }
}

TEST(Real, StaysItselfWhereVectorsGrow)
{
  for (const mpfr_prec_t bits : {10, 64, 118, 256, 257, 1000}) {
    std::vector<Real> thirds;
    for (int i = 0; i < 20; ++i) thirds.push_back(Third(bits));
    thirds.erase(thirds.begin());
    for (const Real& third : thirds) EXPECT_NE(0, mpfr_equal_p(Third(bits), third));
  }
}

}  // namespace
}  // namespace varno::solve
