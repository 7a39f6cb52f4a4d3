#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "solve/integration/stiffness.h"

namespace varno::solve {

/// Says once that steps are held down by stability, where many more of them are ahead.
class StiffnessNotice {
 public:
  /// Looks at a step of one of `runs` runs side by side, after so many seconds of all of them.
  /// Returns what is to be said, the first time that there is something.
  std::optional<std::string> After(const DenseStep& step, const Moment& to, int runs,
                                   double seconds);
  bool WasGiven() const { return wasGiven; }

 private:
  Stiffness stiffness;
  bool wasGiven = false;
  std::int64_t steps = 0;  // of all runs
};

/// How many steps are ahead of a run to a time, if all are as long as the latest.
double StepsAhead(const DenseStep& latest, const Moment& to);

}  // namespace varno::solve
