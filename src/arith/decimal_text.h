#pragma once

#include "arith/mpf.h"

namespace arith {

/// What a text turned out to be.
enum class DecimalText { kNumber, kNoNumber, kOutOfRange };

/// Sets `number`, at its own precision, to the value of a decimal text ("1.5", "-2e-30", blanks are
/// skipped). The old value stays when the text is no number, and when it is one beyond the range of
/// range.h.
DecimalText SetFromDecimal(Mpf& number, const char* text);

}  // namespace arith
