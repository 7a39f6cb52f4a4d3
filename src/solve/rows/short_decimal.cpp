#include "solve/rows/short_decimal.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace varno::solve {

namespace {

__extension__ using UInt128 = unsigned __int128;

constexpr int kWordBits = 64;
constexpr long kMostBits = 128;
/// 5^27 is the last power below 2^63.
constexpr int kMostFives = 27;
constexpr double kLog10Of2 = 0.30102999566398120;

template <std::size_t Count>
constexpr std::array<std::uint64_t, Count> PowersOf(std::uint64_t base)
{
  std::array<std::uint64_t, Count> powers{1};
  for (std::size_t i = 1; i < Count; ++i) powers[i] = powers[i - 1] * base;
  return powers;
}

constexpr auto kPowersOfFive = PowersOf<kMostFives + 1>(5);
constexpr auto kPowersOfTen = PowersOf<kMostShortDigits + 1>(10);

/// A product of 192 bits, without its last ones that stand for less than 1.
struct Truncated {
  std::uint64_t whole;
  bool half;  ///< the first bit of the rest
  bool more;  ///< whether there are others
};

/// mantissa * 5^fives / 2^down, for a result below 2^64 of a mantissa with its upper bit set.
Truncated Scaled(UInt128 mantissa, int fives, long down)
{
  const UInt128 power = kPowersOfFive[static_cast<std::size_t>(fives)];
  const UInt128 fromLow = static_cast<std::uint64_t>(mantissa) * power;
  const UInt128 high = (mantissa >> kWordBits) * power + (fromLow >> kWordBits);
  const auto low = static_cast<std::uint64_t>(fromLow);
  const long up = down - kWordBits;  // of high, which has no more than one word above
  if (up == 0)
    return {static_cast<std::uint64_t>(high), low >> (kWordBits - 1) != 0, low << 1 != 0};
  const UInt128 rest = high & ((static_cast<UInt128>(1) << (up - 1)) - 1);
  return {static_cast<std::uint64_t>(high >> up), (high >> (up - 1) & 1) != 0,
          rest != 0 || low != 0};
}

UInt128 MantissaOf(mpfr_srcptr x)
{
  const auto* words = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  if (mpfr_get_prec(x) <= kWordBits) return static_cast<UInt128>(words[0]) << kWordBits;
  return static_cast<UInt128>(words[1]) << kWordBits | words[0];
}

}  // namespace

std::optional<ShortDecimal> ShortDecimalOf(mpfr_srcptr x, int digits)
{
  if (digits > kMostShortDigits || mpfr_get_prec(x) > kMostBits) return std::nullopt;
  const mpfr_exp_t binary = mpfr_get_exp(x);  // |x| lies between 2^(binary-1) and 2^binary
  if (std::abs(binary) > kMostBits) return std::nullopt;
  // That of the first digit, or the one below.
  long exponent = static_cast<long>(std::floor(static_cast<double>(binary - 1) * kLog10Of2));
  const UInt128 mantissa = MantissaOf(x);
  const std::uint64_t limit = kPowersOfTen[static_cast<std::size_t>(digits)];
  for (;; ++exponent) {
    const long tens = digits - 1 - exponent;
    if (tens < 0 || tens > kMostFives) return std::nullopt;
    const Truncated scaled = Scaled(mantissa, static_cast<int>(tens), kMostBits - binary - tens);
    if (scaled.whole >= limit) continue;
    const bool isUp = scaled.half && (scaled.more || (scaled.whole & 1) != 0);
    const std::uint64_t rounded = scaled.whole + (isUp ? 1 : 0);
    if (rounded < limit) return ShortDecimal{rounded, exponent};
    return ShortDecimal{rounded / 10, exponent + 1};
  }
}

}  // namespace varno::solve
