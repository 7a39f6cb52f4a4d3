#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/arithmetic_choice.h"
#include "solve/integration/dense_step.h"
#include "solve/integration/exemption.h"
#include "solve/integration/run_settings.h"
#include "solve/integration/series_pool.h"
#include "solve/integration/singularity.h"
#include "solve/integration/step_control.h"
#include "solve/integration/step_length.h"
#include "solve/number/moment.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"
#include "solve/team/team.h"

namespace varno::solve {

/// A run can go on from a point only if something is 0 there, and is not exact enough to say
/// so.
struct ZeroInDoubt {
  Moment time;
};

/// A run needs a higher precision than it may take.
struct PrecisionExhausted {
  Moment time;
};

/// The series that a run's next step is made of, about the end of its latest one.
///
/// It is begun with as many bits as the step needs, without the lines that are exempt from it, and
/// where operations meet a 0 that they cannot take, such as the divisor of sin(t)/t, with the
/// common root divided out.
class StepSeries {
 public:
  /// For the step behind `latest`, whatever that is at the time; both must outlive this. `reach` is
  /// how far the run will be asked to go at most. Throws DomainError where a constant of the tape
  /// has no value, and PrecisionExhausted. `poll` is called while terms are computed.
  StepSeries(const Tape& tape, const RunSettings& settings, const DenseStep& latest,
             const Moment& reach, Poll poll);

  /// Begins the series; gives what it allows, as a length in time. Throws DomainError, Singularity,
  /// ZeroInDoubt or PrecisionExhausted.
  StepBound Begin();
  /// Steps from now on may end at this time, if there is one; where functions have an edge there,
  /// one may go onto it.
  void TimeWatched(std::optional<Moment> time) { watchedTime = std::move(time); }
  /// The longest step that a bound allows, and the end of the way.
  StepLength ChooseLength(const StepBound& bound) const;
  /// The series goes to whom it is given: the next step has another one.
  std::shared_ptr<Series> Release();
  /// A step of this length is made with the series, which ends at the zero lines, or at a root of
  /// another one.
  void StepMade(double lengthLog2, bool endsAtRoot);

  Series& Current() { return atRoot ? *atRoot : *series; }
  const Series& Current() const { return atRoot ? *atRoot : *series; }
  /// log2 of the sizes of all lines at the start of the step.
  const std::vector<double>& Sizes() const { return control.Sizes(); }
  mpfr_prec_t Bits() const { return bits; }
  /// The team that shares the work of a step; null: there is none.
  Team* Sharing() const { return team.get(); }

  /// The unit of the series, in which its terms should fall: a power of 2.
  long ScaleExponent() const { return scaleExponent; }

  /// What counts as 0 in the step; none: nothing.
  const std::optional<Exemption>& LeftOut() const { return exemption; }
  bool IsAtRoot() const { return atRoot != nullptr; }

  /// Divisors and radicands that are 0 at the start of the series that comes next.
  const std::vector<LineId>& ZeroLines() const { return zeroLines; }
  void SetZeroLines(std::vector<LineId> lines) { zeroLines = std::move(lines); }
  /// Adds some; false if all were known.
  bool AddZeroLines(std::span<const LineId> lines);
  /// The end of a way that cannot go on where a line is 0: all states are there.
  Singularity EndAt(LineId zeroLine) const;

 private:
  StepBound BeginWithBits();
  StepBound BeginWhole(mpfr_srcptr time, bool mayUseBlocks);
  StepBound BeginExempt(mpfr_srcptr time, bool mayUseBlocks);
  bool FindLeap(mpfr_srcptr time);
  bool FindLeapOntoEdge(const ExemptionRule::Point& point);
  ExemptionRule::Point PointAt(mpfr_srcptr time) const;
  void SetFirstScale(mpfr_srcptr time);
  StepBound BeginWithout(mpfr_srcptr time, const std::vector<bool>& leftOut, const HeldLines& held,
                         bool mayUseBlocks);
  StepBound ChooseBound(const std::vector<bool>& leftOut);
  double MissingBits(const StepBound& bound);
  void SetScale(double lengthLog2, double growth = 0);
  void BeginLines(mpfr_srcptr time, const std::vector<bool>& leftOut, const HeldLines& held);
  void BeginAtRoot(mpfr_srcptr time);
  bool NoteZeroLines(const DomainError& error);
  void RequireBits(double wanted);
  double NeededBits(const StepBound& bound) const;
  double BitsForTime(double lengthLog2) const;
  double BitsForBlocks() const;
  double LongestStepAhead(mpfr_srcptr time);

  const Tape& tape;
  RunSettings settings;
  const DenseStep& latest;
  Moment reach;
  std::optional<Moment> watchedTime;
  Poll poll;
  bool usesTime;
  std::vector<bool> none;  // of the lines
  mpfr_prec_t bits;
  StepControl control;
  std::shared_ptr<Team> team;        // that shares the work; null: one thread does it
  std::shared_ptr<SeriesPool> pool;  // of series with these bits
  std::shared_ptr<Series> series;    // null once released
  std::unique_ptr<Series> atRoot;    // of a step that begins at a root, instead
  std::vector<LineId> zeroLines;
  std::optional<ExemptionRule> exemptionRule;
  std::optional<Exemption> exemption;
  ArithmeticChoice arithmeticChoice;
  double missingBits = 0;          // for which the series begun was refined: Series::MissingBits
  std::vector<double> leastSizes;  // scratch
  std::vector<long> largestTerms;  // of the latest step: Series::LargestTerms
  long scaleExponent = 0;
  double latestLog2 = std::numeric_limits<double>::infinity();  // of the length of the latest step
  double expectedStepLog2 = 0;                                  // of the next one, at most
  double longestStepLog2 = 0;                                   // of the step begun
  Real reachTime = Real(2);  // `reach`, with as many bits as are computed with
  Real beginTime = Real(2);  // of the step
  Real way = Real(64);       // scratch
  bool hasLeftOut = false;   // whether series were ever told to leave lines out
};

}  // namespace varno::solve
