#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "solve/integration/path.h"
#include "solve/integration/step_polynomial.h"
#include "solve/number/moment.h"

namespace varno::solve {

/// All steps of the runs of an attempt, on both sides of the start: the solution at any time that
/// each of them has passed.
class StepRecord {
 public:
  /// The steps of a run come in order, those of one direction before those of the other.
  void Add(std::size_t run, std::shared_ptr<const StepPolynomial> step);
  /// Forgets all steps.
  void Clear() { ways.clear(); }

  /// For each run the states at a time, as of the step that begins there where one ends; none
  /// where a run has not been.
  std::optional<std::vector<SizedStates>> StatesAt(const Moment& time) const;
  /// The steps of the most exact run, in the order in which they were made.
  std::vector<std::shared_ptr<const StepPolynomial>> BestSteps() const;

 private:
  using Steps = std::vector<std::shared_ptr<const StepPolynomial>>;
  /// One run in one direction each.
  struct Ways {
    Steps forwards, backwards;
    bool backwardsFirst = false;
  };

  static bool IsFirst(const Ways& way, const StepPolynomial& step);
  static const StepPolynomial* Find(const Steps& steps, const Moment& time);

  std::vector<Ways> ways;  // for each run
};

}  // namespace varno::solve
