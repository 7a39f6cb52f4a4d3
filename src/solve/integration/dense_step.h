#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "solve/integration/switch.h"
#include "solve/number/moment.h"
#include "solve/number/real.h"
#include "solve/series/series.h"

namespace varno::solve {

/// The solution over one step of a run. A value of its own: it stays what it is while the run goes
/// on.
struct DenseStep {
  Moment begin, end;  ///< both the start before the first step
  bool backwards;
  std::vector<Real> states;                            ///< at the end, behind what happened there
  std::vector<double> stateSizes;                      ///< see StateSizes
  std::shared_ptr<const StateTerms> series = nullptr;  ///< about the begin; none before the first
  long scaleExponent = 0;                              ///< of the series
  double lengthLog2 = 0;                               ///< log2 of the length in time
  std::int64_t steps = 0;                              ///< of the run, this one among them
  int order = 0;
  mpfr_prec_t bits = 0;
  std::shared_ptr<const Switch> switched = nullptr;  ///< what happened at the end, if something did

  const Moment& Begin() const { return begin; }
  const Moment& End() const { return end; }
  /// Whether a time lies beyond the step, in the direction of the run.
  bool IsBehind(const Moment& time) const { return backwards ? time < end : time > end; }
  /// The states at a time within the step, or at its end.
  std::vector<Real> StatesAt(const Moment& time) const;
  /// log2 of the sizes of the states over the step: the largest terms of their sums, and what the
  /// size of the derivative makes of the step. What is far below it may be the rest of a
  /// cancellation.
  const std::vector<double>& StateSizes() const { return stateSizes; }

  std::int64_t Steps() const { return steps; }
  int Order() const { return order; }
  mpfr_prec_t Bits() const { return bits; }
};

}  // namespace varno::solve
