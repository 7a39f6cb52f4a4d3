#pragma once

#include <span>
#include <vector>

#include "solve/integration/run_settings.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// What a step may be at most, and what set the bound.
struct StepBound {
  double log2;  ///< log2 of the length in units of the series' scale; +infinity: no bound
  LineId line;  ///< the line that set it, kNone when none did
};

/// Chooses the order and the length of each step of one run.
///
/// Every line of the tape counts, not the states alone: a function that is about to move while all
/// states rest would be stepped over otherwise. The radius of convergence is estimated from the
/// last orders of each line (Jorba and Zou 2005), as many as it takes to see five terms that are
/// more than rounding, so that series with gaps are not mistaken for short ones.
///
/// A higher order than the usual one saves steps, and all that they cost beside sums of products.
/// It is left where terms would grow before they fall: what cancels in their sums then makes zeros
/// coarser and digits doubtful, as those of sines beside their roots.
class StepControl {
 public:
  StepControl(const Tape& tape, const RunSettings& settings);

  /// Extends the series, begun, to the order that the step needs, and bounds the step. Lines that
  /// the series leaves out do not count; one entry for each line. The unit of the series is
  /// 2^scaleExponent.
  StepBound Choose(Series& series, const std::vector<bool>& leftOut, long scaleExponent);
  /// The step chosen last is made with this series, and has this length (log2): lines that showed
  /// too few terms for it are left in peace in those that follow. Returns how long the next one is
  /// if it is like this one: longer where this one was made without the raised order.
  double StepMade(const Series& series, long scaleExponent, double lengthLog2);
  /// The same without a step: of one that a series allows with the usual order.
  double Expect(const Series& series, long scaleExponent, double lengthLog2);
  /// The bound of the step chosen last.
  const StepBound& Bound() const { return bound; }
  /// What each line allows of the step chosen last with this series, log2 in units of its scale;
  /// +infinity for those that do not count.
  std::vector<double> LineBounds(const Series& series) const;
  /// log2 of the sizes of all lines at the start of the step chosen last.
  const std::vector<double>& Sizes() const { return sizes; }

 private:
  bool TermsFall(const Series& series, double step) const;
  void FindBound(const Series& series);
  void ExtendFlatLines(Series& series);
  int MostOrder(const Series& series, LineId id) const;
  bool NeedsMoreTerms(const Series& series, LineId id) const;
  void LowerBound(const Series& series, LineId id);
  bool Counts(const Series& series, LineId id) const;
  double AccuracyBound(const Series& series, LineId id, double known) const;

  const Tape& tape;
  RunSettings settings;
  std::vector<bool> flatLines;     // too few terms even at the highest order
  std::vector<bool> settledLines;  // those of the steps before
  double expectedLog2;             // of the length of a step with the raised order
  // Of the step chosen last
  StepBound bound{0, kNone};
  int order;
  bool isWhole = true;  // nothing is left out
  std::vector<bool> leftOut, stillLines;
  std::vector<double> sizes;
};

}  // namespace varno::solve
