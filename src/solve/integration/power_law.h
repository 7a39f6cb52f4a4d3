#pragma once

#include <optional>
#include <vector>

#include "solve/number/rational.h"
#include "solve/number/real.h"

namespace varno::solve {

/// What a function does near a place T ahead: it behaves like (T - t)^-exponent, with exponent 0
/// like ln(T - t).
struct PowerLaw {
  Real distance;  ///< of T from the start of the series, in units of its scale
  double exponent;

  /// The exponent as a fraction with a small denominator, if it is one as far as it is known.
  std::optional<Rational> Fraction() const;
};

/// The law that the last terms of a series follow, if they follow one.
///
/// Term k of (1 - x/d)^-e is that before it times (k - 1 + e)/(k d) (Darboux's method: the
/// singularity next to the start rules the terms of high order). So k times the ratio of both is
/// linear in k; where the last terms do not give the same d and e, something else is nearby.
std::optional<PowerLaw> FitPowerLaw(const std::vector<Real>& terms);

}  // namespace varno::solve
