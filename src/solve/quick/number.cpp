#include "solve/quick/number.h"

#include <cmath>

namespace varno::solve::quick {

namespace {

/// The largest power of ten that 64 bits hold exactly.
constexpr int kMostExact = 27;

Number ExactPowerOfTen(int exponent)
{
  Number power = 1;
  for (int i = 0; i < exponent; ++i) power *= 10;
  return power;
}

}  // namespace

bool HasBits()
{
  if (std::numeric_limits<Number>::digits != kBits) return false;
  // Not by the compiler, which knows the format only.
  volatile Number one = 1, little = kUnit;
  volatile Number sum = one + little;
  return sum != one;
}

Number PowerOfTen(int exponent)
{
  static const Number kLargest = ExactPowerOfTen(kMostExact);
  const int size = std::abs(exponent);
  Number power = ExactPowerOfTen(size % kMostExact);
  for (int i = 0; i < size / kMostExact; ++i) power *= kLargest;
  return exponent < 0 ? 1 / power : power;
}

}  // namespace varno::solve::quick
