#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "solve/integration/dense_step.h"
#include "solve/integration/run_settings.h"
#include "solve/number/moment.h"
#include "solve/series/poll.h"

namespace varno::solve {

/// Makes the steps of a solution, one after the other.
class Stepper {
 public:
  virtual ~Stepper() = default;

  /// Makes one step. What it throws ends the way; of the latest step, the end and the states there
  /// stay then.
  virtual void Step() = 0;
  /// The latest step; before the first one it has no length. A copy stays what it is.
  virtual const DenseStep& Latest() const = 0;
  /// How many lines the series of the next step has: what it takes of memory.
  virtual std::size_t LineCount() const = 0;
};

/// Begins a solution at a point with these states. `reach` is how far it will be asked to go at
/// most, `poll` is called within each step.
using MakeStepper = std::function<std::unique_ptr<Stepper>(
    const RunSettings&, const Moment& start, std::vector<Real> states, const Moment& reach, Poll)>;

}  // namespace varno::solve
