#include "solve/quick/rounding.h"

#include <cmath>

namespace varno::solve::quick {

namespace {

constexpr Number kMostUnits = 1 / 40.0L;
/// What bringing the number to units of its last digit may add, in parts of it.
constexpr Number kScaling = 64 * kUnit;
constexpr Number kLog10Of2 = 0.30102999566398119521L;

}  // namespace

bool IsRoundingKnown(Number value, Number uncertainty, int digits)
{
  const Number size = std::fabs(value);
  int exponent = 0;
  std::frexp(size, &exponent);
  // 10^floor(log10 size) or the power below it
  int decimal = static_cast<int>(std::floor(static_cast<Number>(exponent - 1) * kLog10Of2));
  const Number limit = PowerOfTen(digits);
  Number factor = PowerOfTen(digits - 1 - decimal);
  if (size * factor >= limit) factor = PowerOfTen(digits - 1 - ++decimal);
  const Number units = size * factor;
  const Number unknown = uncertainty * factor + units * kScaling;
  // Not <: that is false of what is no number.
  if (!(unknown <= kMostUnits)) return false;
  return std::fabs(units - std::floor(units) - 0.5L) > unknown;
}

}  // namespace varno::solve::quick
