#pragma once

#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// A tape of which some lines count as constants.
struct TapeCut {
  std::vector<bool> held;     ///< these lines; what uses them is still needed
  std::vector<bool> leftOut;  ///< these, and what is needed for them only
};

/// The cut of a tape at those of the candidates that are met first on the way back from the
/// right-hand sides. Left aside are candidates that the recurrence of a function which is still
/// needed would miss, since sin is made of cos, whatever becomes of cos elsewhere, and what watched
/// lines are made of. One entry for each line, no state.
TapeCut CutAt(const Tape& tape, std::vector<bool> candidates);

/// The lines that a cut may lie at: those that right-hand sides are made of by operands. To others,
/// as the cosine that a sine is made of, CutAt comes by recurrences of functions only, and leaves
/// them aside as candidates.
std::vector<bool> CuttableLines(const Tape& tape);

/// The lines that do not move where some lines are left out: made of these and of constants only,
/// as y is in y' = pulse. One entry for each line.
std::vector<bool> StillLines(const Tape& tape, const std::vector<bool>& leftOut);

}  // namespace varno::solve
