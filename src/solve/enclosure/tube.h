#pragma once

#include <optional>
#include <vector>

#include "solve/enclosure/line_ranges.h"

namespace varno::solve {

/// A step from one point: what a solution of the tape does there is asked for.
struct TubeStep {
  Range time;                ///< from the start of the step to its end
  Range length;              ///< of the step, above 0
  std::vector<Range> start;  ///< the states
  bool backwards;            ///< whether the time falls
  KnownRanges known = {};    ///< of lines over the time
};

/// How far held lines take a solution.
struct Deviation {
  /// For each state a bound of the difference over the whole step.
  std::vector<Real> states;
  /// For each right-hand side a bound of what it changes that lines are held.
  std::vector<Real> rightHandSides;
};

/// Bounds how far the solution of a tape is, over a step, from that of the same tape with some
/// lines held (none of them a state); none where that is not found.
///
/// Both solutions x(t) stay in a box about their start x0 that is found as follows. Let w > 0 be
/// weights of the states, J the derivatives of the right-hand sides f by the states over the box,
/// m = max of |x_i - x0_i| / w_i. Then
///     m' <= max |f_i(t, x0)| / w_i + mu m,   mu = max of (J_ii + sum over j != i of |J_ij| w_j /
///     w_i)
/// so that m <= max |f_i(t, x0)| / w_i * (exp(mu h) - 1) / mu; while this stays below the radius of
/// the box neither leaves it. The difference of both solutions obeys the same inequality, with
/// sum over lines e held at c of |e - c| |df_i/de| in place of |f_i|: by the mean value theorem,
/// since both solutions are in the box, and e runs over all that lies between its values and c
/// there. mu is the logarithmic norm of G. Dahlquist (Stability and error bounds in the numerical
/// integration of ordinary differential equations, 1958); unlike iterations of x0 + [0, h] f(box)
/// this knows solutions that approach one another, and sets no limit to the step where they do.
std::optional<Deviation> DeviationOver(const Tape& tape, const LineRanges& lines,
                                       const TubeStep& step, const HeldLines& held);

}  // namespace varno::solve
