#include "solve/series/series.h"

namespace varno::solve {

void Series::SumWithDerivative(LineId line, mpfr_srcptr offset, mpfr_ptr value,
                               mpfr_ptr derivative) const
{
  // Horner's scheme for both: derivative = derivative * offset + value, value = value * offset +
  // term
  Real term(mpfr_get_prec(value));
  mpfr_set_zero(value, 1);
  mpfr_set_zero(derivative, 1);
  for (int k = Order(); k >= 0; --k) {
    mpfr_mul(derivative, derivative, offset, MPFR_RNDN);
    mpfr_add(derivative, derivative, value, MPFR_RNDN);
    mpfr_mul(value, value, offset, MPFR_RNDN);
    Term(line, k, term);
    mpfr_add(value, value, term, MPFR_RNDN);
  }
}

void Series::SumStates(mpfr_srcptr offset, std::span<Real> results,
                       std::span<unsigned char> areRounded) const
{
  for (std::size_t state = 0; state < results.size(); ++state) {
    mpfr_clear_inexflag();
    Sum(static_cast<LineId>(state), offset, results[state]);
    areRounded[state] = mpfr_inexflag_p() != 0 ? 1 : 0;
  }
}

void Series::SumStatesWithDerivatives(mpfr_srcptr offset, std::span<Real> values,
                                      std::span<Real> derivatives) const
{
  for (std::size_t state = 0; state < values.size(); ++state)
    SumWithDerivative(static_cast<LineId>(state), offset, values[state], derivatives[state]);
}

}  // namespace varno::solve
