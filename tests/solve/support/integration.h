#pragma once

#include <vector>

#include "solve/integration/run.h"
#include "solve/model/model.h"

namespace varno::solve::support {

/// How a solution was found, and what it is.
struct Arrival {
  std::vector<Real> states;
  std::int64_t steps;
};

/// The states of a model at `to`, integrated from its start values at `from` with tolerance and
/// precision for this many digits and some more.
Arrival Integrate(const Model& model, const Rational& from, const Rational& to, int digits);
/// The same from other start values.
Arrival Integrate(const Model& model, std::vector<Real> start, const Rational& from,
                  const Rational& to, int digits);

}  // namespace varno::solve::support
