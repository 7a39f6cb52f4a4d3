#include "solve/integration/power_law.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace varno::solve {

namespace {

/// Fits to this many pairs of ratios must agree.
constexpr std::size_t kFits = 5;
/// An exponent is known when all fits agree to this, and a fraction when it is as near to one.
constexpr double kExponentError = 1e-4;
constexpr int kLargestDenominator = 12;

/// k times the ratio of terms k and k-1.
Real WeightedRatio(const std::vector<Real>& terms, std::size_t k)
{
  Real ratio(terms[k].Bits());
  mpfr_div(ratio, terms[k], terms[k - 1], MPFR_RNDN);
  mpfr_mul_ui(ratio, ratio, k, MPFR_RNDN);
  return ratio;
}

/// By the ratios of terms k and k-1 and of those before; distance NaN where there are none.
PowerLaw FitAt(const std::vector<Real>& terms, std::size_t k)
{
  const Real ratio = WeightedRatio(terms, k), before = WeightedRatio(terms, k - 1);
  // (k - 1 + e)/d and (k - 2 + e)/d
  Real distance(ratio.Bits()), exponent(ratio.Bits());
  mpfr_sub(distance, ratio, before, MPFR_RNDN);
  mpfr_ui_div(distance, 1, distance, MPFR_RNDN);
  mpfr_mul(exponent, ratio, distance, MPFR_RNDN);
  mpfr_sub_ui(exponent, exponent, k - 1, MPFR_RNDN);
  return {distance, exponent.ToDouble()};
}

}  // namespace

std::optional<PowerLaw> FitPowerLaw(const std::vector<Real>& terms)
{
  if (terms.size() < 2 * kFits + 2) return std::nullopt;
  const std::size_t last = terms.size() - 1;
  for (std::size_t k = last - 2 * kFits; k <= last; ++k) {
    if (mpfr_regular_p(static_cast<mpfr_srcptr>(terms[k])) == 0) return std::nullopt;
  }
  PowerLaw law = FitAt(terms, last);
  if (!(mpfr_sgn(static_cast<mpfr_srcptr>(law.distance)) > 0)) return std::nullopt;
  for (std::size_t i = 1; i < kFits; ++i) {
    const double other = FitAt(terms, last - 2 * i).exponent;
    if (!(std::abs(other - law.exponent) < kExponentError)) return std::nullopt;
  }
  return law;
}

std::optional<Rational> PowerLaw::Fraction() const
{
  for (int denominator = 1; denominator <= kLargestDenominator; ++denominator) {
    const double numerator = std::round(exponent * denominator);
    if (std::abs(exponent - numerator / denominator) > kExponentError) continue;
    Rational fraction(static_cast<long>(numerator), denominator);
    fraction.canonicalize();
    return fraction;
  }
  return std::nullopt;
}

}  // namespace varno::solve
