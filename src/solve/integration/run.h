#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "solve/integration/defect_check.h"
#include "solve/integration/dense_step.h"
#include "solve/integration/exemption.h"
#include "solve/integration/run_settings.h"
#include "solve/integration/series_pool.h"
#include "solve/integration/step_control.h"
#include "solve/integration/step_length.h"
#include "solve/number/moment.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The end of a run in one point: the steps shrink to nothing there.
struct Singularity {
  Moment time;  ///< as near as the steps came
  NodeId node;  ///< the expression that made the steps short, in the tape's graph
};

/// A run needs a higher precision than it may take.
struct PrecisionExhausted {
  Moment time;
};

/// One integration of a tape from one point in one direction, step by step.
///
/// A run knows nothing of rows: it goes its own steps, and the series of the latest step gives the
/// states anywhere within it. Times are exact.
class Run {
 public:
  /// Begins at `start` with these states. The tape must outlive the run. `reach` is how far the
  /// run will be asked to go at most; it bounds a step that nothing else bounds. Throws
  /// DomainError where a constant has no value. `poll` is called within each step.
  Run(const Tape& tape, const RunSettings& settings, const Moment& start, std::vector<Real> states,
      const Moment& reach, Poll poll = {});

  /// Makes one step. Throws DomainError, Singularity or PrecisionExhausted; of the latest step, the
  /// end and the states there stay then.
  void Step();
  /// The latest step; before the first one it has no length. A copy stays what it is.
  const DenseStep& Latest() const { return latest; }

  const Moment& Begin() const { return latest.begin; }
  const Moment& End() const { return latest.end; }
  bool IsBehind(const Moment& time) const { return latest.IsBehind(time); }
  std::vector<Real> StatesAt(const Moment& time) const { return latest.StatesAt(time); }
  std::int64_t Steps() const { return latest.steps; }
  int Order() const { return latest.order; }
  mpfr_prec_t Bits() const { return bits; }

 private:
  StepBound PrepareStep();
  StepBound PrepareSeries();
  StepBound BeginSeries(mpfr_srcptr time, std::vector<bool> leftOut);
  double LongestStepLog2() const;
  void RequireBits(double wanted);
  double NeededBits(const StepBound& bound) const;
  double BitsForTime(double lengthLog2) const;
  std::vector<double> StateSizes(double lengthLog2) const;
  StepLength ChooseLength(const StepBound& bound) const;
  void RequireProgress(const StepBound& bound) const;
  std::vector<Real> SumToEnd(mpfr_srcptr offset) const;
  StepLength ShortenToPass(StepBound bound);
  bool PassesDefectCheck(const StepLength& length);
  void ShiftByExemption();

  const Tape& tape;
  RunSettings settings;
  StepControl control;
  Poll poll;
  mpfr_prec_t bits;
  std::shared_ptr<SeriesPool> pool;  // of series with these bits
  std::shared_ptr<Series> series;    // about the end of the latest step; null between steps
  std::optional<ExemptionRule> exemptionRule;
  std::optional<Exemption> exemption;  // of the step at hand
  std::optional<DefectCheck> defectCheck;
  Moment start, reach;
  bool usesTime;
  long scaleExponent = 0;  // of the series that comes next
  double stepLog2 = 0;     // of the length of the latest step
  DenseStep latest;
};

}  // namespace varno::solve
