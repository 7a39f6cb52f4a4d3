#pragma once

#include <limits>

#include <mpfr.h>

namespace varno::solve::quick {

/// What the quick runs compute with: the widest format of the hardware.
using Number = long double;

/// The bits of its significand that are asked for. Where a machine has fewer, or so many only by
/// software, nothing is solved quickly.
inline constexpr int kBits = 64;

/// The unit of the last bit of 1.
inline constexpr Number kUnit = 0x1p-63L;

/// Whether the machine computes with so many bits, here and now: the format may have them where an
/// emulator, or a setting of the processor, leaves fewer.
bool HasBits();

/// log2 |x| to within 0.09, -infinity for 0: the exponent, and the fraction for its logarithm.
double Log2Roughly(Number x);

/// A power of ten that the format holds, right to some units of the last bit.
Number PowerOfTen(int exponent);

inline Number ToNumber(mpfr_srcptr x)
{
  return mpfr_get_ld(x, MPFR_RNDN);
}

}  // namespace varno::solve::quick
