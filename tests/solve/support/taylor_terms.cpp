#include "tests/solve/support/taylor_terms.h"

#include "solve/evaluation/constant.h"
#include "solve/series/mpfr_series.h"
#include "solve/tape/compile.h"

namespace varno::solve::support {

std::vector<PowerSeries> RightHandSideTerms(const Model& model, const SeriesRequest& request)
{
  const Tape tape = Compile(model);
  MpfrSeries series(tape, request.bits, request.order, false);
  std::vector<Real> states;
  for (const State& state : model.states)
    states.push_back(EvaluateConstant(model.graph, state.start, request.bits));
  Real time(request.bits);
  mpfr_set_q(time, request.time.get_mpq_t(), MPFR_RNDN);
  series.Begin(time, states, request.backwards, request.scaleExponent);
  series.ExtendTo(request.order);

  std::vector<PowerSeries> found;
  for (const LineId line : tape.rightHandSides) {
    PowerSeries& terms = found.emplace_back();
    for (int k = 0; k <= request.order; ++k) series.Term(line, k, terms.emplace_back(request.bits));
  }
  return found;
}

}  // namespace varno::solve::support
