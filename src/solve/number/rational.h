#pragma once

#include <gmpxx.h>

namespace varno::solve {

/// Exact fractions and integers of any size; fractions are always kept in lowest terms.
using Rational = mpq_class;
using Integer = mpz_class;

}  // namespace varno::solve
