#include "solve/fixed/narrow.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solve/fixed/log2.h"

namespace varno::solve {

namespace {

constexpr int kDigitBits = 60;
constexpr Int128 kDigit = static_cast<Int128>(1) << kDigitBits;
/// Terms are below 2^119, so that high digits are at most 2^59.
constexpr int kTermBits = 119;
/// Values on the way are below 2^123; a sum of two then fits easily.
constexpr Int128 kValueLimit = static_cast<Int128>(1) << 123;

/// The low digit, between -2^59 and 2^59 - 1.
std::int64_t LowDigit(Int128 mantissa)
{
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(mantissa) << (64 - kDigitBits)) >>
         (64 - kDigitBits);
}

std::int64_t HighDigit(Int128 mantissa, std::int64_t low)
{
  return static_cast<std::int64_t>((mantissa - low) >> kDigitBits);
}

Int128 Joined(std::int64_t high, std::int64_t low)
{
  return static_cast<Int128>(high) * kDigit + low;
}

/// mantissa / 2^shift to nearest, shift > 0; tells whether bits were lost.
Int128 ShiftRight(Int128 mantissa, long shift, bool& lost)
{
  if (shift > 126) {
    lost |= mantissa != 0;
    return 0;
  }
  const Int128 unit = static_cast<Int128>(1) << shift;
  lost |= (mantissa & (unit - 1)) != 0;
  return (mantissa + (unit >> 1)) >> shift;
}

void KeepBelowLimit(NarrowValue& value)
{
  if (value.mantissa < kValueLimit && value.mantissa > -kValueLimit) return;
  value.mantissa = ShiftRight(value.mantissa, 4, value.lost);
  value.exponent += 4;
}

/// The sum of the products of high digits, and of high with low digits, as one value.
NarrowValue ValueOf(Int128 highs, Int128 crosses, long exponent)
{
  NarrowValue value;
  value.mantissa = highs + ShiftRight(crosses, kDigitBits, value.lost);
  value.exponent = exponent;
  KeepBelowLimit(value);
  return value;
}

/// Whether every product of a sum has a factor that is exactly 0.
bool AllExactZeros(const NarrowTerms& a, const NarrowTerms& b, int first, int last, int k)
{
  for (int j = first; j <= last; ++j) {
    if (a.exactZero[j] == 0 && b.exactZero[k - j] == 0) return false;
  }
  return true;
}

/// What is known of a sum of products beside its mantissa.
void SetExactness(NarrowValue& value, const NarrowTerms& a, const NarrowTerms& b, int first,
                  int last, int k)
{
  value.lost |= a.hasLow && b.hasLow;
  value.inexact = a.inexact || b.inexact;
  if (value.mantissa == 0) value.lost = !AllExactZeros(a, b, first, last, k);
}

/// Makes room for larger terms.
void Raise(NarrowTerms& terms, long exponent, int count)
{
  const long shift = exponent - terms.exponent;
  for (int j = 0; j < count; ++j) {
    const Int128 mantissa = ShiftRight(Joined(terms.high[j], terms.low[j]), shift, terms.inexact);
    terms.low[j] = LowDigit(mantissa);
    terms.high[j] = HighDigit(mantissa, terms.low[j]);
    terms.hasLow |= terms.low[j] != 0;
  }
  terms.exponent = exponent;
}

}  // namespace

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

void NarrowArithmetic::Store(Terms& terms, int k, const Value& value)
{
  terms.inexact |= value.lost || value.inexact;
  Int128 mantissa = value.mantissa;
  terms.exactZero[k] = mantissa == 0 && !value.lost ? 1 : 0;
  if (!terms.started) {
    if (terms.exactZero[k] != 0) {
      terms.high[k] = terms.low[k] = 0;
      return;
    }
    // What is not zero, but cannot be seen, is a unit of the value's own resolution.
    if (mantissa == 0) mantissa = 1;
    terms.started = true;
    terms.exponent =
        std::max(terms.leastExponent, value.exponent - kFractionBits + BitLength(mantissa) + 2);
  }
  const long up = value.exponent - terms.exponent;
  const int length = BitLength(mantissa);
  if (length + up > kTermBits) Raise(terms, value.exponent - kFractionBits + length + 2, k);
  const long shift = value.exponent - terms.exponent;
  if (shift < 0) {
    mantissa = ShiftRight(mantissa, -shift, terms.inexact);
  } else if (mantissa != 0) {
    mantissa <<= shift;
  }
  terms.low[k] = LowDigit(mantissa);
  terms.high[k] = HighDigit(mantissa, terms.low[k]);
  terms.hasLow |= terms.low[k] != 0;
}

NarrowValue NarrowArithmetic::Load(const Terms& terms, int k)
{
  NarrowValue value;
  if (terms.exactZero[k] != 0) return value;
  value.mantissa = Joined(terms.high[k], terms.low[k]);
  value.exponent = terms.exponent;
  value.lost = value.mantissa == 0;
  value.inexact = terms.inexact;
  return value;
}

