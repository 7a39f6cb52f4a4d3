#pragma once

#include <optional>
#include <vector>

#include "solve/integration/lockstep.h"

namespace varno::solve {

/// The states of a solution at times in order, by one or several runs, whichever way the
/// integration has to go: where the start lies inside the interval, the early times are integrated
/// first, against the order.
class Path {
 public:
  struct Problem {
    MakeStepper makeRun;
    Interval interval;
    /// For each run.
    std::vector<RunSettings> settings;
    std::vector<std::vector<Real>> startStates;
    StepWatch watch;
    Poll poll;
    Lockstep::Compare compare;
    int threads;  ///< Lockstep
  };

  /// `early` are the times before the start that will be asked for, in order.
  Path(Problem problem, std::vector<Moment> early);

  /// The states at a time, for each run; times must be asked for in order.
  std::vector<SizedStates> StatesAt(const Moment& time);
  /// The end of the next step of the best run beyond a time, in order and not early.
  Moment NextStepEnd(const Moment& time);

  /// Goes to the end, behind all early times. Throws what Lockstep::ReachEnd does.
  void ReachEnd() { lockstep->ReachEnd(); }

  /// What happened on the way up to a time that was asked for, in order: Lockstep::TakeSwitch.
  std::optional<Lockstep::Switches> TakeSwitch(const Moment& time);

  /// The latest step of the most exact run.
  const DenseStep& Best() const { return lockstep->Best(); }
  /// The steps that the best run made, in both directions.
  std::int64_t Steps() const { return earlySteps + Best().Steps(); }

 private:
  void Depart(const Moment& reach);
  std::vector<SizedStates> LatestStates(const Moment& time) const;
  void IntegrateEarly();
  void KeepSwitches(const Moment& time);

  Problem problem;
  std::vector<Moment> early;
  std::vector<std::vector<SizedStates>> earlyStates;  // from the last early time to the first
  std::vector<Lockstep::Switches> earlySwitches;      // from the last to the first
  std::int64_t earlySteps = 0;
  std::optional<Lockstep> lockstep;
};

}  // namespace varno::solve
