#pragma once

#include <exception>
#include <functional>
#include <vector>

#include "solve/integration/run.h"

namespace varno::solve {

/// Where problems begin, and which stretch of time is asked for.
struct Interval {
  Moment start;  ///< the point of the start values
  Moment from, to;

  bool IsBackwards() const { return to < from; }
  /// Whether a time comes before the start on the way from `from` to `to`.
  bool IsEarly(const Moment& time) const { return IsBackwards() ? time > start : time < start; }
};

/// Called after each step; may throw to end the integration.
using StepWatch = std::function<void(const Run&)>;

/// Two runs that contradict each other: one ended where the other went on, or their states differ.
struct Disagreement {
  Moment time;
};

/// One run, or several of the same problem with different settings, integrated side by side: the
/// one behind makes the next step, so that all of them are within one step of one another and can
/// be compared anywhere on the way.
class Lockstep {
 public:
  /// Called when two runs have reached a time that ends a step of one of them.
  using Compare = std::function<void(const Moment&, const Run&, const Run&)>;

  /// The tape must outlive the runs. `watch` is called after each step, `poll` within them.
  Lockstep(const Tape& tape, const std::vector<RunSettings>& settings, const Moment& start,
           const std::vector<std::vector<Real>>& states, const Moment& reach, StepWatch watch,
           const Poll& poll, Compare compare);

  /// Integrates until every run has reached the time; the latest steps of all of them hold it then,
  /// if times come in order. Throws DomainError or Singularity where all runs end alike,
  /// Disagreement where one ends and another goes on.
  void Reach(const Moment& time);
  /// Integrates until the best run has ended a step beyond the time. Throws as Reach does.
  void ReachNextStep(const Moment& time);

  const std::vector<Run>& Runs() const { return runs; }
  /// The most exact run, which is the last.
  const Run& Best() const { return runs.back(); }

 private:
  Run* RunBehind();
  void Advance(Run& run);
  void CompareAfter(const Run& run) const;
  bool AnyEnded() const;
  void ThrowIfEnded() const;

  std::vector<Run> runs;
  std::vector<std::exception_ptr> ends;  // by run; null while it goes on
  Moment reach;
  StepWatch watch;
  Compare compare;
};

}  // namespace varno::solve
