#pragma once

#include <vector>

#include "solve/number/real.h"

namespace varno::solve {

/// a[0] + a[1] x + ... + a[n] x^n with n >= 0, each coefficient known up to an error: stands for
/// all polynomials with |coefficient - a[k]| <= errors[k].
struct UncertainPolynomial {
  std::vector<Real> coefficients;  ///< a[k], all of one precision
  std::vector<Real> errors;        ///< as many, each >= 0, of any precision

  mpfr_prec_t Bits() const { return coefficients.front().Bits(); }
  std::size_t Degree() const { return coefficients.size() - 1; }
};

/// A number that is known up to an error.
struct UncertainValue {
  Real value;
  Real error;

  /// -1 or 1; 0 where the error leaves it open.
  int Sign() const;
};

/// Numbers of this precision bound errors; they are rounded up.
inline constexpr mpfr_prec_t kErrorBits = 32;

/// The value at x, for |x| at most about 1. Rounding counts in the error.
UncertainValue Evaluate(const UncertainPolynomial& polynomial, mpfr_srcptr x);

/// The derivative; 0 for a constant.
UncertainPolynomial Derivative(const UncertainPolynomial& polynomial);

/// The polynomial in y with x = begin + width y, for 0 <= begin and 0 < width. Rounding counts in
/// the errors.
UncertainPolynomial Restricted(const UncertainPolynomial& polynomial, mpfr_srcptr begin,
                               mpfr_srcptr width);

}  // namespace varno::solve
