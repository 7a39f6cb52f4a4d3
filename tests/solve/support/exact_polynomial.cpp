#include "tests/solve/support/exact_polynomial.h"

namespace varno::solve::support {

ExactPolynomial WithRoots(const std::vector<Rational>& roots)
{
  ExactPolynomial product{1};
  for (const Rational& root : roots) {
    product.insert(product.begin(), 0);
    for (std::size_t k = 0; k + 1 < product.size(); ++k) product[k] -= root * product[k + 1];
  }
  return product;
}

UncertainPolynomial Rounded(const ExactPolynomial& exact, mpfr_prec_t bits)
{
  UncertainPolynomial polynomial;
  for (const Rational& coefficient : exact) {
    Real& a = polynomial.coefficients.emplace_back(bits);
    mpfr_set_q(a, coefficient.get_mpq_t(), MPFR_RNDN);
    Real& error = polynomial.errors.emplace_back(32);
    mpfr_abs(error, a, MPFR_RNDU);
    mpfr_mul_2si(error, error, 2 - bits, MPFR_RNDU);
  }
  return polynomial;
}

Rational ValueAt(const ExactPolynomial& polynomial, const Rational& x)
{
  Rational value = 0;
  for (std::size_t k = polynomial.size(); k-- > 0;) value = value * x + polynomial[k];
  return value;
}

Real ToReal(const Rational& value)
{
  Real real(400);
  mpfr_set_q(real, value.get_mpq_t(), MPFR_RNDN);
  return real;
}

}  // namespace varno::solve::support
