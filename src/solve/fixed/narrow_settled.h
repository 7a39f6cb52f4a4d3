#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "solve/fixed/narrow_values.h"

namespace varno::solve {

/// A factor between two series whose exponents stay: units of the one are high + low 2^-60 units of
/// the other, times a constant.
///
/// A product of a term with it is two or three products of words, with no exponent to look at. The
/// product of both low digits, at most a quarter of a unit, is dropped.
struct NarrowRatio {
  std::int64_t high = 0, low = 0;

  /// |high| stays below 2^(60 + kMostBits).
  static constexpr long kMostBits = 2;
};

/// Sums of products of digits, of terms with terms or with ratios.
struct NarrowSums {
  Int128 highs = 0, crosses = 0;

  void Add(std::int64_t high, std::int64_t low, const NarrowRatio& ratio)
  {
    AddShort(high, low, ratio);
    crosses += static_cast<Int128>(high) * ratio.low;
  }
  /// The same for a mantissa of at most 2^122.
  void Add(Int128 mantissa, const NarrowRatio& ratio)
  {
    std::int64_t high = narrow::HighDigit(mantissa), low = narrow::LowDigit(mantissa);
    // g++ takes the digits for numbers of 128 bits otherwise, with three products of words each.
    asm("" : "+r"(high), "+r"(low));
    Add(high, low, ratio);
  }
  /// For a ratio with a low digit of 0.
  void AddShort(std::int64_t high, std::int64_t low, const NarrowRatio& ratio)
  {
    highs += static_cast<Int128>(high) * ratio.high;
    crosses += static_cast<Int128>(low) * ratio.high;
  }
  /// a[j] b[k-j] for j = first..last
  [[gnu::always_inline]] static NarrowSums OfProducts(const NarrowTerms& a, const NarrowTerms& b,
                                                      int first, int last, int k);
  /// a[j] a[k-j] for j = first..k-first
  [[gnu::always_inline]] static NarrowSums OfProducts(const NarrowTerms& a, int first, int k);

  /// In units of the operands' product, to nearest.
  Int128 Total() const { return highs + ((crosses + narrow::kDigit / 2) >> narrow::kDigitBits); }
};

inline NarrowSums NarrowSums::OfProducts(const NarrowTerms& a, const NarrowTerms& b, int first,
                                         int last, int k)
{
  const std::int64_t *aHigh = a.high.data() + first, *aLow = a.low.data() + first;
  const std::int64_t *bHigh = b.high.data() + (k - first), *bLow = b.low.data() + (k - first);
  // Locals: the sums stay in registers.
  Int128 highSum = 0, crossSum = 0;
  const auto add = [&](std::ptrdiff_t j) {
    const std::int64_t high = aHigh[j], other = bHigh[-j];
    highSum += static_cast<Int128>(high) * other;
    crossSum += static_cast<Int128>(high) * bLow[-j];
    crossSum += static_cast<Int128>(other) * aLow[j];
  };
  const std::ptrdiff_t count = last - first + 1;
  std::ptrdiff_t j = 0;
  for (; j < count - 1; j += 2) {
    add(j);
    add(j + 1);
  }
  if (j < count) add(j);
  return {highSum, crossSum};
}

inline NarrowSums NarrowSums::OfProducts(const NarrowTerms& a, int first, int k)
{
  NarrowSums sums = OfProducts(a, a, first, k > 0 ? (k - 1) / 2 : -1, k);
  sums.highs *= 2;
  sums.crosses *= 2;
  if (k % 2 == 0 && k / 2 >= first) {
    const std::int64_t high = a.high[k / 2];
    sums.highs += static_cast<Int128>(high) * high;
    sums.crosses += 2 * (static_cast<Int128>(high) * a.low[k / 2]);
  }
  return sums;
}

namespace narrow {

/// Whether terms can be stored with such a shift; nearly all can.
inline bool IsShift(long up)
{
  return up > -64 && up <= kMostUp;
}

/// log2 of a bound of the ratio that a factor makes between series with these exponents.
inline long RatioBits(const NarrowFactor& factor, long from, long to)
{
  return factor.exponent + from - to;
}

/// That ratio to nearest, in units of 2^up, where RatioBits - up <= kMostBits.
NarrowRatio RatioIn(const NarrowFactor& factor, long from, long to, long up);

/// The ratio digits * 2^-120.
constexpr NarrowRatio RatioOf(Int128 digits)
{
  NarrowRatio ratio;
  ratio.low = LowDigit(digits);
  ratio.high = HighDigit(digits);
  return ratio;
}

/// 1/k in its place, k > 0, to nearest.
constexpr std::array<NarrowRatio, kMostOrder + 1> Reciprocals()
{
  std::array<NarrowRatio, kMostOrder + 1> reciprocals;
  for (int k = 1; k <= kMostOrder; ++k) {
    reciprocals[static_cast<std::size_t>(k)] =
        RatioOf(((static_cast<Int128>(1) << (2 * kDigitBits)) + k / 2) / k);
  }
  return reciprocals;
}

inline constexpr std::array<NarrowRatio, kMostOrder + 1> kReciprocals = Reciprocals();

/// A shift by a power of 2 with which sums are stored as terms.
struct TermShift {
  int up = 0;
  /// 2^up, or for a shift to the right what rounds to nearest.
  std::uint64_t factor = 1;
  /// What fits is below 2^64 times this.
  std::uint64_t limit = std::uint64_t{1} << (kTermBits - 64);

