#pragma once

#include <cstdlib>
#include <limits>

#include <gmp.h>

namespace arith {

/// The largest decimal exponent of a number, by size. GMP's own exponents count limbs and reach
/// 32 times as far, but its conversion into decimal text counts the bits in 64 bits: it ends a
/// little above, at 2^(2^64).
inline constexpr long kLargestExponent = 5'553'000'000'000'000'000;

/// The exponent of 10^kLargestExponent, in limbs.
inline constexpr mp_exp_t kLargestLimbExponent = 288'229'167'357'961'299;

/// Whether the size of x is between 10^-kLargestExponent and 10^kLargestExponent, or 0; to be asked
/// for every number that others grow from. It looks at the exponent only, which counts limbs: up to
/// 19 digits more are not noticed.
inline bool IsInRange(mpf_srcptr x)
{
  return std::abs(x->_mp_exp) <= kLargestLimbExponent;
}

/// For an intermediate result that grows in a loop and that nobody sees: whether one more product
/// or quotient with numbers in range, or their squares, stays within GMP's exponent, which
/// overflows without a sign.
inline bool HasRoom(mpf_srcptr x)
{
  constexpr mp_exp_t kReserve = 4 * kLargestLimbExponent;
  return std::abs(x->_mp_exp) <= std::numeric_limits<mp_exp_t>::max() - kReserve;
}

}  // namespace arith
