#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "solve/quick/line_terms.h"
#include "solve/quick/number.h"
#include "solve/quick/step_bound.h"

namespace varno::solve::quick {

struct RunSettings {
  double toleranceBits;  ///< -log2 of the relative error that a step may make in a line
  int order;
  bool disturbed;  ///< whether it moves what it rounds; else it tests the defect of its steps
};

/// From where, and how far, a run goes.
struct Way {
  Number start;    ///< exact where the program uses the time
  bool backwards;  ///< the time falls
  Number length;   ///< of the way in time, > 0
};

/// A step of a run, seen while that keeps it: from where to where it goes, and its states between.
struct StepView {
  Number begin, end;              ///< in time from the start of the way
  Number scale;                   ///< of the terms, in time, > 0
  std::span<const Number> terms;  ///< of all states, one after the other
  std::span<const Number> sizes;  ///< by state: the largest that it is, as its terms tell

  /// The states at a place of the step.
  void StatesAt(Number place, std::span<Number> result) const;
};

/// One integration of a program, step by step. Places are given by their distance from the start in
/// time, of which the ends of steps are exact.
class Run {
 public:
  Run(const Program& program, const RunSettings& settings, const Way& way,
      std::vector<Number> states);
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  /// Makes one step; false where that is not for the hardware.
  bool Step();

  /// Before the first step one of no length.
  StepView Latest() const { return {begin, end, scale, terms.OfFirst(states.size()), sizes}; }
  std::int64_t Steps() const { return steps; }
  int Order() const { return settings.order; }

 private:
  bool ChooseLength();
  bool FindLength();
  bool FitsDomains(Number part) const;
  bool PassesDefectCheck(Number part);
  bool HasDefectAt(Number part);
  bool FindSizes();
  bool GoOn();
  Number Time(Number place) const;
  Number PartOf(Number distance) const { return distance / scale; }

  const Program& program;
  RunSettings settings;
  Way way;
  StepBound stepBound;
  LineTerms terms;   // of the latest step
  LineTerms values;  // scratch: those of a point inside
  std::vector<LineId> divisors;
  std::vector<LineId> limiting;  // lines that bound steps
  Number scale;                  // of the terms, in time, > 0
  Number begin = 0, end = 0, length = 0, latestLength = 0, longest = 0;
  std::vector<Number> states;  // at the end
  std::vector<Number> sizes, inside;
  std::uint64_t disturbances;
  std::int64_t steps = 0;
};

}  // namespace varno::solve::quick
