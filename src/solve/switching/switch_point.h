#pragma once

#include <algorithm>
#include <vector>

#include <mpfr.h>

#include "solve/evaluation/edges.h"
#include "solve/integration/run_settings.h"
#include "solve/number/moment.h"
#include "solve/number/real.h"

namespace varno::solve {

/// A point on the way of a run where it may go over to other equations.
struct SwitchPoint {
  Moment time;
  std::vector<Real> states;
  std::vector<double> sizes;  ///< log2 of the sizes of the states
  bool backwards;

  /// The precision of the states, but at least this one.
  mpfr_prec_t BitsFrom(mpfr_prec_t least) const
  {
    return states.empty() ? least : std::max(least, states.front().Bits());
  }
};

/// How exactly the runs of a problem decide what is 0.
struct SwitchRule {
  RunSettings settings;
  EdgeRule zero;     ///< how near 0 an expression counts as 0, and whether it may
  double touchBits;  ///< a root that rounding blurs is believed with a tolerance of so many bits
  /// A change of sign that what is not known of the states may have made is looked at again with
  /// more digits, up to a tolerance of so many bits.
  double noiseBits;
};

}  // namespace varno::solve
