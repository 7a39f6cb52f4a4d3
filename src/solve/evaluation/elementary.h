#pragma once

#include <mpfr.h>

#include "solve/graph/operation.h"
#include "solve/number/rational.h"

namespace varno::solve {

/// What became of an operation on numbers.
enum class Outcome {
  kValue,
  kUndefined,   ///< outside the domain: ln(-1), 1/0, 0/0
  kNoSeries,    ///< a value, but no Taylor series: a root or power of 0; never from Apply
  kOutOfRange,  ///< too large for the arithmetic, beyond about 10^(10^18)
  kTooSmall,    ///< not 0, but below about 10^(-10^18); never from Apply, where it is 0
  kInDoubt,  ///< a constant that may be 0, or on an edge, for all that is computed; not from Apply
};

/// Sets result, at its precision, to an operation on one or two numbers, rounded to nearest.
///
/// Angles are in radians. Roots of negative numbers (but cbrt), logarithms of numbers <= 0, powers
/// of negative numbers to anything but an integer, and quotients by 0 are undefined; 0^0 is 1;
/// acot(x) is atan(1/x), and pi/2 at 0. Angles beyond 2^1000000 are out of range: to reduce them
/// would take as many digits of pi. Conditions are 1 where they hold, else 0. `b` is looked at by
/// binary operations only. result may be an operand. Not for leaves and kIf.
Outcome Apply(Operation operation, mpfr_ptr result, mpfr_srcptr a, mpfr_srcptr b);

/// Both sin and cos of an angle, for kSin, or both sinh and cosh, for kSinh, in the time of one of
/// them.
Outcome ApplyPair(Operation operation, mpfr_ptr sine, mpfr_ptr cosine, mpfr_srcptr a);

/// The same for a^exponent with a whole exponent of any size.
Outcome ApplyPower(mpfr_ptr result, mpfr_srcptr a, const Integer& exponent);

}  // namespace varno::solve
