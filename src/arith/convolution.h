#pragma once

#include <gmp.h>

namespace arith {

/// Sets sum to ascending[0] descending[0] + ascending[1] descending[-1] + ..., `count` products of
/// numbers that lie one behind the other, added in this order.
///
/// The value is exactly that of mpf_mul followed by mpf_add for each product, rounding included, at
/// the precision in force; so are the precisions of sum and of the factors to be. Up to 256 bits it
/// is computed by limb_accumulator.h wherever the numbers allow.
void Convolve(mpf_t& sum, mpf_srcptr ascending, mpf_srcptr descending, int count);

}  // namespace arith
