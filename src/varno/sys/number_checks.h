#pragma once

#include <gmp.h>

#include "arith/mpf.h"
#include "arith/range.h"
#include "arith/term_array.h"

namespace varno {

// What becomes of the reports of arith/ about numbers: messages that end the run.

/// Writes "#(ERR) A number is out of range: ..." and ends the process with status 1.
[[noreturn]] void FailOutOfRange();

/// Ends the run when x is out of range (arith/range.h).
inline void RequireRange(mpf_srcptr x)
{
  if (!arith::IsInRange(x)) FailOutOfRange();
}

/// Ends the run when x leaves no room for another factor (arith/range.h).
inline void RequireRoom(mpf_srcptr x)
{
  if (!arith::HasRoom(x)) FailOutOfRange();
}

/// Sets `number`, at its own precision, to the value of a decimal text. Returns false and keeps the
/// old value when the text is no number. Ends the run with "#(ERR) Number "TEXT" is out of range"
/// when the value is.
bool SetNumberFromText(arith::Mpf& number, const char* text);

/// An array of terms; ends the run with "#(ERR) Out of memory" when there is no room for it.
arith::TermArray MakeTermArray(int termCount);

}  // namespace varno
