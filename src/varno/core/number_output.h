#pragma once

#include <ostream>

#include <gmp.h>

#include "arith/mpf.h"

namespace varno {

/// Writes a number in the one format of all output (format/number_format.h), governed by the
/// settings. The stream's fill character may be left at '0'.
std::ostream& WriteNumber(std::ostream& out, mpf_srcptr number);

inline std::ostream& operator<<(std::ostream& out, const arith::Mpf& number)
{
  return WriteNumber(out, number);
}

/// Manipulators that switch the plain form on and off.
std::ostream& PlainNumbersOn(std::ostream& out);
std::ostream& PlainNumbersOff(std::ostream& out);

}  // namespace varno
