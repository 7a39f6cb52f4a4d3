#pragma once

#include <cstdint>
#include <optional>

#include <mpfr.h>

namespace varno::solve {

/// A magnitude rounded to some decimal digits: `digits`, read as an integer of just so many digits
/// with a point behind the first, times 10^exponent.
struct ShortDecimal {
  std::uint64_t digits;
  long exponent;
};

/// Of the numbers that ShortDecimalOf rounds, the most digits.
inline constexpr int kMostShortDigits = 18;

/// |x| to nearest, and to even where it lies in the middle, as mpfr_get_str rounds it, by products
/// of 128 bits. None where that takes more: for more than kMostShortDigits digits or 128 bits, and
/// beyond about 10^(digits - 27) <= |x| < 10^digits. `digits` is 1 or more, x a number other than
/// 0.
std::optional<ShortDecimal> ShortDecimalOf(mpfr_srcptr x, int digits);

}  // namespace varno::solve
