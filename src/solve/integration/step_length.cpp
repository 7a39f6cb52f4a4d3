#include "solve/integration/step_length.h"

#include <cmath>
#include <utility>

namespace varno::solve {

namespace {

constexpr int kMantissaBits = 12;

}  // namespace

StepLength StepLength::AtMost(double log2)
{
  const double whole = std::floor(log2);
  const double mantissa = std::floor(std::ldexp(std::exp2(log2 - whole), kMantissaBits - 1));
  return {static_cast<long>(mantissa), static_cast<long>(whole) - (kMantissaBits - 1)};
}

double StepLength::Log2() const
{
  return std::log2(static_cast<double>(mantissa)) + static_cast<double>(exponent);
}

void StepLength::InUnits(long unitExponent, mpfr_ptr result) const
{
  mpfr_set_si_2exp(result, mantissa, exponent - unitExponent, MPFR_RNDN);
}

Moment StepLength::ToMoment() const
{
  Rational value = mantissa;
  const mpq_ptr q = value.get_mpq_t();
  if (exponent >= 0) {
    mpq_mul_2exp(q, q, static_cast<mp_bitcnt_t>(exponent));
  } else {
    mpq_div_2exp(q, q, static_cast<mp_bitcnt_t>(-exponent));
  }
  return Moment(std::move(value));
}

}  // namespace varno::solve
