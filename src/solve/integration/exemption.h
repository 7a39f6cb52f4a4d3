#pragma once

#include <optional>
#include <span>
#include <vector>

#include "solve/enclosure/line_ranges.h"
#include "solve/enclosure/tube.h"
#include "solve/integration/run_settings.h"
#include "solve/integration/step_control.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// Lines that count as constants in a step, since that changes the solution by less than the
/// tolerance.
struct Exemption {
  HeldLines held;
  std::vector<bool> leftOut;  ///< these lines, and what is needed for them only
  double longestLog2;         ///< the length of the longest step that this holds for
  Deviation deviation;        ///< bounds of what it changes in such a step
  /// log2 of what the states count as at least from then on, beside which the bounds are nothing;
  /// empty: of what they are.
  std::vector<double> leastSizes = {};
  bool endsAtEdge = false;  ///< whether the lines have no value at the end of the step
};

/// Finds lines that hold a step back without being worth it: a pulse that is far away still, the
/// neighbourhood of a high root, or a function far from where it moves, as tanh is -1 there.
///
/// What is small now counts as 0, a function that hardly moves as what it is at the start of the
/// step. But it may be large at the end of a step, or move there. It is exempt only where its
/// largest distance over the whole step from what it counts as, times the largest derivatives of
/// the right-hand sides by it, moves no state by more than a small part of the tolerance; both are
/// bounds by interval arithmetic (enclosure/). Tried where that would make the step several times
/// longer.
class ExemptionRule {
 public:
  /// The start of a step.
  struct Point {
    mpfr_srcptr time;  ///< right to a unit of its last place
    std::span<const Real> states;
    bool backwards;
    long scaleExponent;  ///< of the series
    double longestLog2;  ///< of a step that nothing bounds
  };

  ExemptionRule(const Tape& tape, const RunSettings& settings, mpfr_prec_t bits);

  const LineRanges& Ranges() const { return lines; }

  /// Whether it is worth a trial, to judge by the first terms, after `control` has looked at the
  /// series; once for each step.
  bool IsWorthTrying(const Series& series, const StepControl& control, const Point& point);
  /// After `control` has looked at the series. None where nothing would be gained.
  std::optional<Exemption> Find(const Series& series, const StepControl& control,
                                const Point& point);

 private:
  struct Candidates;
  struct Trial;

  const Tape& tape;
  RunSettings settings;
  LineRanges lines;
  std::vector<bool> cuttable;  // lines
  bool isTooLarge;             // the tape: bounds would cost more than steps
  int failures = 0;            // in a row
  int stepsToSkip = 0;         // before the next trial
};

/// A step of this length (log2).
TubeStep TubeStepFrom(const ExemptionRule::Point& point, double lengthLog2, mpfr_prec_t bits);

}  // namespace varno::solve