  constexpr TermShift() = default;
  /// Of -64 < up <= kMostUp.
  constexpr explicit TermShift(int up)
      : up(up),
        factor(std::uint64_t{1} << (up < 0 ? -up - 1 : up)),
        limit(std::uint64_t{1} << std::min(kTermBits - 64 - up, 62))
  {}
};

/// Stores mantissa 2^shift.up units, rounded to nearest, as a term of a series that has its
/// exponent and has lost bits, or loses some by this term. False, and nothing is stored, if it is 0
/// or does not fit.
[[gnu::always_inline]] inline bool StoreSettled(NarrowTerms& terms, int k, Int128 mantissa,
                                                const TermShift& shift)
{
  const auto top = static_cast<std::uint64_t>(mantissa >> 64);
  if (mantissa == 0 || top + shift.limit >= 2 * shift.limit) return false;
  if (shift.up < 0) {
    mantissa = (mantissa + shift.factor) >> (static_cast<unsigned>(-shift.up) & 63);
  } else if (shift.up > 0) {
    // By words: a product of 128 bits takes a third one, a shift through memory as long.
    const UInt128 low = static_cast<UInt128>(static_cast<std::uint64_t>(mantissa)) * shift.factor;
    const std::uint64_t high = static_cast<std::uint64_t>(low >> 64) + top * shift.factor;
    mantissa =
        static_cast<Int128>((static_cast<UInt128>(high) << 64) | static_cast<std::uint64_t>(low));
  }
  SetDigits(terms, k, mantissa);
  terms.exactZero[k] = 0;
  terms.inexact = true;
  return true;
}

}  // namespace narrow

/// Stores a whole number, |whole| < 2^8, times term k of another series as a term of a settled one.
/// False, and nothing is stored, if that one is not settled or the term 0 or too large.
inline bool StoreSettledMultiple(NarrowTerms& terms, int m, int whole, const NarrowTerms& from,
                                 int k)
{
  const long up = from.exponent - terms.exponent;
  // Digit by digit: the product of a mantissa takes three products of words.
  const Int128 high = static_cast<Int128>(from.high[k]) * whole;
  const Int128 low = static_cast<Int128>(from.low[k]) * whole;
  return terms.IsSettled() && narrow::IsShift(up) &&
         narrow::StoreSettled(terms, m, high * narrow::kDigit + low,
                              narrow::TermShift(static_cast<int>(up)));
}

/// Stores the terms before the first, which is there, each the product of the one behind it with a
/// factor, as long as they are not 0 and fit; returns how many.
int StoreSettledPowers(NarrowTerms& terms, int first, const NarrowFactor& factor);

}  // namespace varno::solve
