#pragma once

#include <cstdint>
#include <functional>
#include <memory_resource>

#include <gmpxx.h>
#include <mpfr.h>

#include "solve/fixed/long_terms.h"
#include "solve/fixed/relaxed_product.h"
#include "solve/fixed/residues.h"

namespace varno::solve {

/// A number on its way from one series to another: mantissa times 2^exponent.
struct LongValue {
  mpz_class mantissa;
  long exponent = 0;
  /// Whether making this value dropped bits that were not zero: a zero is then no exact one.
  bool lost = false;
  /// Whether bits were dropped anywhere on the way to it.
  bool inexact = false;

  bool IsExactZero() const { return mantissa == 0 && !lost; }
};

/// Arithmetic on series of fixed-point numbers with n limbs and one exponent for all terms of a
/// series, for any precision and order (docs/solve/fixed-point.md). GMP multiplies.
class LongArithmetic {
 public:
  using Value = LongValue;
  using Factor = Value;
  using Terms = LongTerms;
  using Product = RelaxedProduct;
  using Poll = std::function<void()>;

  static constexpr int kMostOrder = kMostTransform - 1;
  static constexpr long kMostExponent = 1L << 40;
  /// log2 of the units that a term may be wrong by.
  static constexpr double kErrorBits = 6;
  /// Whether terms behind others, which count less over a step, have fewer digits.
  static constexpr bool kDropsDigits = false;

  explicit LongArithmetic(mpfr_prec_t bits);

  static double UnitLog2(long exponent) { return static_cast<double>(exponent); }
  /// The exponent of a series with terms below 2^log2.
  long ExponentFor(long log2) const { return log2 - TermBits(); }

  /// None: its sums are made of blocks of orders.
  static double BytesInUse(mpfr_prec_t /*bits*/, int /*order*/) { return 0; }
  /// A series, which has memory of its own.
  static Terms TermsIn(std::pmr::memory_resource* /*memory*/) { return {}; }
  static void Reserve(Terms& terms, int count);
  static void Reset(Terms& terms, long leastExponent) { terms.Reset(leastExponent); }
  void Store(Terms& terms, int k, const Value& value) const;
  static Value Load(const Terms& terms, int k);
  static double Log2(const Terms& terms, int k);

  Value FromNumber(mpfr_srcptr x) const;
  static Factor ToFactor(const Value& value);
  static void ToNumber(const Value& value, mpfr_ptr result);

  void Add(Value& sum, const Value& value) const;
  static void Negate(Value& value);
  /// value *= 2^shift
  static void Shift(Value& value, long shift) { value.exponent += shift; }
  void Multiply(Value& value, const Factor& factor) const;
  static void MultiplyBy(Value& value, int factor) { value.mantissa *= factor; }
  static void MultiplyByWhole(Value& value, std::int32_t factor) { value.mantissa *= factor; }
  /// value /= k, for k > 0
  static void DivideBy(Value& value, int k);

  /// Sum over j = first..last of a[j] b[k-j]
  Value Convolve(const Terms& a, const Terms& b, int first, int last, int k) const;
  /// The same for one k after the other, with first 0 or 1 and last k or k - 1, where terms are
  /// known as far as they stand in the sum. A square where b is a.
  Value Convolve(Product& product, const Terms& a, const Terms& b, int first, int last, int k,
                 const Poll& poll) const;

 private:
  /// Bits of the largest term: its first limb keeps two of them empty.
  long TermBits() const { return long{kLimbBits} * n - 2; }
  /// Bits of a value: a limb behind the last one of a term.
  long ValueBits() const { return long{kLimbBits} * (n + 1); }
  Value ValueOf(const LongSum& sum, const Terms& a, const Terms& b, int first, int last,
                int k) const;

  int n;
};

/// Settled series have no faster way here: narrow_settled.h.
inline bool StoreSettledMultiple(LongTerms&, int, int, const LongTerms&, int)
{
  return false;
}

inline int StoreSettledPowers(LongTerms&, int, const LongValue&)
{
  return 0;
}

}  // namespace varno::solve
