#include "solve/roots/polynomial.h"

#include <utility>

namespace varno::solve {

namespace {

/// error += |value| units 2^-bits: what so many roundings at this precision may have cost.
void AddRounding(mpfr_ptr error, mpfr_srcptr value, std::size_t units, mpfr_prec_t bits)
{
  Real rounding(kErrorBits);
  mpfr_abs(rounding, value, MPFR_RNDU);
  mpfr_mul_ui(rounding, rounding, units, MPFR_RNDU);
  mpfr_mul_2si(rounding, rounding, -bits, MPFR_RNDU);
  mpfr_add(error, error, rounding, MPFR_RNDU);
}

}  // namespace

int UncertainValue::Sign() const
{
  return mpfr_cmpabs(value, error) > 0 ? mpfr_signbit(value) != 0 ? -1 : 1 : 0;
}

UncertainValue Evaluate(const UncertainPolynomial& polynomial, mpfr_srcptr x)
{
  const mpfr_prec_t bits = polynomial.Bits();
  const std::size_t size = polynomial.coefficients.size();
  UncertainValue result{Real(bits), Real(kErrorBits)};
  Real power(kErrorBits);
  mpfr_abs(power, x, MPFR_RNDU);
  // Horner's scheme, and the same for the errors: each rounding is one of the partial sums.
  for (std::size_t k = size; k-- > 0;) {
    mpfr_mul(result.value, result.value, x, MPFR_RNDN);
    AddRounding(result.error, result.value, 1, bits);
    mpfr_mul(result.error, result.error, power, MPFR_RNDU);
    mpfr_add(result.value, result.value, polynomial.coefficients[k], MPFR_RNDN);
    AddRounding(result.error, result.value, 1, bits);
    mpfr_add(result.error, result.error, polynomial.errors[k], MPFR_RNDU);
  }
  return result;
}

UncertainPolynomial Derivative(const UncertainPolynomial& polynomial)
{
  const mpfr_prec_t bits = polynomial.Bits();
  UncertainPolynomial result;
  for (std::size_t k = 1; k < polynomial.coefficients.size(); ++k) {
    Real& coefficient = result.coefficients.emplace_back(bits);
    Real& error = result.errors.emplace_back(kErrorBits);
    mpfr_mul_ui(coefficient, polynomial.coefficients[k], k, MPFR_RNDN);
    mpfr_mul_ui(error, polynomial.errors[k], k, MPFR_RNDU);
    AddRounding(error, coefficient, 1, bits);
  }
  if (result.coefficients.empty()) {
    result.coefficients.emplace_back(bits);
    result.errors.emplace_back(kErrorBits);
  }
  return result;
}

UncertainPolynomial Restricted(const UncertainPolynomial& polynomial, mpfr_srcptr begin,
                               mpfr_srcptr width)
{
  UncertainPolynomial result = polynomial;
  const std::size_t size = result.coefficients.size();
  const mpfr_prec_t bits = polynomial.Bits();
  std::vector<Real> sizes;  // the same with |a[k]|, for the rounding of the sums
  for (std::size_t k = 0; k < size; ++k) {
    Real& magnitude = sizes.emplace_back(kErrorBits);
    mpfr_abs(magnitude, result.coefficients[k], MPFR_RNDU);
    Real error(kErrorBits);
    mpfr_set(error, result.errors[k], MPFR_RNDU);
    result.errors[k] = std::move(error);
  }
  Real product(bits), small(kErrorBits), beginUp(kErrorBits), widthUp(kErrorBits);
  mpfr_set(beginUp, begin, MPFR_RNDU);
  mpfr_set(widthUp, width, MPFR_RNDU);
  // Repeated division by x - begin.
  for (std::size_t j = 0; j + 1 < size; ++j) {
    for (std::size_t k = size - 1; k-- > j;) {
      mpfr_mul(product, result.coefficients[k + 1], begin, MPFR_RNDN);
      mpfr_add(result.coefficients[k], result.coefficients[k], product, MPFR_RNDN);
      for (std::vector<Real>* bounds : {&result.errors, &sizes}) {
        mpfr_mul(small, (*bounds)[k + 1], beginUp, MPFR_RNDU);
        mpfr_add((*bounds)[k], (*bounds)[k], small, MPFR_RNDU);
      }
    }
  }
  Real power(bits), powerUp(kErrorBits);
  mpfr_set_ui(power, 1, MPFR_RNDN);
  mpfr_set_ui(powerUp, 1, MPFR_RNDU);
  for (std::size_t k = 0; k < size; ++k) {
    AddRounding(result.errors[k], sizes[k], 4 * size, bits);
    mpfr_mul(result.coefficients[k], result.coefficients[k], power, MPFR_RNDN);
    mpfr_mul(result.errors[k], result.errors[k], powerUp, MPFR_RNDU);
    mpfr_mul(power, power, width, MPFR_RNDN);
    mpfr_mul(powerUp, powerUp, widthUp, MPFR_RNDU);
  }
  return result;
}

}  // namespace varno::solve
