#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "solve/integration/run.h"

namespace varno::solve {

/// Where a problem begins, and which stretch of time is asked for.
struct Interval {
  Moment start;  ///< the point of the start values
  Moment from, to;

  bool IsBackwards() const { return to < from; }
  /// Whether a time comes before the start on the way from `from` to `to`.
  bool IsEarly(const Moment& time) const { return IsBackwards() ? time > start : time < start; }
};

/// Called after each step; may throw to end the run.
using StepWatch = std::function<void(const Run&)>;

/// The states of one solution at times in order, whichever way the integration has to go: where the
/// start lies inside the interval, the early times are integrated first, against the order.
class Path {
 public:
  /// `early` are the times before the start that will be asked for, in order. The tape must outlive the path.
  Path(const Tape& tape, const RunSettings& settings, const Interval& interval,
       std::vector<Real> startStates, std::vector<Moment> early, StepWatch watch);

  /// The states at a time; times must be asked for in order.
  std::vector<Real> StatesAt(const Moment& time);
  /// The end of the next step beyond a time, in the order of the interval and not early.
  Moment NextStepEnd(const Moment& time);

  /// The run that the latest states came from.
  const Run& LatestRun() const { return *run; }
  /// All steps made, in both directions.
  std::int64_t Steps() const { return earlySteps + run->Steps(); }

 private:
  void Reach(const Moment& time);
  void IntegrateEarly();

  const Tape& tape;
  RunSettings settings;
  Interval interval;
  std::vector<Real> startStates;
  StepWatch watch;
  std::vector<Moment> early;
  std::vector<std::vector<Real>> earlyStates;  // from the last early time to the first
  std::int64_t earlySteps = 0;
  std::optional<Run> run;
};

}  // namespace varno::solve
