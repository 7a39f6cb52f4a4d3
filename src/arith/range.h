#pragma once

#include <cstdlib>

#include <gmp.h>

namespace arith {

/// The largest decimal exponent of a number, by size. GMP's own exponents reach further, but they
/// overflow without a sign: this leaves room for what is multiplied between two checks.
inline constexpr long kLargestExponent = 1'000'000'000'000'000;

/// Whether the size of x is between 10^-kLargestExponent and 10^kLargestExponent, or 0; to be asked
/// for every number that others grow from. It looks at the exponent only, which counts limbs, 10^19
/// each.
inline bool IsInRange(mpf_srcptr x)
{
  constexpr long kDecimalDigitsPerLimb = 19;
  return std::abs(x->_mp_exp) <= kLargestExponent / kDecimalDigitsPerLimb;
}

}  // namespace arith
