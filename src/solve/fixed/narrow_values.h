#pragma once

#include <cstdint>
#include <memory_resource>
#include <vector>

#include "solve/fixed/int128.h"

namespace varno::solve {

/// A number on its way from one series to another: mantissa * 2^(exponent - 120).
///
/// |mantissa| is at most 2^122.
struct NarrowValue {
  Int128 mantissa = 0;
  long exponent = 0;
  /// Whether making this value dropped bits that were not zero: a mantissa 0 is then no exact 0.
  bool lost = false;
  /// Whether bits were dropped anywhere on the way to it.
  bool inexact = false;

  bool IsExactZero() const { return mantissa == 0 && !lost; }
};

/// A constant factor: mantissa as two balanced 60-bit digits, high * 2^60 + low.
struct NarrowFactor {
  std::int64_t high = 0, low = 0;
  long exponent = 0;
  bool inexact = false;
};

/// The terms of one series: 120-bit fixed-point numbers with one exponent for all.
///
/// Term k is (high[k] 2^60 + low[k]) 2^(exponent - 120), |term| <= 2^(exponent - 1), so that
/// |high| <= 2^59 and |low| <= 2^59. The exponent is chosen at the first term that is not zero and
/// grows, while the terms there are shifted, when a term does not fit.
struct NarrowTerms {
  std::pmr::vector<std::int64_t> high, low;
  /// Whether a term is 0, not merely too small to be seen.
  std::pmr::vector<std::uint8_t> exactZero;
  long exponent = 0;
  /// Where the exponent begins at least, from what is known of the series.
  long leastExponent = 0;
  bool started = false;
  bool inexact = false;
  bool hasLow = false;  ///< whether any low digit was ever not 0

  /// Whether a term that follows is no more than its digits, as long as it is not 0 and fits: the
  /// series has its exponent, and has lost bits.
  bool IsSettled() const { return started && inexact; }
};

/// Has the first `count` terms come from the memory while other work is done.
inline void SendFor(const NarrowTerms& terms, int count)
{
  constexpr int kInACacheLine = 8;
  for (int k = 0; k < count; k += kInACacheLine) {
    __builtin_prefetch(&terms.high[static_cast<std::size_t>(k)]);
    __builtin_prefetch(&terms.low[static_cast<std::size_t>(k)]);
  }
}

/// The first `count` terms of a series.
inline NarrowTerms CopyOf(const NarrowTerms& terms, int count)
{
  return {.high = {terms.high.begin(), terms.high.begin() + count},
          .low = {terms.low.begin(), terms.low.begin() + count},
          .exactZero = {terms.exactZero.begin(), terms.exactZero.begin() + count},
          .exponent = terms.exponent,
          .leastExponent = terms.leastExponent,
          .started = terms.started,
          .inexact = terms.inexact,
          .hasLow = terms.hasLow};
}

namespace narrow {

/// Takes the place of a flag that nobody asks for.
struct Unnoted {
  constexpr Unnoted& operator|=(bool /*flag*/) { return *this; }
};

/// Sums of products stay below 2^126 up to here.
inline constexpr int kMostOrder = 199;
/// Shifts to the left by more than this are rare: they are stored apart.
inline constexpr long kMostUp = 50;
inline constexpr int kDigitBits = 60;
inline constexpr Int128 kDigit = static_cast<Int128>(1) << kDigitBits;
/// Terms are below 2^119, so that high digits are at most 2^59.
inline constexpr int kTermBits = 119;
/// Values on the way are at most 2^122, so that the high digit fits a word when a low one of -1 is
/// taken off; a sum of two fits easily.
inline constexpr int kValueBits = 122;

/// The low digit, between -2^59 and 2^59 - 1.
constexpr std::int64_t LowDigit(Int128 mantissa)
{
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(mantissa) << (64 - kDigitBits)) >>
         (64 - kDigitBits);
}

/// What is left of it: (mantissa - LowDigit(mantissa)) / 2^60.
constexpr std::int64_t HighDigit(Int128 mantissa)
{
  return static_cast<std::int64_t>((mantissa + kDigit / 2) >> kDigitBits);
}

constexpr Int128 Joined(std::int64_t high, std::int64_t low)
{
  return static_cast<Int128>(high) * kDigit + low;
}

/// Sets the digits of a term, |mantissa| <= 2^119.
[[gnu::always_inline]] inline void SetDigits(NarrowTerms& terms, int k, Int128 mantissa)
{
  terms.low[k] = LowDigit(mantissa);
  terms.high[k] = HighDigit(mantissa);
}

/// Whether -2^bits <= mantissa < 2^bits, for 64 <= bits < 127.
inline bool FitsBits(Int128 mantissa, int bits)
{
  const std::int64_t above = static_cast<std::int64_t>(mantissa >> 64) >> (bits - 64);
  return above == 0 || above == -1;
}

/// mantissa / 2^shift to nearest, 0 < shift < 64; tells whether bits were lost.
template <class Flag>
[[gnu::always_inline]] inline Int128 ShiftRightBelowWord(Int128 mantissa, long shift, Flag& lost)
{
  lost |= (static_cast<std::uint64_t>(mantissa) << (64 - shift)) != 0;
  // The mask tells the compiler that the count is below a word.
  const unsigned count = static_cast<unsigned>(shift - 1) & 63;
  return ((mantissa >> count) + 1) >> 1;
}

/// mantissa 2^shift, 0 <= shift < 64, where that fits.
[[gnu::always_inline]] inline Int128 ShiftLeftBelowWord(Int128 mantissa, int shift)
{
  // By words: g++ goes through memory otherwise.
  const unsigned count = static_cast<unsigned>(shift) & 63;
  const auto low = static_cast<std::uint64_t>(mantissa);
  const auto high = static_cast<std::uint64_t>(mantissa >> 64);
  const std::uint64_t top = (high << count) | ((low >> 1) >> (63 - count));
  return static_cast<Int128>((static_cast<UInt128>(top) << 64) | (low << count));
}

/// mantissa / 2^shift for any shift > 0.
template <class Flag>
inline Int128 ShiftRight(Int128 mantissa, long shift, Flag& lost)
{
  // Nearly all shifts are below one word, which takes a third of the instructions.
  if (shift < 64) return ShiftRightBelowWord(mantissa, shift, lost);
  if (shift > 126) {
    lost |= mantissa != 0;
    return 0;
  }
  const Int128 unit = static_cast<Int128>(1) << shift;
  lost |= (mantissa & (unit - 1)) != 0;
  return (mantissa + (unit >> 1)) >> shift;
}

inline void KeepBelowLimit(NarrowValue& value)
{
  if (FitsBits(value.mantissa, kValueBits)) return;
  value.mantissa = ShiftRight(value.mantissa, 4, value.lost);
  value.exponent += 4;
}

/// The sum of the products of high digits, and of high with low digits, as one value.
inline NarrowValue ValueOf(Int128 highs, Int128 crosses, long exponent)
{
  NarrowValue value;
  value.mantissa = highs + ShiftRight(crosses, kDigitBits, value.lost);
  value.exponent = exponent;
  KeepBelowLimit(value);
  return value;
}

}  // namespace narrow

}  // namespace varno::solve
