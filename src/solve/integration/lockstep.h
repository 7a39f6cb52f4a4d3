#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "solve/integration/dense_step.h"
#include "solve/integration/step_feed.h"

namespace varno::solve {

/// Where problems begin, and which stretch of time is asked for.
struct Interval {
  Moment start;  ///< the point of the start values
  Moment from, to;

  bool IsBackwards() const { return to < from; }
  /// Whether a time comes before the start on the way from `from` to `to`.
  bool IsEarly(const Moment& time) const { return IsBackwards() ? time > start : time < start; }
};

/// The states of one run at a time, with log2 of their sizes.
struct SizedStates {
  std::vector<Real> values;
  std::vector<double> sizes;
};

/// Called after each step of a run, the most exact of which is the last; may throw to end the
/// integration.
using StepWatch = std::function<void(std::size_t run, const DenseStep&)>;

/// Two runs that contradict each other: one ended where the other went on, or their states differ.
struct Disagreement {
  Moment time;
};

/// One run, or several of the same problem with different settings, integrated side by side: the
/// one behind makes the next step, so that all of them are within one step of one another and can
/// be compared anywhere on the way.
///
/// Once they have run for a while, all but the first one make steps ahead on threads of their own,
/// where that is allowed. The thread that asks makes the first one's steps and compares. What is
/// watched and compared, and in which order, stays the same.
class Lockstep {
 public:
  /// Called when a run has reached the end of a step of the most exact one: with its latest step,
  /// and that of the most exact one.
  using Compare = std::function<void(const Moment&, const DenseStep&, const DenseStep&)>;

  /// `make` makes the runs. `watch` is called after each step, `poll` within them.
  /// `threads`: how many may be used in all, that of the caller included; each run has an equal
  /// part of them, at least one, for its steps.
  Lockstep(const MakeStepper& make, const std::vector<RunSettings>& settings, const Moment& start,
           const std::vector<std::vector<Real>>& states, const Moment& reach, StepWatch watch,
           const Poll& poll, Compare compare, int threads);

  /// Integrates until every run has reached the time; the latest steps of all of them hold it then,
  /// if times come in order. Throws DomainError or Singularity where all runs end alike,
  /// Disagreement where one ends and another goes on.
  void Reach(const Moment& time);
  /// Integrates until the best run has ended a step beyond the time. Throws as Reach does.
  void ReachNextStep(const Moment& time);
  /// Integrates to the end of the way, and throws what ends it just there, too.
  void ReachEnd();

  /// What happened at the ends of steps of all runs, one for each, in the same place on their way.
  using Switches = std::vector<std::shared_ptr<const Switch>>;
  /// The first of those not taken before that lie up to a time, which all runs have reached. Throws
  /// Disagreement where a run has none there that another one has; ZeroInDoubt where states jump so
  /// near to the time that more digits must tell on which side.
  std::optional<Switches> TakeSwitch(const Moment& time);
  /// The states of a run at a time that it has reached, behind what happens there, and their sizes.
  SizedStates StatesAt(std::size_t run, const Moment& time) const;

  std::size_t RunCount() const { return runs.size(); }
  /// The latest step of a run.
  const DenseStep& Latest(std::size_t run) const { return runs[run].feed->Latest(); }
  /// Of the most exact run, which is the last.
  const DenseStep& Best() const { return Latest(runs.size() - 1); }

 private:
  struct Runner {
    std::unique_ptr<StepFeed> feed;
    std::exception_ptr end;  // null while it goes on
    RunSettings settings;
    std::deque<std::shared_ptr<const Switch>> switches = {};  // not taken yet
    std::int64_t passed = 0;  // how many there were, that at the end of the latest step included
  };

  std::optional<std::size_t> RunBehind() const;
  void Advance(std::size_t run);
  void UseThreads();
  void NoteSwitch(std::size_t run);
  bool IsReached(const Runner& run, const Switch& what, const Moment& time) const;
  bool AreOnOneStretch(const Runner& ahead, const Runner& behind) const;
  void CompareWithBest(std::size_t run) const;
  void CompareAfter(std::size_t run) const;
  bool AnyEnded() const;
  bool HasReached(const Runner& run, const Moment& time) const;
  void ThrowIfEndedBefore(const Moment& time) const;

  std::vector<Runner> runs;
  Moment start;
  bool mayUseThreads;
  std::chrono::steady_clock::time_point threadsFrom;
  Moment reach;
  StepWatch watch;
  Compare compare;
};

}  // namespace varno::solve
