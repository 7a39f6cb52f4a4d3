#pragma once

#include <ostream>

#include <gmp.h>

#include "arith/mpf.h"

namespace varno {

using arith::Mpf;

/// Writes a number in the one format of all output, governed by the settings: in the exponent form
/// " 1.50000000000e+00" (or, with `_FMT_FLAG` off, the fixed-point form), or in the plain form
/// " 0.15e1" while PlainNumbersOn is in force. The stream's fill character may be left at '0'.
std::ostream& WriteNumber(std::ostream& out, mpf_srcptr number);

inline std::ostream& operator<<(std::ostream& out, const Mpf& number)
{
  return WriteNumber(out, number);
}

/// Manipulators that switch the plain form on and off.
std::ostream& PlainNumbersOn(std::ostream& out);
std::ostream& PlainNumbersOff(std::ostream& out);

}  // namespace varno
