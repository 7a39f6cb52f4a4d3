#include "solve/fixed/long.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "solve/fixed/log2.h"

namespace varno::solve {

namespace {

long BitLength(const mpz_class& x)
{
  return x == 0 ? 0 : static_cast<long>(mpz_sizeinbase(x.get_mpz_t(), 2));
}

/// Leaves so many bits of a value, to nearest.
void Shorten(LongValue& value, long bits)
{
  const long down = BitLength(value.mantissa) - bits;
  if (down <= 0) return;
  value.lost |= ShiftRight(value.mantissa, down);
  value.exponent += down;
}

/// Gives a value this exponent.
void MoveTo(LongValue& value, long exponent)
{
  const long up = value.exponent - exponent;
  if (up < 0) {
    value.lost |= ShiftRight(value.mantissa, -up);
  } else if (value.mantissa != 0) {
    value.mantissa <<= static_cast<mp_bitcnt_t>(up);
  }
  value.exponent = exponent;
}

}  // namespace

LongArithmetic::LongArithmetic(mpfr_prec_t bits)
    : n(static_cast<int>((bits + 2 + kLimbBits - 1) / kLimbBits))
{}

// ---------------------------------------------------------------------------------------------
// Values

void LongArithmetic::Add(Value& sum, const Value& value) const
{
  sum.lost |= value.lost;
  sum.inexact |= value.inexact;
  if (value.mantissa == 0) {
    // What cannot be seen still has its place.
    if (sum.mantissa == 0 && value.lost) sum.exponent = std::max(sum.exponent, value.exponent);
    return;
  }
  if (sum.mantissa == 0) {
    sum.mantissa = value.mantissa;
    sum.exponent = value.exponent;
    return;
  }
  const long top =
      std::max(sum.exponent + BitLength(sum.mantissa), value.exponent + BitLength(value.mantissa));
  const long exponent = std::max(std::min(sum.exponent, value.exponent), top - ValueBits());
  MoveTo(sum, exponent);
  if (value.exponent == exponent) {
    sum.mantissa += value.mantissa;
    return;
  }
  Value moved = value;
  MoveTo(moved, exponent);
  sum.mantissa += moved.mantissa;
  sum.lost |= moved.lost;
}

void LongArithmetic::Negate(Value& value)
{
  mpz_neg(value.mantissa.get_mpz_t(), value.mantissa.get_mpz_t());
}

void LongArithmetic::Multiply(Value& value, const Factor& factor) const
{
  value.mantissa *= factor.mantissa;
  value.exponent += factor.exponent;
  value.inexact |= factor.inexact;
  Shorten(value, ValueBits());
}

void LongArithmetic::DivideBy(Value& value, int k)
{
  if (value.mantissa == 0 || k == 1) return;
  MoveTo(value, value.exponent - kLimbBits);
  mpz_ptr mantissa = value.mantissa.get_mpz_t();
  value.lost |= mpz_tdiv_q_ui(mantissa, mantissa, static_cast<unsigned long>(k)) != 0;
}

// ---------------------------------------------------------------------------------------------
// Numbers

auto LongArithmetic::FromNumber(mpfr_srcptr x) const -> Value
{
  Value value;
  if (mpfr_regular_p(x) == 0) return value;
  mpz_ptr mantissa = value.mantissa.get_mpz_t();
  value.exponent = mpfr_get_z_2exp(mantissa, x);
  const mp_bitcnt_t zeros = mpz_scan1(mantissa, 0);
  mpz_tdiv_q_2exp(mantissa, mantissa, zeros);
  value.exponent += static_cast<long>(zeros);
  Shorten(value, ValueBits());
  value.inexact = value.lost;
  return value;
}

auto LongArithmetic::ToFactor(const Value& value) -> Factor
{
  Factor factor = value;
  factor.inexact |= value.lost;
  return factor;
}

void LongArithmetic::ToNumber(const Value& value, mpfr_ptr result)
{
  mpfr_set_z_2exp(result, value.mantissa.get_mpz_t(), value.exponent, MPFR_RNDN);
}

// ---------------------------------------------------------------------------------------------
// Terms

void LongArithmetic::Reserve(Terms& terms, int count)
{
  if (static_cast<int>(terms.rows.size()) < count) terms.rows.resize(count);
}

void LongArithmetic::Store(Terms& terms, int k, const Value& value) const
{
  terms.inexact |= value.lost || value.inexact;
  terms.rows[k].isExactZero = value.IsExactZero();
  if (terms.rows[k].isExactZero) {
    terms.Set(k, value.mantissa);
    return;
  }
  Value term = value;
  // What is not zero, but cannot be seen, is a unit of the value's own resolution.
  if (!terms.started && term.mantissa == 0) term.mantissa = 1;
  const long needed = term.mantissa == 0 ? std::numeric_limits<long>::min()
                                         : term.exponent + BitLength(term.mantissa) - TermBits();
  if (!terms.started) {
    terms.started = true;
    terms.exponent = std::max(terms.leastExponent, needed);
  } else if (needed > terms.exponent) {
    terms.Raise(needed);
  }
  term.lost = false;
  MoveTo(term, terms.exponent);
  terms.inexact |= term.lost;
  terms.Set(k, term.mantissa);
}

auto LongArithmetic::Load(const Terms& terms, int k) -> Value
{
  Value value;
  if (terms.rows[k].isExactZero) return value;
  value.mantissa = terms.Mantissa(k);
  value.exponent = terms.exponent;
  value.inexact = terms.inexact;
  value.lost = value.mantissa == 0;
  return value;
}

double LongArithmetic::Log2(const Terms& terms, int k)
{
  const LongTerms::Row& row = terms.rows[k];
  if (row.isExactZero) return -std::numeric_limits<double>::infinity();
  if (row.size == 0) return UnitLog2(terms.exponent);
  const mp_limb_t* const limbs = terms.Limbs(row);
  auto top = static_cast<double>(limbs[row.size - 1]);
  if (row.size > 1) top += static_cast<double>(limbs[row.size - 2]) * 0x1p-64;
  return FastLog2(top) + static_cast<double>(long{kLimbBits} * (row.size - 1) + terms.exponent);
}

/// Whether every product of a sum has a factor that is exactly 0.
static bool AllExactZeros(const LongTerms& a, const LongTerms& b, int first, int last, int k)
{
  for (int j = first; j <= last; ++j) {
    if (!a.rows[j].isExactZero && !b.rows[k - j].isExactZero) return false;
  }
  return true;
}

auto LongArithmetic::ValueOf(const LongSum& sum, const Terms& a, const Terms& b, int first,
                             int last, int k) const -> Value
{
  Value value;
  value.mantissa = sum.Value();
  value.exponent = a.exponent + b.exponent + LongSum::UnitBits(n);
  value.inexact = a.inexact || b.inexact;
  value.lost = value.mantissa == 0 ? !AllExactZeros(a, b, first, last, k)
                                   : a.trailingZeros + b.trailingZeros < n - 1;
  return value;
}

auto LongArithmetic::Convolve(const Terms& a, const Terms& b, int first, int last, int k) const
    -> Value
{
  if (!a.started || !b.started || first > last) return {};
  std::vector<mp_limb_t> limbs(LongSum::Size(n)), scratch(2 * static_cast<std::size_t>(n) + 3);
  LongSum sum(n, limbs.data());
  for (int j = first; j <= last; ++j) sum.AddProduct(a, j, b, k - j, false, scratch.data());
  return ValueOf(sum, a, b, first, last, k);
}

auto LongArithmetic::Convolve(Product& product, const Terms& a, const Terms& b, int first, int last,
                              int k, const Poll& poll) const -> Value
{
  if (!a.started || !b.started || first > last) return {};
  return ValueOf(product.Sum(n, a, b, {first, k - last}, k, poll), a, b, first, last, k);
}

}  // namespace varno::solve
