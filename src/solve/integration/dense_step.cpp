#include "solve/integration/dense_step.h"

#include <cstddef>

namespace varno::solve {

std::vector<Real> DenseStep::StatesAt(const Moment& time) const
{
  if (time == end) return states;
  // From the begin on, in units of the series' scale
  Real offset(bits);
  (backwards ? begin - time : time - begin).Evaluate(offset);
  mpfr_mul_2si(offset, offset, -scaleExponent, MPFR_RNDN);
  std::vector<Real> sums(states.size(), Real(bits));
  for (std::size_t i = 0; i < sums.size(); ++i)
    series->Sum(static_cast<LineId>(i), offset, sums[i]);
  return sums;
}

}  // namespace varno::solve
