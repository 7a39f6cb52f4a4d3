#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <mpfr.h>

#include "solve/fixed/columns.h"
#include "solve/fixed/wide_logs.h"

namespace varno::solve {

/// A number on its way from one series to another: the sum of digits[i] 2^(51 (exponent - 1 - i)),
/// i = 0..n, where n is the number of digits of a term. All digits are at most 2^50 in size.
template <int kMostDigits>
struct WideValue {
  std::array<std::int64_t, kMostDigits + 2> digits;  // only those up to n are ever looked at
  long exponent = 0;
  bool isZero = true;  ///< then the digits hold nothing
  /// Whether making this value dropped digits that were not zero: a zero is then no exact one.
  bool lost = false;
  /// Whether digits were dropped anywhere on the way to it.
  bool inexact = false;

  bool IsExactZero() const { return isZero && !lost; }
};

/// Arithmetic on series of fixed-point numbers with n balanced digits of 51 bits and one exponent,
/// in whole digits, for all terms of a series; for any precision up to the capacity
/// (docs/solve/fixed-point.md).
template <int kMostDigits>
class WideArithmetic {
 public:
  using Value = WideValue<kMostDigits>;
  using Factor = Value;
  using Terms = WideTerms;
  /// Each sum of products is computed by itself.
  struct Product {};
  struct SumWithSlope {
    Value sum, slope;
  };

  static constexpr int kDigitBits = kWideDigitBits;
  /// What the digits of a series have beyond its precision: 52 bits since exponents are in whole
  /// digits, and 5 for terms that are larger in the scale of a step than over the step; less the 13
  /// by which a term may be wrong by more than 2^-precision of it (BlockSeries::MissingBits).
  static constexpr int kBitsBeyond = 52 + 5 - 13;
  static constexpr mpfr_prec_t kMostBits = mpfr_prec_t{kMostDigits} * kDigitBits - kBitsBeyond;
  /// How many digits a precision takes, and up to which one they do.
  static constexpr int DigitsFor(mpfr_prec_t bits)
  {
    return static_cast<int>((bits + kBitsBeyond + kDigitBits - 1) / kDigitBits);
  }
  static constexpr mpfr_prec_t MostBitsWith(int digitCount)
  {
    return mpfr_prec_t{digitCount} * kDigitBits - kBitsBeyond;
  }
  static constexpr int kMostOrder = 2000;
  static constexpr long kMostExponent = 1L << 40;
  /// log2 of the units of the last digit that a term may be wrong by.
  static constexpr double kErrorBits = 8;
  /// Whether terms behind others, which count less over a step, have fewer digits.
  static constexpr bool kDropsDigits = true;

  explicit WideArithmetic(mpfr_prec_t bits);
  /// With this many digits and this kernel, for tests.
  WideArithmetic(int digitCount, const ColumnKernel& kernel) : n(digitCount), kernel(&kernel) {}

  double UnitLog2(long exponent) const { return static_cast<double>((exponent - n) * kDigitBits); }
  /// The exponent of a series with terms below 2^log2.
  static long ExponentFor(long log2);

  /// What a series has in use while its next terms are made, about: rows of the first and the
  /// latest eight, planes of these, and what is summed ahead.
  static double BytesInUse(mpfr_prec_t bits, int /*order*/)
  {
    return 600 + 280.0 * DigitsFor(bits);
  }
  /// A series in this memory, which must outlive it.
  static Terms TermsIn(std::pmr::memory_resource* memory) { return Terms(memory); }
  void Reserve(Terms& terms, int count) const { terms.Reserve(n, count); }
  /// Of series whose sums of products will be asked for, again and again.
  void PrepareForProducts(Terms& terms) const
  {
    if (kernel->readsTiles) terms.KeepTiles();
  }
  /// Of factors of products, where those of many series are more than a cache holds.
  void PrepareForRowsAhead(Terms& terms) const
  {
    if (kernel->readsTiles) terms.KeepPlanes();
  }
  /// What the digits of eight terms take of the memory then.
  std::size_t BytesOfTile() const { return DigitTiles::BytesOfTile(n); }
  static void Reset(Terms& terms, long leastExponent) { terms.Reset(leastExponent); }
  void Store(Terms& terms, int k, const Value& value) const;
  /// Whether that changes neither the exponent of the series nor whether it has one.
  static bool Fits(const Terms& terms, const Value& value);
  Value Load(const Terms& terms, int k) const;
  /// log2 of the terms from the first on, and the largest of these.
  static double FindLogs(const Terms& terms, int first, std::span<double> logs)
  {
    return wide::FindLogs(terms, first, logs);
  }

  Value FromNumber(mpfr_srcptr x) const;
  /// With a leading digit that is not 0.
  Factor ToFactor(const Value& value) const;
  void ToNumber(const Value& value, mpfr_ptr result) const;

  void Add(Value& sum, const Value& value) const;
  void Negate(Value& value) const;
  /// value *= 2^shift
  void Shift(Value& value, long shift) const;
  void Multiply(Value& value, const Factor& factor) const;
  /// value *= factor, |factor| <= kMostOrder
  void MultiplyBy(Value& value, int factor) const;
  /// The same for any factor.
  void MultiplyByWhole(Value& value, std::int32_t factor) const;
  /// value /= k, for 0 < k <= kMostOrder
  void DivideBy(Value& value, int k) const;

  /// Sum over j = first..last of a[j] b[k-j]
  Value Convolve(const Terms& a, const Terms& b, int first, int last, int k) const;
  /// Sum over j = first..k-first of a[j] a[k-j]
  Value ConvolveSelf(const Terms& a, int first, int k) const;

  /// The sum over k = 1..last of a[k] r^k, of a series that has lost digits, where 2^51 r is a
  /// whole number between 0 and 2^51.
  Value SumAt(std::int64_t fraction, const Terms& a, int last) const;
  /// The same with the sum of k a[k] r^(k-1).
  SumWithSlope SumAndSlopeAt(std::int64_t fraction, const Terms& a, int last) const;

 private:
  Value ValueOf(const std::int64_t* sum, const Terms& a) const;
  void Carry(Value& value) const;
  void MultiplyByDigit(Value& value, std::int64_t factor) const;
  void PushDown(Value& value, std::int64_t top) const;
  void SetSum(Value& sum, const Terms& a, const Terms& b) const;

  int n;
  const ColumnKernel* kernel;
};

extern template class WideArithmetic<8>;
extern template class WideArithmetic<24>;
extern template class WideArithmetic<42>;

}  // namespace varno::solve
