#pragma once

#include <cstdint>
#include <vector>

#include "solve/number/moment.h"
#include "solve/number/rational.h"
#include "solve/number/real.h"

namespace varno::solve {

/// An event with the states that it met.
struct EventFired {
  std::uint32_t event;        ///< in the order of the file
  std::vector<Real> states;   ///< before its assignments
  std::vector<double> sizes;  ///< log2 of their sizes; -infinity for one that is exactly 0
};

/// What happened at the end of a step: the equations went over to another piece, or events fired.
struct Switch {
  Moment time;
  std::vector<EventFired> events;  ///< in the order of the file
  /// What the equations are from here on, as whole numbers: two runs that do the same have the
  /// same ones.
  std::vector<Integer> signature;
  std::vector<Real> states;   ///< behind it
  std::vector<double> sizes;  ///< log2 of their sizes; -infinity for one that is exactly 0
  bool jumps = false;         ///< whether states changed
  bool stops = false;         ///< whether the way ends here as the file or an option wants it
  bool isRest = false;        ///< whether that is because the solution rests
};

/// The end of a way in an event that stops it.
struct StoppedByEvent {
  Moment time;
};

}  // namespace varno::solve
