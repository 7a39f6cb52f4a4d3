#pragma once

#include <cstdint>
#include <vector>

#include <mpfr.h>

#include "solve/fixed/int128.h"

namespace varno::solve {

/// A number on its way from one series to another: mantissa * 2^(exponent - 120).
///
/// |mantissa| stays below 2^123.
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
/// Term k is (high[k] 2^60 + low[k]) 2^(exponent - 120), |term| < 2^(exponent - 1), so that
/// |high| <= 2^59 and |low| <= 2^59. The exponent is chosen at the first term that is not zero and
/// grows, while the terms there are shifted, when a term does not fit.
struct NarrowTerms {
  std::vector<std::int64_t> high, low;
  /// Whether a term is 0, not merely too small to be seen.
  std::vector<std::uint8_t> exactZero;
  long exponent = 0;
  /// Where the exponent begins at least, from what is known of the series.
  long leastExponent = 0;
  bool started = false;
  bool inexact = false;
  bool hasLow = false;  ///< whether any low digit was ever not 0
};

/// Arithmetic on series of about 36 digits, for orders up to 200 (docs/solve/fixed-point.md).
class NarrowArithmetic {
 public:
  using Value = NarrowValue;
  using Factor = NarrowFactor;
  using Terms = NarrowTerms;

  static constexpr int kFractionBits = 120;
  /// Bits of the largest term of a series: the exponent leaves two of them empty.
  static constexpr mpfr_prec_t kMostBits = kFractionBits - 2;
  /// Sums of products stay below 2^126 up to here.
  static constexpr int kMostOrder = 199;
  static constexpr long kMostExponent = 1L << 40;

  explicit NarrowArithmetic(mpfr_prec_t /*bits*/) {}

  /// log2 of the units of the last bit that a term may be wrong by: a quarter for each product.
  static constexpr double kErrorBits = 6;

  /// log2 of the unit of a series with this exponent.
  static double UnitLog2(long exponent) { return static_cast<double>(exponent - kFractionBits); }
  /// The exponent of a series with terms below 2^log2.
  static long ExponentFor(long log2) { return log2 + 2; }

  static void Reserve(Terms& terms, int count);
  static void Reset(Terms& terms, long leastExponent);
  static void Store(Terms& terms, int k, const Value& value);
  static Value Load(const Terms& terms, int k);
  static double Log2(const Terms& terms, int k);

  static Value FromNumber(mpfr_srcptr x);
  static Factor ToFactor(const Value& value);
  static void ToNumber(const Value& value, mpfr_ptr result);

  static void Add(Value& sum, const Value& value);
  static void Negate(Value& value) { value.mantissa = -value.mantissa; }
  /// value *= 2^shift
  static void Shift(Value& value, long shift) { value.exponent += shift; }
  static void Multiply(Value& value, const Factor& factor);
  /// value *= factor, |factor| < 2^15
  static void MultiplyBy(Value& value, int factor);
  /// The same for any factor.
  static void MultiplyByWhole(Value& value, std::int32_t factor);
  /// value /= k, for 0 < k <= kMostOrder
  void DivideBy(Value& value, int k);

  /// Sum over j = first..last of a[j] b[k-j]
  static Value Convolve(const Terms& a, const Terms& b, int first, int last, int k);
  /// Sum over j = first..k-first of a[j] a[k-j]
  static Value ConvolveSelf(const Terms& a, int first, int k);

 private:
  std::vector<Factor> reciprocals;  // of 1, 2, 3, ..., as far as they were needed
};

}  // namespace varno::solve
