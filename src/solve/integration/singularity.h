#pragma once

#include <limits>
#include <optional>

#include "solve/number/moment.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

enum class SingularityKind {
  kPole,          ///< a state becomes infinite, like (T - t)^-order
  kLogarithm,     ///< a state becomes infinite like ln(T - t)
  kBranchPoint,   ///< all states stay bounded, one of them like (T - t)^order beside a constant
  kDomainEdge,    ///< all states stay bounded, and an expression leaves its domain
  kSliding,       ///< the field points to the same boundary from both sides
  kAccumulation,  ///< switches come closer and closer to one another
  kSlowApproach,  ///< steps do, and no number of them gets to the place
  kStandstill,    ///< events fire one another for ever, and no time passes
  kUndecided,     ///< whether an expression crosses 0 or touches it cannot be told
  kUnknown,
};

/// The end of a run in one point: the steps shrink to nothing there, or a line reaches the edge of
/// its domain.
struct Singularity {
  Moment time;  ///< as well as it is known
  NodeId node;  ///< the expression that made the steps short, in the tape's graph
  SingularityKind kind = SingularityKind::kUnknown;
  std::optional<Rational> order = {};       ///< of a pole or a branch point, where it is a fraction
  std::optional<std::uint32_t> state = {};  ///< that becomes infinite, or branches
  mpfr_prec_t bits = 0;                     ///< that the run computed with
  /// log2 of what the time may be wrong by, where that is more than the digits of the run.
  double log2Error = -std::numeric_limits<double>::infinity();
};

/// Tells by the terms of a series about a point close before a singularity what it is.
/// `unit` is the unit of the series in time, negative backwards.
Singularity Classify(const Tape& tape, const Series& series, const Moment& begin,
                     const Rational& unit, NodeId node, mpfr_prec_t bits);

}  // namespace varno::solve
