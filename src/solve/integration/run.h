#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "solve/integration/defect_check.h"
#include "solve/integration/dense_step.h"
#include "solve/integration/domains.h"
#include "solve/integration/landing.h"
#include "solve/integration/run_settings.h"
#include "solve/integration/singularity.h"
#include "solve/integration/slow_approach.h"
#include "solve/integration/step_control.h"
#include "solve/integration/step_series.h"
#include "solve/integration/step_trend.h"
#include "solve/integration/stepper.h"
#include "solve/integration/watched_roots.h"
#include "solve/number/moment.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// One integration of a tape from one point in one direction, step by step.
///
/// A run knows nothing of rows: it goes its own steps, and the series of the latest step gives the
/// states anywhere within it. Times are exact.
class Run final : public Stepper {
 public:
  /// Begins at `start` with these states. The tape must outlive the run. `reach` is how far the
  /// run will be asked to go at most; it bounds a step that nothing else bounds. Throws
  /// DomainError where a constant has no value. `poll` is called within each step.
  Run(const Tape& tape, const RunSettings& settings, const Moment& start, std::vector<Real> states,
      const Moment& reach, Poll poll = {});
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  /// Makes one step. Throws DomainError, Singularity, ZeroInDoubt or PrecisionExhausted; of the
  /// latest step, the end and the states there stay then.
  void Step() override;
  const DenseStep& Latest() const override { return latest; }
  std::size_t LineCount() const override { return tape.lines.size(); }

  /// From now on steps end at roots of these lines. The states are as exact as the way from
  /// `wayBegin` has left them.
  void Watch(std::vector<WatchedLine> lines, const Moment& wayBegin);
  /// From now on a step ends at the time, if there is one, which must lie ahead.
  void WatchUntil(std::optional<Moment> time)
  {
    watchedTime = std::move(time);
    series.TimeWatched(watchedTime);
  }
  /// The roots at which the latest step ended; the lines begin with them in the next one.
  const std::vector<WatchedRoot>& RootsAtEnd() const { return rootsAtEnd; }
  /// Whether there is a solution behind the latest step, for all that the series there tells.
  /// Throws ZeroInDoubt or PrecisionExhausted.
  bool GoesOn();

  const Moment& Begin() const { return latest.begin; }
  const Moment& End() const { return latest.end; }
  bool IsBehind(const Moment& time) const { return latest.IsBehind(time); }
  std::vector<Real> StatesAt(const Moment& time) const { return latest.StatesAt(time); }
  std::int64_t Steps() const { return latest.steps; }
  int Order() const { return latest.order; }
  mpfr_prec_t Bits() const { return series.Bits(); }

 private:
  /// How far a step goes.
  struct Stride {
    Real offset;  // in units of the series' scale
    Moment advance;
    double log2;
  };

  Stride ChooseStride(StepBound& bound);
  Stride LongestStride(const StepBound& bound) const;
  std::optional<Stride> StrideToWatched(const Stride& longest, const RootAhead* domainEdge);
  Nearness NearnessOfRoots(const Stride& longest) const;
  void BeginAgainAt(const RootAhead& root);
  Stride StrideTo(const RootAhead& root) const;
  Stride StrideOf(const Moment& advance) const;
  Stride ShortenToPass(StepBound& bound);
  void LookAhead(const StepBound& bound);
  bool PassesDefectCheck(const Stride& stride);
  bool IsNearEnd(const StepBound& bound) const;
  std::optional<Landing> LandingBefore(const Singularity& end) const;
  bool IsExact(const Landing& landing) const;
  void Land(Landing landing, const Singularity& end);
  void RequireProgress(const StepBound& bound);
  Singularity EndBefore(const StepBound& bound);
  void GoOn(const Stride& stride);
  void SumToEnd(mpfr_srcptr offset);
  void FindStateSizes(double lengthLog2);
  void ShiftByExemption();
  void RaiseLeastSizes(const std::vector<double>& sizes);
  void Shift(std::size_t state, const Real& bound);

  const Tape& tape;
  RunSettings settings;
  Moment start;
  DenseStep latest;
  StepSeries series;  // of the step that comes next
  Domains domains;
  std::optional<DefectCheck> defectCheck;
  StepTrend trend;
  SlowApproach approach;
  std::vector<WatchedLine> watched;
  Moment wayBegin;
  std::optional<Moment> watchedTime;
  std::vector<WatchedRoot> rootsAtEnd;
  std::vector<double> largest;            // log2 of the largest sizes of the states on the way
  std::vector<double> leastSizes;         // log2 of what states count as at least; empty: nothing
  std::vector<Real> sums;                 // scratch
  std::vector<unsigned char> areRounded;  // which of these
  std::optional<Singularity> wayEnd;      // which the latest step ended on, or just before
};

/// Makes runs of a tape, which must outlive them.
MakeStepper RunsOf(const Tape& tape);

}  // namespace varno::solve
