#pragma once

#include "arith/mpf.h"

namespace arith {

/// Sets `number`, at its own precision, to the value of a decimal text ("1.5", "-2e-30", blanks are
/// skipped). Returns false and keeps the old value when the text is no number. Ends the run with
/// "#(ERR) Number "TEXT" is out of range" when the exponent is beyond +-10^15, where GMP's own
/// exponents would soon overflow.
bool SetFromDecimal(Mpf& number, const char* text);

}  // namespace arith
