#include "solve/integration/power_law.h"

#include <cmath>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr mpfr_prec_t kBits = 150;

/// Terms 0..30 of (1 - x/d)^-e by the binomial series; of -ln(1 - x/d) for e = 0.
std::vector<Real> Law(double d, const Rational& e)
{
  std::vector<Real> terms;
  Real term(kBits);
  mpfr_set_si(term, sgn(e) == 0 ? 0 : 1, MPFR_RNDN);
  terms.push_back(term);
  for (int k = 1; k <= 30; ++k) {
    if (k == 1 && sgn(e) == 0) {
      mpfr_set_ui(term, 1, MPFR_RNDN);
    } else {
      const Rational factor = (k - 1 + e) / k;
      mpfr_mul_q(term, term, factor.get_mpq_t(), MPFR_RNDN);
    }
    mpfr_div_d(term, term, d, MPFR_RNDN);
    terms.push_back(term);
  }
  return terms;
}

std::vector<Real> Plus(std::vector<Real> a, const std::vector<Real>& b)
{
  for (std::size_t k = 0; k < a.size(); ++k) mpfr_add(a[k], a[k], b[k], MPFR_RNDN);
  return a;
}

TEST(FitPowerLaw, FindsPlaceAndExponent)
{
  for (const Rational& e :
       {Rational(1), Rational(2), Rational(1, 2), Rational(1, 3), Rational(7, 12), Rational(0),
        Rational(-1, 2), Rational(-3, 2), Rational(-2, 3)}) {
    const auto law = FitPowerLaw(Law(0.75, e));
    ASSERT_TRUE(law.has_value()) << e;
    EXPECT_NEAR(law->distance.ToDouble(), 0.75, 1e-15) << e;
    EXPECT_NEAR(law->exponent, e.get_d(), 1e-12) << e;
    ASSERT_TRUE(law->Fraction().has_value()) << e;
    EXPECT_EQ(*law->Fraction(), e);
  }
}

// Something regular beside it, with a singularity twenty times as far
TEST(FitPowerLaw, IgnoresWhatIsFarther)
{
  const auto law = FitPowerLaw(Plus(Law(0.5, Rational(1, 2)), Law(10, 3)));
  ASSERT_TRUE(law.has_value());
  EXPECT_EQ(law->Fraction(), Rational(1, 2));
}

TEST(FitPowerLaw, ExponentsThatAreNoFractionsStay)
{
  const auto law = FitPowerLaw(Law(2, Rational(618034, 1000000)));
  ASSERT_TRUE(law.has_value());
  EXPECT_NEAR(law->exponent, 0.618034, 1e-9);
  EXPECT_FALSE(law->Fraction().has_value());
}

// Two poles close together, two at the same distance on both sides, a complex pair, one behind
TEST(FitPowerLaw, FindsNoneWhereTwoSingularitiesRule)
{
  EXPECT_FALSE(FitPowerLaw(Plus(Law(1, 1), Law(1.1, 1))).has_value());
  EXPECT_FALSE(FitPowerLaw(Plus(Law(1, 1), Law(-1, 1))).has_value());
  EXPECT_FALSE(FitPowerLaw(Law(-1, 1)).has_value());
  std::vector<Real> cosines;  // of the pair exp(+-i): cos k
  for (int k = 0; k <= 30; ++k) {
    Real& term = cosines.emplace_back(kBits);
    mpfr_set_ui(term, static_cast<unsigned long>(k), MPFR_RNDN);
    mpfr_cos(term, term, MPFR_RNDN);
  }
  EXPECT_FALSE(FitPowerLaw(cosines).has_value());
}

// exp(x): the ratios fall as 1/k.
TEST(FitPowerLaw, FindsNoneInEntireFunctions)
{
  std::vector<Real> terms;
  Real term(kBits);
  mpfr_set_ui(term, 1, MPFR_RNDN);
  terms.push_back(term);
  for (unsigned long k = 1; k <= 30; ++k) {
    mpfr_div_ui(term, term, k, MPFR_RNDN);
    terms.push_back(term);
  }
  EXPECT_FALSE(FitPowerLaw(terms).has_value());
}

TEST(FitPowerLaw, FindsNoneInShortOrVanishingSeries)
{
  std::vector<Real> terms = Law(1, 1);
  terms.resize(8);
  EXPECT_FALSE(FitPowerLaw(terms).has_value());
  std::vector<Real> gaps = Law(1, 1);
  for (std::size_t k = 0; k < gaps.size(); k += 2) mpfr_set_zero(gaps[k], 1);
  EXPECT_FALSE(FitPowerLaw(gaps).has_value());
}

}  // namespace
}  // namespace varno::solve
