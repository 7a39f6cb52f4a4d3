#pragma once

#include <vector>

#include "solve/integration/dense_step.h"
#include "solve/number/moment.h"
#include "solve/number/real.h"

namespace varno::solve {

/// The states over one step of a run, as polynomials: what is left of a DenseStep when the series
/// of all other lines of the tape are given up, and kept as long as anybody likes.
struct StepPolynomial {
  explicit StepPolynomial(const DenseStep& step);

  Moment begin, end;
  bool backwards;
  mpfr_prec_t bits;
  std::vector<Real> endStates;
  std::vector<double> stateSizes;        ///< as DenseStep::StateSizes
  long scaleExponent;                    ///< times count in 2^this from the begin on
  std::vector<std::vector<Real>> terms;  ///< for each state, from order 0 on

  /// Whether a time lies at the end of the step or beyond, in the direction of the run.
  bool IsOver(const Moment& time) const { return backwards ? time <= end : time >= end; }
  /// Whether a time lies before the step.
  bool IsAhead(const Moment& time) const { return backwards ? time > begin : time < begin; }
  /// The states at a time within the step, or at its end.
  std::vector<Real> StatesAt(const Moment& time) const;
  /// The Taylor coefficient x^(k)(begin)/k! of a state, with its sign also where the run goes
  /// backwards. 0 <= k < terms[state].size()
  Real Coefficient(std::size_t state, std::size_t k) const;
};

}  // namespace varno::solve
