#pragma once

#include <vector>

#include "solve/number/rational.h"
#include "solve/number/real.h"
#include "solve/roots/polynomial.h"

namespace varno::solve::support {

/// a[0] + a[1] x + ... with exact coefficients.
using ExactPolynomial = std::vector<Rational>;

/// The product of all x - root.
ExactPolynomial WithRoots(const std::vector<Rational>& roots);

/// Its coefficients rounded to this precision, each with an error of some last bits.
UncertainPolynomial Rounded(const ExactPolynomial& exact, mpfr_prec_t bits = 200);

/// The value at x.
Rational ValueAt(const ExactPolynomial& polynomial, const Rational& x);

/// Rounded to 400 bits.
Real ToReal(const Rational& value);

}  // namespace varno::solve::support
