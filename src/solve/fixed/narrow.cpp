#include "solve/fixed/narrow.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solve/fixed/narrow_settled.h"

namespace varno::solve {

namespace {

using namespace narrow;

/// Whether every product of a sum has a factor that is exactly 0.
bool AllExactZeros(const NarrowTerms& a, const NarrowTerms& b, int first, int last, int k)
{
  for (int j = first; j <= last; ++j) {
    if (a.exactZero[j] == 0 && b.exactZero[k - j] == 0) return false;
  }
  return true;
}

/// What is known of a sum of products beside its mantissa.
inline void SetExactness(NarrowValue& value, const NarrowTerms& a, const NarrowTerms& b, int first,
                         int last, int k)
{
  value.inexact = a.inexact || b.inexact;
  if (value.mantissa != 0) {
    value.lost |= a.hasLow && b.hasLow;
  } else {
    value.lost = !AllExactZeros(a, b, first, last, k);
  }
}

}  // namespace

NarrowTerms NarrowArithmetic::TermsIn(std::pmr::memory_resource* memory)
{
  return {.high = std::pmr::vector<std::int64_t>(memory),
          .low = std::pmr::vector<std::int64_t>(memory),
          .exactZero = std::pmr::vector<std::uint8_t>(memory)};
}

void NarrowArithmetic::Reserve(Terms& terms, int count)
{
  if (static_cast<int>(terms.high.size()) >= count) return;
  terms.high.resize(count);
  terms.low.resize(count);
  terms.exactZero.resize(count);
}

void NarrowArithmetic::Reset(Terms& terms, long leastExponent)
{
  terms.leastExponent = leastExponent;
  terms.started = terms.inexact = terms.hasLow = false;
}

/// What Store leaves: the first term that is not 0, terms that do not fit, and very small ones.
void NarrowArithmetic::StoreApart(Terms& terms, int k, const Value& value)
{
  if (!terms.started) {
    StoreFirst(terms, k, value);
    return;
  }
  terms.inexact |= value.lost || value.inexact;
  terms.exactZero[k] = value.IsExactZero() ? 1 : 0;
  const long length = BitLength(value.mantissa);
  if (length == 0) {
    terms.high[k] = terms.low[k] = 0;
    return;
  }
  if (length + value.exponent - terms.exponent > kTermBits)
    Raise(terms, value.exponent - kFractionBits + length + 2, k);
  const long shift = value.exponent - terms.exponent;
  const Int128 mantissa =
      shift < 0 ? ShiftRight(value.mantissa, -shift, terms.inexact) : value.mantissa << shift;
  SetDigits(terms, k, mantissa);
  terms.hasLow |= terms.low[k] != 0;
}

bool NarrowArithmetic::Fits(const Terms& terms, const Value& value)
{
  if (!terms.started) return value.IsExactZero();
  const long length = BitLength(value.mantissa);
  return length == 0 || length + value.exponent - terms.exponent <= kTermBits;
}

/// A term before which all are 0 chooses the exponent.
void NarrowArithmetic::StoreFirst(Terms& terms, int k, const Value& value)
{
  if (value.IsExactZero()) {
    terms.exactZero[k] = 1;
    terms.high[k] = terms.low[k] = 0;
    return;
  }
  Value first = value;
  // What is not zero, but cannot be seen, is a unit of the value's own resolution.
  if (first.mantissa == 0) first.mantissa = 1;
  terms.started = true;
  terms.exponent =
      std::max(terms.leastExponent, first.exponent - kFractionBits + BitLength(first.mantissa) + 2);
  Store(terms, k, first);
}

/// Makes room for larger terms among the first `count`.
void NarrowArithmetic::Raise(Terms& terms, long exponent, int count)
{
  const long shift = exponent - terms.exponent;
  for (int j = 0; j < count; ++j) {
    const Int128 mantissa = ShiftRight(Joined(terms.high[j], terms.low[j]), shift, terms.inexact);
    SetDigits(terms, j, mantissa);
    terms.hasLow |= terms.low[j] != 0;
  }
  terms.exponent = exponent;
}

/// Up to that of k, from that of 2 on.
void NarrowArithmetic::AddReciprocals(int k)
{
  if (reciprocals.empty()) reciprocals.resize(2);
  while (static_cast<int>(reciprocals.size()) <= k) {
    const auto divisor = static_cast<Int128>(reciprocals.size());
    Value one;
    one.mantissa = (static_cast<Int128>(1) << kFractionBits) / divisor;
    one.lost = true;
    // All bits of the quotient count: those behind the point of a fraction below 1, too.
    const int up = kFractionBits - BitLength(one.mantissa);
    const UInt128 rest = (static_cast<UInt128>(1) << kFractionBits) % static_cast<UInt128>(divisor);
    one.mantissa =
        (one.mantissa << up) + static_cast<Int128>((rest << up) / static_cast<UInt128>(divisor));
    one.exponent = -up;
    reciprocals.push_back(ToFactor(one));
  }
}

NarrowValue NarrowArithmetic::FromNumber(mpfr_srcptr x)
{
  NarrowValue value;
  if (mpfr_regular_p(x) == 0) return value;
  const auto* limbs = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  const std::ptrdiff_t count = (mpfr_get_prec(x) + 63) / 64;
  UInt128 top = static_cast<UInt128>(limbs[count - 1]) << 64;
  if (count > 1) top |= limbs[count - 2];
  for (std::ptrdiff_t i = 0; i < count - 2; ++i) value.lost |= limbs[i] != 0;
  value.lost |= (top & 0xFF) != 0;
  const auto mantissa = static_cast<Int128>((top >> 8) + ((top >> 7) & 1));
  value.mantissa = mpfr_signbit(x) != 0 ? -mantissa : mantissa;
  value.exponent = mpfr_get_exp(x);
  value.inexact = value.lost;
  return value;
}

NarrowFactor NarrowArithmetic::ToFactor(const Value& value)
{
  NarrowFactor factor;
  if (value.mantissa == 0) return factor;
  // All 120 bits count.
  const int up = kFractionBits - BitLength(value.mantissa);
  bool lost = value.lost || value.inexact;
  const Int128 mantissa = up >= 0 ? value.mantissa << up : ShiftRight(value.mantissa, -up, lost);
  factor.low = LowDigit(mantissa);
  factor.high = HighDigit(mantissa);
  factor.exponent = value.exponent - up;
  factor.inexact = lost;
  return factor;
}

void NarrowArithmetic::ToNumber(const Value& value, mpfr_ptr result)
{
  const int length = BitLength(value.mantissa);
  if (length == 0) {
    mpfr_set_zero(result, 1);
    return;
  }
  const UInt128 size = value.mantissa < 0 ? -static_cast<UInt128>(value.mantissa)
                                          : static_cast<UInt128>(value.mantissa);
  const UInt128 top = size << (128 - length);
  mp_limb_t limbs[2] = {static_cast<mp_limb_t>(top), static_cast<mp_limb_t>(top >> 64)};
  mpfr_t number;
  mpfr_custom_init_set(number, value.mantissa < 0 ? -MPFR_REGULAR_KIND : MPFR_REGULAR_KIND,
                       value.exponent - kFractionBits + length, 128, limbs);
  mpfr_set(result, number, MPFR_RNDN);
}

NarrowFactor NarrowArithmetic::ToFactor(std::int32_t whole)
{
  Value value;
  value.mantissa = whole;
  value.exponent = kFractionBits;
  return ToFactor(value);
}

void NarrowArithmetic::MultiplyByLarge(Value& value, std::int32_t factor)
{
  Multiply(value, ToFactor(factor));
}

NarrowValue NarrowArithmetic::Convolve(const Terms& a, const Terms& b, int first, int last, int k)
{
  if (!a.started || !b.started) return {};
  const NarrowSums sums = NarrowSums::OfProducts(a, b, first, last, k);
  NarrowValue value = ValueOf(sums.highs, sums.crosses, a.exponent + b.exponent);
  SetExactness(value, a, b, first, last, k);
  return value;
}

NarrowValue NarrowArithmetic::ConvolveSelf(const Terms& a, int first, int k)
{
  if (!a.started) return {};
  const NarrowSums sums = NarrowSums::OfProducts(a, first, k);
  NarrowValue value = ValueOf(sums.highs, sums.crosses, 2 * a.exponent);
  SetExactness(value, a, a, first, k - first, k);
  return value;
}

}  // namespace varno::solve
