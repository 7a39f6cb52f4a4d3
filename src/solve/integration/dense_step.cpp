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
  std::vector<Real> sums;
  sums.reserve(states.size());
  for (std::size_t i = 0; i < states.size(); ++i)
    series->Sum(static_cast<LineId>(i), offset, sums.emplace_back(bits));
  return sums;
}

}  // namespace varno::solve
