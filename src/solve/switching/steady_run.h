#pragma once

#include <memory>

#include "solve/integration/lockstep.h"
#include "solve/integration/stepper.h"
#include "solve/switching/calm.h"

namespace varno::solve {

/// A run that stops where the solution has come to rest, as in an event: see Calm.
class SteadyRun final : public Stepper {
 public:
  SteadyRun(std::unique_ptr<Stepper> run, Calm calm);

  /// Throws what the run throws, and StoppedByEvent.
  void Step() override;
  const DenseStep& Latest() const override { return latest; }
  std::size_t LineCount() const override { return run->LineCount(); }

 private:
  void StopAt(const Moment& time);

  std::unique_ptr<Stepper> run;
  Calm calm;
  DenseStep latest;
};

/// Makes the runs of `make` stop so on their way from the start of an interval to its end; those to
/// other ends stay as they are. `log2Tolerance` is of 1/time.
MakeStepper StoppingAtRest(MakeStepper make, const Interval& interval, double log2Tolerance);

}  // namespace varno::solve
