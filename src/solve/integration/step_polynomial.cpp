#include "solve/integration/step_polynomial.h"

#include <cstddef>

namespace varno::solve {

StepPolynomial::StepPolynomial(const DenseStep& step)
    : begin(step.begin),
      end(step.end),
      backwards(step.backwards),
      bits(step.bits),
      endStates(step.states),
      stateSizes(step.stateSizes),
      scaleExponent(step.scaleExponent),
      terms(step.states.size())
{
  if (step.series == nullptr) return;
  for (std::size_t state = 0; state < terms.size(); ++state) {
    terms[state].assign(static_cast<std::size_t>(step.series->Order()) + 1, Real(bits));
    for (std::size_t k = 0; k < terms[state].size(); ++k) {
      step.series->Term(static_cast<LineId>(state), static_cast<int>(k), terms[state][k]);
    }
  }
}

std::vector<Real> StepPolynomial::StatesAt(const Moment& time) const
{
  if (time == end) return endStates;
  Real offset(bits);
  (backwards ? begin - time : time - begin).Evaluate(offset);
  mpfr_mul_2si(offset, offset, -scaleExponent, MPFR_RNDN);
  std::vector<Real> sums;
  for (const std::vector<Real>& series : terms) {
    Real& sum = sums.emplace_back(bits);
    // Horner's rule
    for (std::size_t k = series.size(); k-- > 0;) {
      mpfr_mul(sum, sum, offset, MPFR_RNDN);
      mpfr_add(sum, sum, series[k], MPFR_RNDN);
    }
  }
  return sums;
}

Real StepPolynomial::Coefficient(std::size_t state, std::size_t k) const
{
  Real coefficient = terms[state][k];
  mpfr_mul_2si(coefficient, coefficient, -scaleExponent * static_cast<long>(k), MPFR_RNDN);
  if (backwards && k % 2 == 1) mpfr_neg(coefficient, coefficient, MPFR_RNDN);
  return coefficient;
}

}  // namespace varno::solve
