#pragma once

#include "solve/integration/dense_step.h"

namespace varno::solve {

/// Notices steps that are held down by stability instead of accuracy.
///
/// What decays like exp(-r t) beside a slow solution is stirred up again by every rounding, however
/// little of it is left, and the steps must resolve it: r h stays below a bound that grows with the
/// order, though the solution itself would allow far longer steps. It shows in the terms of the
/// states. The early ones fall as steeply as the slow solution lets them; the late ones are those
/// of c exp(-r t), with c far below all digits asked for: (k+1) |x_(k+1)| / |x_k| = r h is the same
/// for all of them, and their signs alternate. Neither can be seen where steps are as long as
/// accuracy allows: Hairer, Wanner, Solving Ordinary Differential Equations II, IV.2, tell
/// stiffness of explicit methods by the same two things, an estimate of h r and of what the error
/// allows.
///
/// A fast part that is really there looks the same while it decays, and is gone after some steps:
/// only a long streak counts. Stiffness that oscillates while it decays is not noticed.
class Stiffness {
 public:
  /// Looks at a step of one of several runs of the same problem.
  void Look(const DenseStep& step);

  /// Whether a long streak of steps, the latest one among them, was held down.
  bool IsNoticed() const;
  /// r h of the latest step that was held down.
  double RateTimesStep() const { return rateTimesStep; }

 private:
  int streak = 0;
  double rateTimesStep = 0;
};

}  // namespace varno::solve
