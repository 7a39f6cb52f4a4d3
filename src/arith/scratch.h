#pragma once

#include "arith/mpf.h"

namespace arith {

/// A number at the precision in force for an intermediate result that nothing outlives: whoever
/// calls anything else that computes must expect another value in it afterwards. It saves the
/// integration loop from making numbers.
Mpf& Scratch();

}  // namespace arith
