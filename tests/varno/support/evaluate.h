#pragma once

#include "arith/mpf.h"

namespace varno {

using arith::Mpf;

/// An elementary function on GMP floats.
using MpfFunction = void (*)(mpf_t& result, mpf_ptr x);

/// The value at x. Expects that the argument stays as it is, and that the value is the same with
/// the result in the place of the argument.
Mpf Evaluate(MpfFunction function, const Mpf& x);

}  // namespace varno
