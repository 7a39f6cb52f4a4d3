#include "solve/fixed/sine.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>

#include "solve/fixed/int128.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kMostBits = 110;
/// Exponents of MPFR's of arguments and of the least results.
constexpr mpfr_exp_t kLeastExponent = -8, kMostExponent = 12, kLeastOfResult = -5;

/// The upper 128 bits of a product, at most 2 too small.
constexpr UInt128 UpperProduct(UInt128 a, UInt128 b)
{
  const auto aHigh = static_cast<std::uint64_t>(a >> 64), aLow = static_cast<std::uint64_t>(a);
  const auto bHigh = static_cast<std::uint64_t>(b >> 64), bLow = static_cast<std::uint64_t>(b);
  return static_cast<UInt128>(aHigh) * bHigh + (static_cast<UInt128>(aHigh) * bLow >> 64) +
         (static_cast<UInt128>(aLow) * bHigh >> 64);
}

/// pi/64, in units of 2^-192.
constexpr std::array<std::uint64_t, 3> kStep = {0x129024e088a67cc7, 0x4c4c6628b80dc1cd,
                                                0x0c90fdaa22168c23};
constexpr int kStepsOfQuadrant = 32;

/// 1/n!, in units of 2^-128, n > 1.
template <std::size_t kCount>
constexpr std::array<UInt128, kCount> InverseFactorials()
{
  std::array<UInt128, kCount> inverses{};
  UInt128 inverse = static_cast<UInt128>(1) << 127;
  for (std::size_t n = 2; n < kCount; ++n) {
    inverses[n] = inverse;
    inverse = (inverse + (n + 1) / 2) / (n + 1);
  }
  return inverses;
}

constexpr auto kInverseFactorials = InverseFactorials<40>();

/// Sum over n = first, first + 2, ... up to last of (-1)^n' x^(n - first)/n!, from the square of x,
/// in units of 2^-128, n' counting from 0.
template <std::size_t kFirst, std::size_t kLast>
constexpr UInt128 Series(UInt128 square)
{
  UInt128 sum = kInverseFactorials[kLast];
  for (std::size_t n = kLast; n > kFirst; n -= 2)
    sum = kInverseFactorials[n - 2] - UpperProduct(square, sum);
  return sum;
}

/// sin(i pi/64), i = 0..32, in units of 2^-127.
constexpr std::array<UInt128, kStepsOfQuadrant + 1> Sines()
{
  std::array<UInt128, kStepsOfQuadrant + 1> sines{};
  for (int i = 0; i <= kStepsOfQuadrant / 2; ++i) {
    // x = i pi/64 <= pi/4
    const UInt128 fraction = (static_cast<UInt128>(kStep[2]) << 64) | kStep[1];
    const UInt128 rest = (static_cast<UInt128>(kStep[0]) * static_cast<unsigned>(i)) >> 64;
    const UInt128 x = fraction * static_cast<unsigned>(i) + rest, square = UpperProduct(x, x);
    // x - x^3 (1/3! - ...), 1 - x^2 (1/2! - ...)
    const UInt128 cube = UpperProduct(square, x);
    sines[static_cast<std::size_t>(i)] = (x - UpperProduct(cube, Series<3, 37>(square)) + 1) / 2;
    sines[static_cast<std::size_t>(kStepsOfQuadrant - i)] =
        (static_cast<UInt128>(1) << 127) - UpperProduct(square, Series<2, 38>(square)) / 2;
  }
  return sines;
}

constexpr auto kSines = Sines();

/// 2^128 times the fractional part of |a|.
UInt128 FractionOf(mpfr_srcptr a)
{
  const auto* limbs = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(a));
  const std::ptrdiff_t last = (mpfr_get_prec(a) - 1) / 64;
  UInt128 digits = static_cast<UInt128>(limbs[last]) << 64;
  if (last > 0) digits |= limbs[last - 1];
  const mpfr_exp_t exponent = mpfr_get_exp(a);
  return exponent < 0 ? digits >> -exponent : digits << exponent;
}

