#pragma once

#include "arith/mpf.h"

namespace varno {

using arith::Mpf;

/// Subtracts the period, which is above 1, from a as often as it fits in, at a's precision.
///
/// The value is, to the last bit, that of one mpf_sub after the other, however large a is; only the
/// time is not. Beyond the reach of a's precision each subtraction takes away a cut-off period, so
/// that the remainder has nothing to do with the true one. Returns false, with a beyond the period,
/// where a single subtraction leaves a as it is.
bool SubtractPeriods(Mpf& a, const Mpf& period);

}  // namespace varno
