#pragma once

// The members of NarrowArithmetic that each term needs, for narrow.h only: a call would take longer
// than what most of them do.

namespace varno::solve {

inline void NarrowArithmetic::Start(Terms& terms, const Value& first)
{
  // What comes from a number has 120 bits.
  const long exponent = std::max(terms.leastExponent, first.exponent + 2);
  const long down = exponent - first.exponent;
  if (first.mantissa == 0 || down >= 64 || !narrow::FitsBits(first.mantissa, kFractionBits)) {
    Store(terms, 0, first);
    return;
  }
  terms.started = true;
  terms.exponent = exponent;
  terms.inexact = first.lost || first.inexact;
  terms.exactZero[0] = 0;
  narrow::SetDigits(terms, 0, narrow::ShiftRightBelowWord(first.mantissa, down, terms.inexact));
  terms.hasLow = terms.low[0] != 0;
}

[[gnu::always_inline]] inline void NarrowArithmetic::Store(Terms& terms, int k, const Value& value)
{
  const long up = value.exponent - terms.exponent;
  bool lost = value.lost || value.inexact;
  Int128 mantissa = value.mantissa;
  if (up < 0 && up > -64) {
    mantissa = narrow::ShiftRightBelowWord(mantissa, -up, lost);
    if (!terms.started || !narrow::FitsBits(mantissa, narrow::kTermBits)) {
      StoreApart(terms, k, value);
      return;
    }
  } else {
    if (!terms.started || up < 0 || up > narrow::kMostUp ||
        !narrow::FitsBits(mantissa, narrow::kTermBits - static_cast<int>(up))) {
      StoreApart(terms, k, value);
      return;
    }
    mantissa <<= up;
  }
  terms.inexact |= lost;
  terms.exactZero[k] = value.IsExactZero() ? 1 : 0;
  narrow::SetDigits(terms, k, mantissa);
  terms.hasLow |= terms.low[k] != 0;
}

inline NarrowValue NarrowArithmetic::Load(const Terms& terms, int k)
{
  NarrowValue value;
  if (terms.exactZero[k] != 0) return value;
  value.mantissa = narrow::Joined(terms.high[k], terms.low[k]);
  value.exponent = terms.exponent;
  value.lost = value.mantissa == 0;
  value.inexact = terms.inexact;
  return value;
}

[[gnu::always_inline]] inline void NarrowArithmetic::Add(Value& sum, const Value& value)
{
  if (value.IsExactZero()) return;
  if (sum.IsExactZero()) {
    sum = value;
    return;
  }
  const long up = value.exponent - sum.exponent;
  Int128 other = value.mantissa;
  if (up < 0) {
    other = narrow::ShiftRight(other, -up, sum.lost);
  } else if (up > 0) {
    sum.mantissa = narrow::ShiftRight(sum.mantissa, up, sum.lost);
    sum.exponent = value.exponent;
  }
  sum.mantissa += other;
  sum.lost |= value.lost;
  sum.inexact |= value.inexact;
  narrow::KeepBelowLimit(sum);
}

inline void NarrowArithmetic::Multiply(Value& value, const Factor& factor)
{
  const std::int64_t low = narrow::LowDigit(value.mantissa);
  const std::int64_t high = narrow::HighDigit(value.mantissa);
  const Int128 highs = static_cast<Int128>(high) * factor.high;
  const Int128 crosses =
      static_cast<Int128>(high) * factor.low + static_cast<Int128>(low) * factor.high;
  NarrowValue product = narrow::ValueOf(highs, crosses, value.exponent + factor.exponent);
  product.lost |= value.lost | ((low != 0) & (factor.low != 0));
  product.inexact = value.inexact | factor.inexact;
  value = product;
}

inline void NarrowArithmetic::MultiplyBy(Value& value, int factor)
{
  if (narrow::FitsBits(value.mantissa, narrow::kValueBits - BitLength(factor))) {
    value.mantissa *= factor;
    return;
  }
  // value = high 2^60 + low; both parts times the factor, / 2^16
  const std::int64_t low = narrow::LowDigit(value.mantissa);
  const std::int64_t high = narrow::HighDigit(value.mantissa);
  value.mantissa = static_cast<Int128>(high) * factor * (narrow::kDigit >> 16) +
                   narrow::ShiftRight(static_cast<Int128>(low) * factor, 16, value.lost);
  value.exponent += 16;
}

inline void NarrowArithmetic::DivideBy(Value& value, int k)
{
  if (k == 1) return;
  const std::int64_t low = narrow::LowDigit(value.mantissa);
  if (low == 0) {
    const std::int64_t high = narrow::HighDigit(value.mantissa);
    if (high % k == 0) {
      value.mantissa = static_cast<Int128>(high / k) * narrow::kDigit;
      return;
    }
  }
  if (static_cast<int>(reciprocals.size()) <= k) AddReciprocals(k);
  Multiply(value, reciprocals[k]);
  value.lost = true;
}

inline void NarrowArithmetic::MultiplyByWhole(Value& value, std::int32_t factor)
{
  if (factor < (1 << 15) && factor > -(1 << 15)) {
    MultiplyBy(value, factor);
  } else {
    MultiplyByLarge(value, factor);
  }
}

}  // namespace varno::solve
