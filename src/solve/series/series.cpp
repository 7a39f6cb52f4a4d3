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

}  // namespace varno::solve
