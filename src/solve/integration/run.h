#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/domains.h"
#include "solve/integration/exemption.h"
#include "solve/integration/run_settings.h"
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

  /// Makes one step. Throws DomainError, Singularity, ZeroInDoubt or PrecisionExhausted; End() and
  /// the states there stay then.
  void Step();

  /// The latest step is from Begin() to End(), both at the start before the first one.
  const Moment& Begin() const { return begin; }
  const Moment& End() const { return end; }
  /// Whether a time lies beyond the latest step, in the direction of the run.
  bool IsBehind(const Moment& time) const { return backwards ? time < end : time > end; }
  /// The states at a time within the latest step, or at its end.
  std::vector<Real> StatesAt(const Moment& time) const;

  /// log2 of the sizes of the states over the latest step: the largest terms of their sums, and
  /// what the size of the derivative makes of the step. What is far below it may be the rest of a
  /// cancellation.
  const std::vector<double>& StateSizes() const { return stateSizes; }

  std::int64_t Steps() const { return steps; }
  int Order() const { return order; }
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
  std::vector<double> SizesOverStep() const;
  StepBound BeginSeries(mpfr_srcptr time, const std::vector<bool>& leftOut);
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
  Real Offset(const Moment& time) const;
  std::vector<Real> SumStates(mpfr_srcptr offset) const;
  void SumToEnd(mpfr_srcptr offset);
  void ShiftByExemption();

  const Tape& tape;
  RunSettings settings;
  StepControl control;
  Poll poll;
  mpfr_prec_t bits;
  Domains domains;
  std::unique_ptr<Series> series;
  std::unique_ptr<Series> atRoot;  // of a step that begins at a root, instead
  std::vector<LineId> zeroLines;   // divisors and radicands that are 0 at `end`
  std::optional<ExemptionRule> exemptionRule;
  std::optional<Exemption> exemption;  // of the step at hand
  Moment start, begin, end, reach;
  bool backwards;
  bool usesTime;
  std::vector<Real> states;        // at `end`
  std::vector<double> stateSizes;  // over the latest step
  long scaleExponent = 0;          // of the series in use
  long nextScaleExponent = 0;
  double stepLog2 = 0;              // of the length of the latest step
  std::deque<double> latestBounds;  // log2 of what latest steps were allowed, the last one first
  std::int64_t steps = 0;
  int order = 0;
};

}  // namespace varno::solve
