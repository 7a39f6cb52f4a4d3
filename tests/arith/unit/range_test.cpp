#include "arith/range.h"

#include <gtest/gtest.h>

#include "arith/mpf.h"

namespace arith {
namespace {

/// 2^bits or 2^-bits; each limb of the exponent is 64 bits.
Mpf PowerOfTwo(long bits)
{
  Mpf power(1.0);
  if (bits >= 0) {
    mpf_mul_2exp(power, power, static_cast<mp_bitcnt_t>(bits));
  } else {
    mpf_div_2exp(power, power, static_cast<mp_bitcnt_t>(-bits));
  }
  return power;
}

TEST(IsInRange, HoldsForOrdinaryNumbersAndZero)
{
  for (const char* text : {"0", "1", "-1", "1e1000000", "-1e-1000000"}) {
    EXPECT_TRUE(IsInRange(Mpf(text))) << text;
  }
}

TEST(IsInRange, EndsWhereTheExponentPasses10To15)
{
  // 10^15 decimal digits are 3.3219e15 bits, and the check counts limbs of 19 digits, so that it
  // looks a little further than their 64 bits would.
  EXPECT_TRUE(IsInRange(PowerOfTwo(3'321'000'000'000'000)));
  EXPECT_TRUE(IsInRange(PowerOfTwo(-3'321'000'000'000'000)));
  EXPECT_FALSE(IsInRange(PowerOfTwo(3'369'000'000'000'000)));
  EXPECT_FALSE(IsInRange(PowerOfTwo(-3'369'000'000'000'000)));
}

}  // namespace
}  // namespace arith
