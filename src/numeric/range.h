#pragma once

#include <gmp.h>

namespace varno {

/// The largest decimal exponent of a number, by size. GMP's own exponents reach further, but they
/// overflow without a sign: this leaves room for what is multiplied between two checks.
inline constexpr long kLargestExponent = 1'000'000'000'000'000;

/// Ends the run with "#(ERR) A number is out of range: its decimal exponent is beyond +-E" when |x|
/// is above 10^E or, unless x is 0, below 10^-E, E being kLargestExponent.
void RequireRange(mpf_srcptr x);

}  // namespace varno
