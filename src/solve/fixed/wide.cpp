#include "solve/fixed/wide.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <gmp.h>

#include "solve/fixed/int128.h"
#include "solve/fixed/log2.h"
#include "solve/fixed/wide_sums.h"

namespace varno::solve {

namespace {

using wide::CarryOf, wide::Rest;

constexpr int kBits = kWideDigitBits;
constexpr std::int64_t kHalf = wide::kHalfDigit;

long FloorDivide(long a, long b)
{
  const long quotient = a / b;
  return a % b < 0 ? quotient - 1 : quotient;
}

/// Bits first..first+50 of a fraction, counted from its top, as a number; bits outside are 0.
std::int64_t BitsOf(const mp_limb_t* limbs, long count, long first)
{
  std::uint64_t found = 0;
  for (long bit = first; bit < first + kBits;) {
    const long limb = FloorDivide(bit, 64);
    const int offset = static_cast<int>(bit - limb * 64);
    const int taken = static_cast<int>(std::min<long>(64 - offset, first + kBits - bit));
    const std::uint64_t word =
        limb >= 0 && limb < count ? static_cast<std::uint64_t>(limbs[count - 1 - limb]) : 0;
    found = (found << taken) | ((word << offset) >> (64 - taken));
    bit += taken;
  }
  return static_cast<std::int64_t>(found);
}

}  // namespace

template <int kMostDigits>
WideArithmetic<kMostDigits>::WideArithmetic(mpfr_prec_t bits)
    : n(DigitsFor(bits)), kernel(&BestColumnKernel())
{}

template <int kMostDigits>
long WideArithmetic<kMostDigits>::ExponentFor(long log2)
{
  // |term| <= 2^log2 < 2^(51 e - 1)
  return FloorDivide(log2 + 1, kBits) + 1;
}

// ---------------------------------------------------------------------------------------------
// Values

/// Puts another digit before the first; the last one goes.
template <int kMostDigits>
void WideArithmetic<kMostDigits>::PushDown(Value& value, std::int64_t top) const
{
  value.lost |= value.digits[n] != 0;
  for (int i = n; i > 0; --i) value.digits[i] = value.digits[i - 1];
  value.digits[0] = top;
  ++value.exponent;
}

/// Makes all digits balanced again; they may be up to 2^62 before.
template <int kMostDigits>
void WideArithmetic<kMostDigits>::Carry(Value& value) const
{
  std::int64_t any = 0;
  for (int i = n; i > 0; --i) {
    const std::int64_t carry = CarryOf(value.digits[i]);
    value.digits[i] = Rest(value.digits[i], carry);
    value.digits[i - 1] += carry;
    any |= value.digits[i];
  }
  const std::int64_t carry = CarryOf(value.digits[0]);
  if (carry != 0) {
    value.digits[0] = Rest(value.digits[0], carry);
    PushDown(value, carry);
  }
  value.isZero = (any | value.digits[0]) == 0 && carry == 0;
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::Add(Value& sum, const Value& value) const
{
  sum.lost |= value.lost;
  sum.inexact |= value.inexact;
  if (value.isZero) {
    // What cannot be seen still has its place.
    if (sum.isZero && value.lost) sum.exponent = std::max(sum.exponent, value.exponent);
    return;
  }
  if (sum.isZero) {
    sum.digits = value.digits;
    sum.exponent = value.exponent;
    sum.isZero = false;
    return;
  }
  if (value.exponent > sum.exponent) {
    const long down = value.exponent - sum.exponent;
    for (int i = n; i > n - down && i >= 0; --i) sum.lost |= sum.digits[i] != 0;
    for (int i = n; i >= 0; --i) sum.digits[i] = i >= down ? sum.digits[i - down] : 0;
    sum.exponent = value.exponent;
  }
  const long down = sum.exponent - value.exponent;
  for (int i = n; i > n - down && i >= 0; --i) sum.lost |= value.digits[i] != 0;
  for (long i = down; i <= n; ++i) sum.digits[i] += value.digits[i - down];
  Carry(sum);
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::Negate(Value& value) const
{
  if (value.isZero) return;
  for (int i = 0; i <= n; ++i) value.digits[i] = -value.digits[i];
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::Shift(Value& value, long shift) const
{
  const long whole = FloorDivide(shift, kBits);
  const int part = static_cast<int>(shift - whole * kBits);
  value.exponent += whole;
  if (value.isZero || part == 0) return;
  MultiplyByDigit(value, std::int64_t{1} << part);
}

/// value *= factor, |factor| <= 2^50
template <int kMostDigits>
void WideArithmetic<kMostDigits>::MultiplyByDigit(Value& value, std::int64_t factor) const
{
  std::int64_t carry = 0;
  for (int i = n; i >= 0; --i) {
    const Int128 product = static_cast<Int128>(value.digits[i]) * factor + carry;
    carry = static_cast<std::int64_t>((product + kHalf) >> kBits);
    value.digits[i] = static_cast<std::int64_t>(product - static_cast<Int128>(carry) *
                                                              (std::int64_t{1} << kBits));
  }
  if (carry != 0) PushDown(value, carry);
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::MultiplyBy(Value& value, int factor) const
{
  if (value.isZero) return;
  for (int i = 0; i <= n; ++i) value.digits[i] *= factor;
  Carry(value);
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::MultiplyByWhole(Value& value, std::int32_t factor) const
{
  if (factor <= kMostOrder && factor >= -kMostOrder) {
    MultiplyBy(value, factor);
    return;
  }
  Value whole;
  whole.digits.fill(0);
  whole.digits[0] = factor;
  whole.exponent = 1;
  whole.isZero = false;
  Multiply(value, whole);
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::DivideBy(Value& value, int k) const
{
  if (value.isZero || k == 1) return;
  std::int64_t rest = 0;
  for (int i = 0; i <= n; ++i) {
    const std::int64_t dividend = rest * (std::int64_t{1} << kBits) + value.digits[i];
    value.digits[i] = dividend / k;
    rest = dividend - value.digits[i] * k;
  }
  value.lost |= rest != 0;
  Carry(value);
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::Multiply(Value& value, const Factor& factor) const
{
  const bool lost = value.lost, inexact = value.inexact || factor.inexact;
  const long exponent = value.exponent + factor.exponent;
  if (value.isZero || factor.isZero) {
    value.exponent = exponent;
    value.isZero = true;
    value.inexact = inexact;
    return;
  }
  int leading = 0;
  while (value.digits[leading] == 0) ++leading;
  if (std::all_of(&factor.digits[1], &factor.digits[n] + 1,
                  [](auto digit) { return digit == 0; })) {
    MultiplyByDigit(value, factor.digits[0]);
    value.exponent += factor.exponent - 1;
    value.inexact = inexact;
    return;
  }
  // Columns 0..n+2 make a carry before and digits 1..n+2; the last column only rounds.
  std::array<Int128, kMostDigits + 3> columns;
  std::fill_n(columns.begin(), n + 3, 0);
  bool beyond = false;
  int last = n;
  while (value.digits[last] == 0) --last;
  for (int i = 0; i <= n; ++i) {
    const std::int64_t digit = factor.digits[i];
    if (digit == 0) continue;
    const int end = n + 2 - i + leading;
    for (int m = leading; m <= std::min(last, end); ++m)
      columns[i + m - leading] += static_cast<Int128>(digit) * value.digits[m];
    beyond |= last > end;
  }
  std::array<std::int64_t, kMostDigits + 3> digits;
  Int128 carry = 0;
  for (int c = n + 2; c >= 0; --c) {
    const Int128 sum = columns[c] + carry;
    carry = (sum + kHalf) >> kBits;
    const auto digit = static_cast<std::int64_t>(sum - carry * (std::int64_t{1} << kBits));
    if (c < n + 2) digits[c + 1] = digit;
    beyond |= c == n + 2 && digit != 0;
  }
  digits[0] = static_cast<std::int64_t>(carry);
  // Leading zeros are no digits, or each factor would cost one.
  int skipped = 0;
  while (skipped < 2 && digits[skipped] == 0) ++skipped;
  std::copy_n(digits.begin() + skipped, n + 1, value.digits.begin());
  for (int i = skipped + n + 1; i <= n + 2; ++i) beyond |= digits[i] != 0;
  value.exponent = exponent - leading - skipped;
  value.lost = lost || beyond;
  value.inexact = inexact;
  if (CarryOf(value.digits[0]) != 0) Carry(value);
}

// ---------------------------------------------------------------------------------------------
// Numbers

template <int kMostDigits>
auto WideArithmetic<kMostDigits>::FromNumber(mpfr_srcptr x) const -> Value
{
  Value value;
  if (mpfr_regular_p(x) == 0) return value;
  const auto* limbs = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  const long count = (mpfr_get_prec(x) + 63) / 64;
  const long exponent = mpfr_get_exp(x);
  value.exponent = ExponentFor(exponent);
  // Bit b of the fraction has the weight 2^(exponent - 1 - b).
  const long first = exponent - kBits * value.exponent;
  for (int i = 0; i <= n; ++i) value.digits[i] = BitsOf(limbs, count, first + long{kBits} * i);
  for (long bit = first + long{kBits} * (n + 1); bit < 64 * count; bit += kBits)
    value.lost |= BitsOf(limbs, count, bit) != 0;
  Carry(value);
  if (mpfr_signbit(x) != 0) Negate(value);
  value.inexact = value.lost;
  return value;
}

template <int kMostDigits>
auto WideArithmetic<kMostDigits>::ToFactor(const Value& value) const -> Factor
{
  Factor factor = value;
  factor.inexact = value.lost || value.inexact;
  if (value.isZero) return factor;
  int leading = 0;
  while (value.digits[leading] == 0) ++leading;
  for (int i = 0; i <= n; ++i) factor.digits[i] = i + leading <= n ? value.digits[i + leading] : 0;
  factor.exponent -= leading;
  return factor;
}

template <int kMostDigits>
void WideArithmetic<kMostDigits>::ToNumber(const Value& value, mpfr_ptr result) const
{
  if (value.isZero) {
    mpfr_set_zero(result, 1);
    return;
  }
  // Its size, in digits that are not balanced but natural
  std::array<std::int64_t, kMostDigits + 2> digits = value.digits;
  int first = 0;
  while (digits[first] == 0) ++first;
  const bool isNegative = digits[first] < 0;
  std::int64_t borrow = 0;
  for (int i = n; i >= first; --i) {
    const std::int64_t digit = (isNegative ? -digits[i] : digits[i]) + borrow;
    borrow = digit >> kBits;
    digits[i] = digit & ((std::int64_t{1} << kBits) - 1);
  }
  std::array<mp_limb_t, (kMostDigits + 1) * kBits / GMP_NUMB_BITS + 2> limbs{};
  for (int i = n, bit = 0; i >= first; --i, bit += kBits) {
    const auto digit = static_cast<mp_limb_t>(digits[i]);
    const int limb = bit / GMP_NUMB_BITS, shift = bit % GMP_NUMB_BITS;
    limbs[limb] |= digit << shift;
    if (shift + kBits > GMP_NUMB_BITS) limbs[limb + 1] = digit >> (GMP_NUMB_BITS - shift);
  }
  mpz_t whole;
  mpz_roinit_n(whole, limbs.data(), static_cast<mp_size_t>(limbs.size()));
  mpfr_set_z_2exp(result, whole, kBits * (value.exponent - 1 - n), MPFR_RNDN);
  if (isNegative) mpfr_neg(result, result, MPFR_RNDN);
}

// ---------------------------------------------------------------------------------------------
// Terms

template <int kMostDigits>
void WideArithmetic<kMostDigits>::Store(Terms& terms, int k, const Value& value) const
{
  terms.inexact |= value.lost || value.inexact;
  int leading = 0;
  if (value.isZero) {
    if (terms.started || value.IsExactZero()) {
      terms.SetZero(k, value.IsExactZero());
      return;
    }
    // What is not zero, but cannot be seen, is a unit of the value's own resolution.
    leading = n;
  } else {
    while (value.digits[leading] == 0) ++leading;
  }
  const long needed = value.exponent - leading;
  if (!terms.started) {
    terms.started = true;
    terms.exponent = std::max(terms.leastExponent, needed);
  } else if (needed > terms.exponent) {
    terms.Raise(needed, k);
  }
  // Digit i of the term is digit i + up of the value.
  const long up = value.exponent - terms.exponent;
  std::array<std::int64_t, kMostDigits + 2> row;
  std::fill_n(row.begin(), n, 0);
  const long begin = std::max(0L, -up), end = std::min<long>(n, n + 1 - up);
  if (value.isZero) {
    if (leading >= begin + up && leading < end + up) row[leading - up] = 1;
  } else {
    for (long i = begin; i < end; ++i) row[i] = value.digits[i + up];
    for (long i = std::max(0L, n + up); i <= n; ++i) terms.inexact |= value.digits[i] != 0;
  }
  terms.Set(k, row.data());
}

template <int kMostDigits>
bool WideArithmetic<kMostDigits>::Fits(const Terms& terms, const Value& value)
{
  if (!terms.started) return value.IsExactZero();
  if (value.isZero) return true;
  int leading = 0;
  while (value.digits[leading] == 0) ++leading;
  return value.exponent - leading <= terms.exponent;
}

template <int kMostDigits>
auto WideArithmetic<kMostDigits>::Load(const Terms& terms, int k) const -> Value
{
  Value value;
  if (terms.IsExactZero(k)) return value;
  value.exponent = terms.exponent;
  value.inexact = terms.inexact;
  value.isZero = value.lost = terms.leading[k] == n;
  if (value.isZero) return value;
  const double* const row = terms.Row(k);
  for (int i = 0; i < n; ++i) value.digits[i] = static_cast<std::int64_t>(row[i]);
  value.digits[n] = 0;
  return value;
}

/// Whether every product of a sum has a factor that is exactly 0.
static bool AllExactZeros(const WideTerms& a, const WideTerms& b, int first, int last, int k)
{
  for (int j = first; j <= last; ++j) {
    if (!a.IsExactZero(j) && !b.IsExactZero(k - j)) return false;
  }
  return true;
}

/// Whether products may have digits behind the columns that are summed.
static bool ReachBeyond(const WideTerms& a, const WideTerms& b)
{
  return a.used + b.used - 2 > a.n;
}

/// What is known of a sum of products beside its digits, of which there is one more to round.
template <int kMostDigits>
void WideArithmetic<kMostDigits>::SetSum(Value& sum, const Terms& a, const Terms& b) const
{
  sum.exponent = a.exponent + b.exponent;
  sum.lost = sum.digits[n + 1] != 0 || ReachBeyond(a, b);
  sum.inexact = a.inexact || b.inexact;
  // Sums of products may reach beyond the first digit.
  if (CarryOf(sum.digits[0]) != 0) Carry(sum);
  sum.isZero =
      std::all_of(&sum.digits[0], &sum.digits[n] + 1, [](auto digit) { return digit == 0; });
}

template <int kMostDigits>
auto WideArithmetic<kMostDigits>::Convolve(const Terms& a, const Terms& b, int first, int last,
                                           int k) const -> Value
{
  if (!a.started || !b.started || first > last) return {};
  Value value;
  kernel->sumProducts(a, b, first, last, k, n + 1, value.digits.data());
  SetSum(value, a, b);
  if (value.isZero) value.lost = !AllExactZeros(a, b, first, last, k);
  return value;
}

template <int kMostDigits>
auto WideArithmetic<kMostDigits>::ConvolveSelf(const Terms& a, int first, int k) const -> Value
{
  if (!a.started || 2 * first > k) return {};
  Value value;
  kernel->sumSquare(a, first, k, n + 1, value.digits.data());
  SetSum(value, a, a);
  if (value.isZero) value.lost = !AllExactZeros(a, a, first, k - first, k);
  return value;
}

// ---------------------------------------------------------------------------------------------
// Sums over a step

/// Digits 0..n, behind one that is 0 where the sum is no larger than terms can be.
template <int kMostDigits>
auto WideArithmetic<kMostDigits>::ValueOf(const std::int64_t* sum, const Terms& a) const -> Value
{
  Value value;
  std::copy_n(sum + 1, n + 1, value.digits.begin());
  value.exponent = a.exponent;
  value.lost = value.inexact = true;
  if (sum[0] != 0) PushDown(value, sum[0]);
  value.isZero =
      std::all_of(&value.digits[0], &value.digits[n] + 1, [](auto digit) { return digit == 0; });
  return value;
}

template <int kMostDigits>
auto WideArithmetic<kMostDigits>::SumAt(std::int64_t fraction, const Terms& a, int last) const
    -> Value
{
  std::array<std::int64_t, kMostDigits + 2> sum;
  wide::SumAt(fraction, a, last, sum.data());
  return ValueOf(sum.data(), a);
}

template <int kMostDigits>
auto WideArithmetic<kMostDigits>::SumAndSlopeAt(std::int64_t fraction, const Terms& a,
                                                int last) const -> SumWithSlope
{
  std::array<std::int64_t, kMostDigits + 2> sum, slope;
  wide::SumAndSlopeAt(fraction, a, last, sum.data(), slope.data());
  return {ValueOf(sum.data(), a), ValueOf(slope.data(), a)};
}

template class WideArithmetic<8>;
template class WideArithmetic<24>;
template class WideArithmetic<42>;

}  // namespace varno::solve
