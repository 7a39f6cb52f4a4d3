#pragma once

#include <optional>
#include <vector>

#include "solve/integration/exemption.h"

namespace varno::solve {

/// The step from a time at which operations have no Taylor series, as sqrt(t - 1) and
/// exp(-1/(t - 1)) at t = 1, or have no value: so short that they count as constants in it.
///
/// `zeroLines` are the radicands, bases and divisors that are 0 there. They must depend on the time
/// alone, and so must what is held: the equations have one solution then, since right-hand sides
/// are smooth functions of the states, and integrable ones of the time. A zero line is proven to
/// leave 0 to one side, and not to come back in the step, by the sign of its derivative over all of
/// it; so its range ends at 0. The lines that are made of it are held, each as low on the tape as
/// its range is bounded: that of sqrt is [0, sqrt(h)], that of -1/(t - 1) is not, but that of exp
/// of it.
///
/// What this changes is bounded as for other exempt lines. It lies below the tolerance beside the
/// state or, where that is small, beside what the longest step that can be bounded makes of it: at
/// the beginning of such a function there is nothing else to compare with. From then on the state
/// counts as that large (Exemption::leastSizes).
/// None where no bounds are found, as for 1/sqrt(t), which is unbounded itself.
std::optional<Exemption> LeapFromEdge(const Tape& tape, const LineRanges& lines,
                                      const RunSettings& settings,
                                      const ExemptionRule::Point& point,
                                      const std::vector<LineId>& zeroLines);

/// The step onto such a time, `end`, which the run must not pass: for functions that are flat
/// there, as exp(-1/(1 - t)) is at 1. What it changes lies below the tolerance beside the states.
/// None where no line of the time alone is 0 there that must not be.
std::optional<Exemption> LeapOntoEdge(const Tape& tape, const LineRanges& lines,
                                      const RunSettings& settings,
                                      const ExemptionRule::Point& point, mpfr_srcptr end);

}  // namespace varno::solve
