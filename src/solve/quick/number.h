#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
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
inline double Log2Roughly(const Number& x)
{
  if (x == 0) return -std::numeric_limits<double>::infinity();
#if defined(__x86_64__)
  // The significand, with its leading 1, and behind it the exponent with the sign.
  std::uint64_t significand = 0;
  std::uint16_t exponent = 0;
  std::memcpy(&significand, &x, sizeof significand);
  std::memcpy(&exponent, reinterpret_cast<const char*>(&x) + sizeof significand, sizeof exponent);
  return (exponent & 0x7fff) - 16384 + static_cast<double>(significand >> 11) * 0x1p-52;
#else
  int exponent = 0;
  const auto fraction = static_cast<double>(std::fabs(std::frexp(x, &exponent)));
  return exponent - 2 + 2 * fraction;
#endif
}

/// A power of ten that the format holds, right to some units of the last bit.
Number PowerOfTen(int exponent);

inline Number ToNumber(mpfr_srcptr x)
{
  return mpfr_get_ld(x, MPFR_RNDN);
}

}  // namespace varno::solve::quick
