#pragma once

#include <span>

#include "solve/model/model.h"
#include "solve/tape/tape.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/power_series.h"

namespace varno::solve::support {

/// About which point, how far, and how exactly terms are computed.
struct SeriesRequest {
  mpfr_prec_t bits = 113;
  int order = 20;
  Rational time = 0;
  long scaleExponent = 0;
  bool backwards = false;
};

/// The terms of the right-hand side of every state. The states begin at their start values,
/// whatever the time.
std::vector<PowerSeries> RightHandSideTerms(const Model& model, const SeriesRequest& request);

/// The terms of one function of t.
template <class Of>
PowerSeries TermsOf(Of function, const SeriesRequest& request)
{
  return RightHandSideTerms(Quadrature(function), request)[0];
}

}  // namespace varno::solve::support
