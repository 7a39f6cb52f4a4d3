#pragma once

#include <memory>

#include "solve/integration/step_polynomial.h"
#include "solve/library/solve.h"
#include "solve/rows/number_format.h"

namespace varno::solve {

/// What a Step holds.
struct Step::Data {
  std::shared_ptr<const StepPolynomial> polynomial;
  NumberFormat format;
};

}  // namespace varno::solve
