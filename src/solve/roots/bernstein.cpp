#include "solve/roots/bernstein.h"

#include <bit>

#include "solve/number/rational.h"

namespace varno::solve {

namespace {

/// Bits beyond those of the polynomial, so that what is done here adds little to its errors.
constexpr mpfr_prec_t kGuardBits = 32;
/// What does not stand out of its error by this factor is not told from 0 any further: without a
/// margin the places where a polynomial equals its error would be sought with all digits.
constexpr unsigned long kStandsOut = 16;

}  // namespace

Bernstein::Bernstein(const UncertainPolynomial& polynomial)
{
  const std::size_t size = polynomial.coefficients.size();
  const auto sizeBits = static_cast<mpfr_prec_t>(std::bit_width(size));
  const mpfr_prec_t bits = polynomial.Bits() + kGuardBits + 2 * sizeBits;
  // a[k] / binomial(n, k)
  Integer binomial = 1;
  for (std::size_t k = 0; k < size; ++k) {
    Real& coefficient = coefficients.emplace_back(bits);
    Real& error = errors.emplace_back(kErrorBits);
    mpfr_div_z(coefficient, polynomial.coefficients[k], binomial.get_mpz_t(), MPFR_RNDN);
    mpfr_div_z(error, polynomial.errors[k], binomial.get_mpz_t(), MPFR_RNDU);
    // The sums below have positive weights: their roundings, one in each of `size` passes, stay
    // below this part of the sum of |a[k]|.
    Real rounding(kErrorBits);
    mpfr_abs(rounding, coefficient, MPFR_RNDU);
    mpfr_mul_ui(rounding, rounding, 2 * size, MPFR_RNDU);
    mpfr_mul_2si(rounding, rounding, -bits, MPFR_RNDU);
    mpfr_add(error, error, rounding, MPFR_RNDU);
    binomial = binomial * (size - 1 - k) / (k + 1);
  }
  // b[i] = sum over k of binomial(i, k) a[k] / binomial(n, k), by Pascal's triangle
  for (std::size_t j = 1; j < size; ++j) {
    for (std::size_t i = size - 1; i >= j; --i) {
      mpfr_add(coefficients[i], coefficients[i], coefficients[i - 1], MPFR_RNDN);
      mpfr_add(errors[i], errors[i], errors[i - 1], MPFR_RNDU);
    }
  }
}

/// Adds what the roundings of a subdivision cost, which are parts of the largest coefficient.
void Bernstein::AddRounding()
{
  Real rounding(kErrorBits);
  for (const Real& coefficient : coefficients) {
    if (mpfr_cmpabs(coefficient, rounding) > 0) mpfr_abs(rounding, coefficient, MPFR_RNDU);
  }
  mpfr_mul_ui(rounding, rounding, coefficients.size(), MPFR_RNDU);
  mpfr_mul_2si(rounding, rounding, -coefficients.front().Bits(), MPFR_RNDU);
  for (Real& error : errors) mpfr_add(error, error, rounding, MPFR_RNDU);
}

std::pair<Bernstein, Bernstein> Bernstein::Halves() const
{
  Bernstein left, right = *this;
  right.AddRounding();
  const std::size_t size = coefficients.size();
  for (std::size_t j = 0; j < size; ++j) {
    left.coefficients.push_back(right.coefficients.front());
    left.errors.push_back(right.errors.front());
    for (std::size_t i = 0; i + 1 + j < size; ++i) {
      Real& b = right.coefficients[i];
      Real& error = right.errors[i];
      mpfr_add(b, b, right.coefficients[i + 1], MPFR_RNDN);
      mpfr_div_2ui(b, b, 1, MPFR_RNDN);
      mpfr_add(error, error, right.errors[i + 1], MPFR_RNDU);
      mpfr_div_2ui(error, error, 1, MPFR_RNDU);
    }
  }
  return {std::move(left), std::move(right)};
}

int Bernstein::Sign(std::size_t i) const
{
  if (mpfr_cmpabs(coefficients[i], errors[i]) <= 0) return 0;
  return mpfr_signbit(static_cast<mpfr_srcptr>(coefficients[i])) != 0 ? -1 : 1;
}

Bernstein::Signs Bernstein::ReadSigns() const
{
  const std::size_t size = coefficients.size();
  Signs signs{Sign(0), Sign(size - 1), true, false, true};
  int changes = 0, uncertain = 0, latest = signs.first;
  Real limit(kErrorBits);
  for (std::size_t i = 0; i < size; ++i) {
    mpfr_mul_ui(limit, errors[i], kStandsOut, MPFR_RNDU);
    if (mpfr_cmpabs(coefficients[i], limit) > 0) signs.nothingStandsOut = false;
    const int sign = Sign(i);
    if (sign == 0) ++uncertain;
    if (sign == 0 || sign != signs.first) signs.allEqual = false;
    if (sign == 0 || sign == latest) continue;
    ++changes;
    latest = sign;
  }
  signs.changeOnce = changes == 1 && uncertain == 0;
  return signs;
}

bool Bernstein::IsMonotone() const
{
  Bernstein differences;
  for (std::size_t i = 0; i + 1 < coefficients.size(); ++i) {
    Real& difference = differences.coefficients.emplace_back(coefficients[i].Bits());
    Real& error = differences.errors.emplace_back(kErrorBits);
    mpfr_sub(difference, coefficients[i + 1], coefficients[i], MPFR_RNDN);
    mpfr_add(error, errors[i], errors[i + 1], MPFR_RNDU);
  }
  return !differences.coefficients.empty() && differences.ReadSigns().allEqual;
}

}  // namespace varno::solve
