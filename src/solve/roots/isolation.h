#pragma once

#include <vector>

#include "solve/roots/polynomial.h"

namespace varno::solve {

/// A part of [0, 1] with one root, or where a polynomial cannot be told from 0.
///
/// Rounding blurs a double root to half of the digits: within its interval the polynomial may have
/// two roots close together, a double one, or none. What is certain are the signs on both sides: if
/// they differ, there is a root.
struct RootInterval {
  Real begin, end;
  /// The sign just before and behind it: -1 or 1, 0 where that is not certain, as at 0 and 1.
  int signBefore, signAfter;
  /// There are at most so many roots, multiple ones counted as often: 1 is a simple root; degree +
  /// 1 where that is not known.
  int mostRoots;

  bool IsCrossing() const { return signBefore * signAfter < 0; }
  bool IsSimple() const { return IsCrossing() && mostRoots == 1; }
};

/// All roots in [0, 1], in order: where no interval is, none of the polynomials has a root.
///
/// Bisection until the coefficients of Bernstein's form have one sign or change it once (Descartes'
/// rule; Collins and Akritas, Polynomial real root isolation using Descartes' rule of signs, SYMSAC
/// 1976), or until nothing stands out of its error.
std::vector<RootInterval> IsolateRoots(const UncertainPolynomial& polynomial);

}  // namespace varno::solve