/// 2^128 times the fractional part of i pi/64.
UInt128 FractionOfSteps(std::uint64_t i)
{
  const UInt128 low = static_cast<UInt128>(kStep[0]) * i;
  const UInt128 middle = static_cast<UInt128>(kStep[1]) * i + (low >> 64);
  const UInt128 high = static_cast<UInt128>(kStep[2]) * i + (middle >> 64);
  return (high << 64) | static_cast<std::uint64_t>(middle);
}

struct Pair {
  Int128 sine, cosine;  // in units of 2^-127
};

/// Of an angle in the first quadrant, that many steps plus d, |d| <= pi/128.
Pair OfSum(std::size_t steps, Int128 d)
{
  const UInt128 sine = kSines[steps], cosine = kSines[kStepsOfQuadrant - steps];
  const bool isNegative = d < 0;
  const auto size = static_cast<UInt128>(isNegative ? -d : d);
  const UInt128 square = UpperProduct(size, size);
  // 1 - cos(d) and |sin(d)|
  const UInt128 loss = UpperProduct(square, Series<2, 16>(square));
  const UInt128 small = size - UpperProduct(UpperProduct(square, size), Series<3, 15>(square));
  const auto change = [&](UInt128 of, UInt128 other) {
    const auto grown = static_cast<Int128>(UpperProduct(other, small));
    return std::pair(static_cast<Int128>(of - UpperProduct(of, loss)), isNegative ? -grown : grown);
  };
  const auto [keptSine, fromCosine] = change(sine, cosine);
  const auto [keptCosine, fromSine] = change(cosine, sine);
  return {keptSine + fromCosine, keptCosine - fromSine};
}

/// The same beyond that many quadrants.
Pair Turned(const Pair& pair, std::uint64_t quadrants)
{
  switch (quadrants % 4) {
    case 1:
      return {pair.cosine, -pair.sine};
    case 2:
      return {-pair.sine, -pair.cosine};
    case 3:
      return {-pair.cosine, pair.sine};
    default:
      return pair;
  }
}

bool IsLargeEnough(Int128 x)
{
  return BitLength(x) >= 127 + kLeastOfResult;
}

void SetTo(mpfr_ptr result, Int128 x)
{
  const int length = BitLength(x);
  const UInt128 size = static_cast<UInt128>(x < 0 ? -x : x) << (128 - length);
  mp_limb_t limbs[2] = {static_cast<mp_limb_t>(size), static_cast<mp_limb_t>(size >> 64)};
  mpfr_t number;
  mpfr_custom_init_set(number, x < 0 ? -MPFR_REGULAR_KIND : MPFR_REGULAR_KIND, length - 127, 128,
                       limbs);
  mpfr_set(result, number, MPFR_RNDN);
}

}  // namespace

bool SetSineAndCosine(mpfr_ptr sine, mpfr_ptr cosine, mpfr_srcptr a)
{
  if (mpfr_get_prec(sine) > kMostBits || mpfr_get_prec(cosine) > kMostBits ||
      mpfr_get_prec(a) > kMostBits || mpfr_regular_p(a) == 0 || mpfr_get_exp(a) < kLeastExponent ||
      mpfr_get_exp(a) > kMostExponent)
    return false;
  const bool isNegative = mpfr_signbit(a) != 0;
  const double size = std::abs(mpfr_get_d(a, MPFR_RNDN));
  const auto steps = static_cast<std::uint64_t>(std::lround(size * (64 / std::numbers::pi)));
  const auto rest = static_cast<Int128>(FractionOf(a) - FractionOfSteps(steps));
  const Pair inQuadrant = OfSum(steps % kStepsOfQuadrant, rest);
  // Where neither is small, none is 1 either, which an Int128 does not hold.
  if (!IsLargeEnough(inQuadrant.sine) || !IsLargeEnough(inQuadrant.cosine)) return false;
  const Pair pair = Turned(inQuadrant, steps / kStepsOfQuadrant);
  SetTo(sine, isNegative ? -pair.sine : pair.sine);
  SetTo(cosine, pair.cosine);
  mpfr_set_inexflag();
  return true;
}

}  // namespace varno::solve
