#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include <mpfr.h>

#include "solve/fixed/narrow_logs.h"
#include "solve/fixed/narrow_values.h"

namespace varno::solve {

/// Arithmetic on series of about 36 digits, for orders up to 200 (docs/solve/fixed-point.md).
class NarrowArithmetic {
 public:
  using Value = NarrowValue;
  using Factor = NarrowFactor;
  using Terms = NarrowTerms;
  /// Each sum of products is computed by itself.
  struct Product {};

  static constexpr int kFractionBits = 120;
  /// Bits of the largest term of a series: the exponent leaves two of them empty.
  static constexpr mpfr_prec_t kMostBits = kFractionBits - 2;
  static constexpr int kMostOrder = narrow::kMostOrder;
  static constexpr long kMostExponent = 1L << 40;

  explicit NarrowArithmetic(mpfr_prec_t /*bits*/) {}

  /// log2 of the units of the last bit that a term may be wrong by: a quarter for each product.
  static constexpr double kErrorBits = 6;
  /// Whether terms behind others, which count less over a step, have fewer digits.
  static constexpr bool kDropsDigits = false;

  /// log2 of the unit of a series with this exponent.
  static double UnitLog2(long exponent) { return static_cast<double>(exponent - kFractionBits); }
  /// The exponent of a series with terms below 2^log2.
  static long ExponentFor(long log2) { return log2 + 2; }

  /// What a series has in use while its next terms are made, about: all terms, and what is
  /// prepared.
  static double BytesInUse(mpfr_prec_t /*bits*/, int order) { return 400 + 16.0 * order; }
  /// A series in this memory, which must outlive it.
  static Terms TermsIn(std::pmr::memory_resource* memory);
  static void Reserve(Terms& terms, int count);
  static void Reset(Terms& terms, long leastExponent);
  /// Sets term 0 of a series that has been reset.
  static void Start(Terms& terms, const Value& first);
  static void Store(Terms& terms, int k, const Value& value);
  /// Whether that changes neither the exponent of the series nor whether it has one.
  static bool Fits(const Terms& terms, const Value& value);
  static Value Load(const Terms& terms, int k);
  /// log2 of the terms from the first on; returns the largest.
  static double FindLogs(const Terms& terms, int first, std::span<double> logs)
  {
    return narrow::FindLogs(terms, first, logs);
  }

  static Value FromNumber(mpfr_srcptr x);
  static Factor ToFactor(const Value& value);
  static Factor ToFactor(std::int32_t whole);
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
  static void StoreApart(Terms& terms, int k, const Value& value);
  static void StoreFirst(Terms& terms, int k, const Value& value);
  static void Raise(Terms& terms, long exponent, int count);
  static void MultiplyByLarge(Value& value, std::int32_t factor);
  void AddReciprocals(int k);

  std::vector<Factor> reciprocals;  // of 2, 3, ... in their places, as far as needed
};

}  // namespace varno::solve

#include "solve/fixed/narrow_members.h"
