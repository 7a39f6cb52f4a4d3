#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/arithmetic_choice.h"
#include "solve/integration/defect_check.h"
#include "solve/integration/dense_step.h"
#include "solve/integration/domains.h"
#include "solve/integration/exemption.h"
#include "solve/integration/run_settings.h"
#include "solve/integration/series_pool.h"
#include "solve/integration/singularity.h"
#include "solve/integration/step_control.h"
#include "solve/integration/step_length.h"
#include "solve/number/moment.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// A run that can go on from a point only if something is 0 there, and is not exact enough to say
/// so.
struct ZeroInDoubt {
  Moment time;
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

  /// Makes one step. Throws DomainError, Singularity, ZeroInDoubt or PrecisionExhausted; of the
  /// latest step, the end and the states there stay then.
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
  /// How far a step goes.
  struct Stride {
    Real offset;  // in units of the series' scale
    Moment advance;
    double log2;
  };

  StepBound PrepareStep();
  StepBound PrepareSeries();
  void RequireBits(double wanted);
  double NeededBits(const StepBound& bound) const;
  double BitsForTime(double lengthLog2) const;
  std::vector<double> StateSizes(double lengthLog2) const;
  StepBound BeginSeries(mpfr_srcptr time, const std::vector<bool>& leftOut);
  StepBound ChooseBound(const std::vector<bool>& leftOut);
  bool IsExactFor(const StepBound& bound);
  void NoteArithmetic();
  void BeginLines(mpfr_srcptr time, const std::vector<bool>& leftOut);
  void BeginAtRoot(mpfr_srcptr time);
  Singularity EndAt(LineId zeroLine) const;
  bool NoteZeroLines(const DomainError& error);
  Series& Current() { return atRoot ? *atRoot : *series; }
  const Series& Current() const { return atRoot ? *atRoot : *series; }
  double LongestStepLog2() const;
  const std::vector<bool>* LeftOut() const;
  StepLength ChooseLength(const StepBound& bound) const;
  Stride ChooseStride(StepBound& bound);
  void BeginAgainAt(const RootAhead& root);
  Stride StrideTo(const RootAhead& root);
  Moment PlaceOf(const RootAhead& root) const;
  bool IsShrinking(double log2) const;
  void RequireProgress(const StepBound& bound);
  Singularity EndBefore(const StepBound& bound);
  bool PassesDefectCheck(const Stride& stride);
  Stride ShortenToPass(StepBound& bound);
  std::vector<Real> SumToEnd(mpfr_srcptr offset) const;
  void ShiftByExemption();

  const Tape& tape;
  RunSettings settings;
  StepControl control;
  Poll poll;
  mpfr_prec_t bits;
  Domains domains;
  std::shared_ptr<SeriesPool> pool;  // of series with these bits
  std::shared_ptr<Series> series;    // about the end of the latest step; null between steps
  std::unique_ptr<Series> atRoot;    // of a step that begins at a root, instead
  std::vector<LineId> zeroLines;  // divisors and radicands that are 0 at the end of the latest step
  std::optional<ExemptionRule> exemptionRule;
  std::optional<Exemption> exemption;  // of the step at hand
  std::optional<DefectCheck> defectCheck;
  Moment start, reach;
  bool usesTime;
  long scaleExponent = 0;           // of the series that comes next
  double stepLog2 = 0;              // of the length of the latest step
  std::deque<double> latestBounds;  // log2 of what latest steps were allowed, the last one first
  DenseStep latest;
  ArithmeticChoice arithmeticChoice;
  std::vector<long> largestTerms;  // of the latest step: Series::LargestTerms
};

}  // namespace varno::solve