double NarrowArithmetic::Log2(const Terms& terms, int k)
{
  if (terms.exactZero[k] != 0) return -std::numeric_limits<double>::infinity();
  const double size =
      std::abs(static_cast<double>(terms.high[k]) * 0x1p60 + static_cast<double>(terms.low[k]));
  return FastLog2(std::max(size, 1.0)) + UnitLog2(terms.exponent);
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
  factor.high = HighDigit(mantissa, factor.low);
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

void NarrowArithmetic::Add(Value& sum, const Value& value)
{
  if (value.IsExactZero()) return;
  if (sum.IsExactZero()) {
    sum = value;
    return;
  }
  const long up = value.exponent - sum.exponent;
  Int128 other = value.mantissa;
  if (up < 0) {
    other = ShiftRight(other, -up, sum.lost);
  } else if (up > 0) {
    sum.mantissa = ShiftRight(sum.mantissa, up, sum.lost);
    sum.exponent = value.exponent;
  }
  sum.mantissa += other;
  sum.lost |= value.lost;
  sum.inexact |= value.inexact;
  KeepBelowLimit(sum);
}

void NarrowArithmetic::Multiply(Value& value, const Factor& factor)
{
  const std::int64_t low = LowDigit(value.mantissa);
  const std::int64_t high = HighDigit(value.mantissa, low);
  const Int128 highs = static_cast<Int128>(high) * factor.high;
  const Int128 crosses =
      static_cast<Int128>(high) * factor.low + static_cast<Int128>(low) * factor.high;
  NarrowValue product = ValueOf(highs, crosses, value.exponent + factor.exponent);
  product.lost |= value.lost || (low != 0 && factor.low != 0);
  product.inexact = value.inexact || factor.inexact;
  value = product;
}

void NarrowArithmetic::MultiplyBy(Value& value, int factor)
{
  if (BitLength(value.mantissa) <= 107) {
    value.mantissa *= factor;
    return;
  }
  // value = high 2^60 + low; both parts times the factor, / 2^16
  const std::int64_t low = LowDigit(value.mantissa);
  const std::int64_t high = HighDigit(value.mantissa, low);
  value.mantissa = static_cast<Int128>(high) * factor * (kDigit >> 16) +
                   ShiftRight(static_cast<Int128>(low) * factor, 16, value.lost);
  value.exponent += 16;
}

void NarrowArithmetic::MultiplyByWhole(Value& value, std::int32_t factor)
{
  if (factor < (1 << 15) && factor > -(1 << 15)) {
    MultiplyBy(value, factor);
    return;
  }
  Value whole;
  whole.mantissa = factor;
  whole.exponent = kFractionBits;
  Multiply(value, ToFactor(whole));
}

void NarrowArithmetic::DivideBy(Value& value, int k)
{
  if (k == 1) return;
  const std::int64_t low = LowDigit(value.mantissa);
  if (low == 0) {
    const std::int64_t high = HighDigit(value.mantissa, low);
    if (high % k == 0) {
      value.mantissa = static_cast<Int128>(high / k) * kDigit;
      return;
    }
  }
  while (static_cast<int>(reciprocals.size()) <= k) {
    const auto divisor = static_cast<Int128>(std::max<std::size_t>(1, reciprocals.size()));
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
  Multiply(value, reciprocals[k]);
  value.lost = true;
}

NarrowValue NarrowArithmetic::Convolve(const Terms& a, const Terms& b, int first, int last, int k)
{
  if (!a.started || !b.started) return {};
  Int128 highs = 0, crosses = 0;
  for (int j = first; j <= last; ++j) {
    const std::int64_t aHigh = a.high[j], bHigh = b.high[k - j];
    highs += static_cast<Int128>(aHigh) * bHigh;
    crosses += static_cast<Int128>(aHigh) * b.low[k - j] + static_cast<Int128>(a.low[j]) * bHigh;
  }
  NarrowValue value = ValueOf(highs, crosses, a.exponent + b.exponent);
  SetExactness(value, a, b, first, last, k);
  return value;
}

NarrowValue NarrowArithmetic::ConvolveSelf(const Terms& a, int first, int k)
{
  if (!a.started) return {};
  Int128 highs = 0, crosses = 0;
  const int half = (k - 1) / 2;
  for (int j = first; j <= half && k > 0; ++j) {
    const std::int64_t high = a.high[j], otherHigh = a.high[k - j];
    highs += static_cast<Int128>(high) * otherHigh;
    crosses += static_cast<Int128>(high) * a.low[k - j] + static_cast<Int128>(a.low[j]) * otherHigh;
  }
  highs *= 2;
  crosses *= 2;
  if (k % 2 == 0 && k / 2 >= first) {
    const std::int64_t high = a.high[k / 2];
    highs += static_cast<Int128>(high) * high;
    crosses += 2 * (static_cast<Int128>(high) * a.low[k / 2]);
  }
  NarrowValue value = ValueOf(highs, crosses, 2 * a.exponent);
  SetExactness(value, a, a, first, k - first, k);
  return value;
}

}  // namespace varno::solve
