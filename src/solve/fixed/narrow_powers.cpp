#include "solve/fixed/narrow_powers.h"

#include <bit>
#include <cstddef>

#include "solve/fixed/narrow_settled.h"

namespace varno::solve {

using namespace narrow;

namespace {

constexpr int kWordBits = 64;
constexpr int kPowerBits = 118;
/// Of the exponent of a series, for powers.
constexpr long kPowerExponent = 2L * kDigitBits - kPowerBits;

/// 2^64 x, 0 if that is not a whole number between 0 and 2^64.
std::uint64_t FractionOf(mpfr_srcptr x)
{
  if (mpfr_regular_p(x) == 0 || mpfr_signbit(x) != 0) return 0;
  const mpfr_exp_t exponent = mpfr_get_exp(x);
  if (exponent > 0 || exponent <= -kWordBits) return 0;
  const auto* limbs = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  const mpfr_prec_t last = (mpfr_get_prec(x) - 1) / kWordBits;
  for (mpfr_prec_t i = 0; i < last; ++i) {
    if (limbs[i] != 0) return 0;
  }
  const std::uint64_t first = limbs[last], fraction = first >> -exponent;
  return fraction << -exponent == first ? fraction : 0;
}

/// x fraction 2^-64, rounded down, for x >= 0.
Int128 Times(Int128 x, std::uint64_t fraction)
{
  const auto low = static_cast<std::uint64_t>(x), high = static_cast<std::uint64_t>(x >> kWordBits);
  const UInt128 fromLow = static_cast<UInt128>(low) * fraction;
  const UInt128 fromHigh = static_cast<UInt128>(high) * fraction;
  return static_cast<Int128>(fromHigh + static_cast<std::uint64_t>(fromLow >> kWordBits));
}

/// A sum below 2^127 as a value.
NarrowValue InexactValue(Int128 sum, long exponent)
{
  NarrowValue value{sum, exponent, true, true};
  if (FitsBits(sum, kValueBits)) return value;
  constexpr int kMore = 127 - kValueBits;
  value.mantissa = ShiftRightBelowWord(sum, kMore, value.lost);
  value.exponent += kMore;
  return value;
}

}  // namespace

bool NarrowPowers::Set(mpfr_srcptr r, int last)
{
  const std::uint64_t wanted = FractionOf(r);
  const auto count = static_cast<std::size_t>(last);
  if (wanted == 0) return false;
  if (wanted == fraction && high.size() >= count) return true;
  fraction = wanted;
  if (high.size() < count) {
    high.resize(count);
    low.resize(count);
  }
  Int128 power = static_cast<Int128>(1) << kPowerBits;
  for (std::size_t j = 0; j < high.size(); ++j) {
    high[j] = HighDigit(power);
    low[j] = LowDigit(power);
    power = Times(power, wanted);
  }
  return true;
}

/// r sum, for what is summed of the powers from 0 on.
NarrowValue NarrowPowers::TimesOffset(Int128 sum, long exponent) const
{
  // All digits of small offsets count.
  const int up = std::countl_zero(fraction);
  const Int128 product = Times(sum < 0 ? -sum : sum, fraction << up);
  return InexactValue(sum < 0 ? -product : product, exponent - up);
}

NarrowValue NarrowPowers::Sum(const NarrowTerms& a, int last) const
{
  const std::int64_t *const aHigh = a.high.data() + 1, *const aLow = a.low.data() + 1;
  const std::int64_t *const rHigh = high.data(), *const rLow = low.data();
  Int128 highs = 0, crosses = 0;
  for (std::ptrdiff_t j = 0; j < last; ++j) {
    highs += static_cast<Int128>(aHigh[j]) * rHigh[j];
    crosses += static_cast<Int128>(aHigh[j]) * rLow[j];
    crosses += static_cast<Int128>(aLow[j]) * rHigh[j];
  }
  return TimesOffset(NarrowSums{highs, crosses}.Total(), a.exponent + kPowerExponent);
}

NarrowPowers::SumWithSlope NarrowPowers::SumAndSlope(const NarrowTerms& a, int last) const
{
  // The sum over k of k products is that over all j of the products from j on. Products of high
  // digits are below 2^117, crosses below 2^119: 990 of them stay below 2^127, and upper bits of
  // crosses below 2^61.
  constexpr int kCrossUnitBits = kWordBits + 4;
  const std::int64_t *const aHigh = a.high.data() + 1, *const aLow = a.low.data() + 1;
  const std::int64_t *const rHigh = high.data(), *const rLow = low.data();
  Int128 highs = 0, crosses = 0, slopeHighs = 0;
  std::int64_t slopeCrosses = 0;
  for (std::ptrdiff_t j = last - 1; j >= 0; --j) {
    highs += static_cast<Int128>(aHigh[j]) * rHigh[j];
    crosses += static_cast<Int128>(aHigh[j]) * rLow[j];
    crosses += static_cast<Int128>(aLow[j]) * rHigh[j];
    slopeHighs += highs;
    slopeCrosses += static_cast<std::int64_t>(crosses >> kWordBits) >> (kCrossUnitBits - kWordBits);
  }
  const long exponent = a.exponent + kPowerExponent;
  const Int128 slope =
      slopeHighs + static_cast<Int128>(slopeCrosses) * (1 << (kCrossUnitBits - kDigitBits));
  return {TimesOffset(NarrowSums{highs, crosses}.Total(), exponent), InexactValue(slope, exponent)};
}

}  // namespace varno::solve
