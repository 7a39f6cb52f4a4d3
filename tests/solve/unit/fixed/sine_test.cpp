// Sines and cosines by fixed-point arithmetic, against MPFR.

#include "solve/fixed/sine.h"

#include <cmath>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "solve/number/real.h"

namespace varno::solve {
namespace {

/// How far a result is from the exact one, in units of its last place.
double ErrorInUnits(const Real& result, const Real& exact)
{
  Real error(64);
  mpfr_sub(error, result, exact, MPFR_RNDN);
  mpfr_mul_2si(error, error, result.Bits() - mpfr_get_exp(static_cast<mpfr_srcptr>(exact)),
               MPFR_RNDN);
  return std::abs(error.ToDouble());
}

struct Pair {
  explicit Pair(mpfr_prec_t bits) : sine(bits), cosine(bits) {}
  Real sine, cosine;
};

void ExpectRight(const Real& a, mpfr_prec_t bits)
{
  Pair found(bits), exact(300);
  mpfr_clear_inexflag();
  if (!SetSineAndCosine(found.sine, found.cosine, a)) return;
  EXPECT_NE(mpfr_inexflag_p(), 0);
  mpfr_sin_cos(exact.sine, exact.cosine, a, MPFR_RNDN);
  EXPECT_LE(ErrorInUnits(found.sine, exact.sine), 0.51) << a.ToDouble();
  EXPECT_LE(ErrorInUnits(found.cosine, exact.cosine), 0.51) << a.ToDouble();
}

TEST(SineAndCosine, AreRightToHalfAUnit)
{
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> parts(-1, 1);
  for (const mpfr_prec_t bits : {53, 108, 110}) {
    for (int i = 0; i < 4000; ++i) {
      Real a(bits), more(bits);
      mpfr_set_d(a, parts(random), MPFR_RNDN);
      mpfr_set_d(more, parts(random) * 0x1p-50, MPFR_RNDN);
      mpfr_add(a, a, more, MPFR_RNDN);
      mpfr_mul_2si(a, a, i % 22 - 9, MPFR_RNDN);
      ExpectRight(a, bits);
    }
  }
}

TEST(SineAndCosine, AreRightWhereTheTableEnds)
{
  // Half steps, and whole ones, around all quadrants
  for (int i = -600; i <= 600; ++i) {
    for (const int side : {-1, 0, 1}) {
      Real a(110);
      mpfr_const_pi(a, MPFR_RNDN);
      mpfr_mul_si(a, a, i, MPFR_RNDN);
      mpfr_div_ui(a, a, 128, MPFR_RNDN);
      if (side < 0) mpfr_nextbelow(a);
      if (side > 0) mpfr_nextabove(a);
      ExpectRight(a, 110);
    }
  }
}

TEST(SineAndCosine, AreThereForMostAngles)
{
  Pair found(108);
  Real a(108);
  for (const double angle : {0.02, -0.3, 0.785398, 1.5, -2.5, 3.0, 4.5, 10.0, 4095.9}) {
    mpfr_set_d(a, angle, MPFR_RNDN);
    EXPECT_TRUE(SetSineAndCosine(found.sine, found.cosine, a)) << angle;
  }
}

TEST(SineAndCosine, AreLeftWhereTheyWouldNotBeExact)
{
  const auto isSet = [](double angle, mpfr_prec_t bits, mpfr_prec_t ofAngle) {
    Pair found(bits);
    Real a(ofAngle);
    mpfr_set_d(a, angle, MPFR_RNDN);
    return SetSineAndCosine(found.sine, found.cosine, a);
  };
  EXPECT_TRUE(isSet(1, 110, 110));
  EXPECT_FALSE(isSet(1, 111, 110));
  EXPECT_FALSE(isSet(1, 110, 111));
  EXPECT_FALSE(isSet(0, 108, 108));
  EXPECT_FALSE(isSet(0.015, 108, 108)) << "the sine";
  EXPECT_FALSE(isSet(1.5703, 108, 108)) << "the cosine";
  EXPECT_FALSE(isSet(3.1416, 108, 108));
  EXPECT_FALSE(isSet(4096, 108, 108));
  EXPECT_FALSE(isSet(INFINITY, 108, 108));
  EXPECT_FALSE(isSet(NAN, 108, 108));
}

}  // namespace
}  // namespace varno::solve
