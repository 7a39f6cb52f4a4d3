#pragma once

#include <cstdlib>

#include <gmp.h>

namespace arith {

/// Writes "#(ERR) A number is out of range: ..." and ends the process with status 1.
[[noreturn]] void FailOutOfRange();

/// The largest decimal exponent of a number, by size. GMP's own exponents reach further, but they
/// overflow without a sign: this leaves room for what is multiplied between two checks.
inline constexpr long kLargestExponent = 1'000'000'000'000'000;

/// Ends the run when the size of x is beyond 10^+-kLargestExponent; to be called for every number
/// that others grow from. It looks at the exponent only, which counts limbs, 10^19 each.
inline void RequireRange(mpf_srcptr x)
{
  constexpr long kDecimalDigitsPerLimb = 19;
  if (std::abs(x->_mp_exp) > kLargestExponent / kDecimalDigitsPerLimb) FailOutOfRange();
}

}  // namespace arith
