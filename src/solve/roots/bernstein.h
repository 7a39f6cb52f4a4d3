#pragma once

#include <utility>
#include <vector>

#include "solve/roots/polynomial.h"

namespace varno::solve {

/// An uncertain polynomial in Bernstein's form on an interval: b[0], ..., b[n] such that it lies
/// between the least and the largest of them, has the values b[0] and b[n] at the ends, and no more
/// roots within than the b[i] have changes of sign, and as many but for an even number (Farin,
/// Curves and Surfaces for CAGD, 5th edition 2002, chapter 6).
class Bernstein {
 public:
  /// On [0, 1].
  explicit Bernstein(const UncertainPolynomial& polynomial);

  /// The same on both halves of the interval, by de Casteljau's scheme.
  std::pair<Bernstein, Bernstein> Halves() const;

  /// What the signs of the coefficients tell.
  struct Signs {
    int first, last;        ///< of the ends; 0: not certain
    bool allEqual;          ///< all certain and the same: no root
    bool changeOnce;        ///< all certain, with one change: one simple root
    bool nothingStandsOut;  ///< all within some times their errors: cannot be told from 0
  };
  Signs ReadSigns() const;

  /// Whether the derivative has no root in the interval.
  bool IsMonotone() const;

 private:
  Bernstein() = default;
  int Sign(std::size_t i) const;
  void AddRounding();

  std::vector<Real> coefficients;
  std::vector<Real> errors;
};

}  // namespace varno::solve
