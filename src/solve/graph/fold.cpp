#include "solve/graph/fold.h"

#include <algorithm>

namespace varno::solve {

namespace {

std::size_t Bits(const Integer& number)
{
  return mpz_sizeinbase(number.get_mpz_t(), 2);
}

Integer Power(const Integer& base, unsigned long exponent)
{
  Integer result;
  mpz_pow_ui(result.get_mpz_t(), base.get_mpz_t(), exponent);
  return result;
}

std::optional<Rational> Power(const Rational& base, const Rational& exponent)
{
  if (exponent.get_den() != 1) return std::nullopt;
  if (exponent == 0) return Rational(1);
  if (base == 0) return exponent > 0 ? std::optional(Rational(0)) : std::nullopt;
  if (base == 1) return base;
  if (base == -1) return mpz_even_p(exponent.get_num_mpz_t()) != 0 ? Rational(1) : base;

  // A base of b bits is at least 2^(b-1), so its power n has at least n (b-1) bits.
  const std::size_t bits = std::max(Bits(base.get_num()), Bits(base.get_den())) - 1;
  const Integer size = abs(exponent.get_num());
  if (size > kMaxExactBits || size * bits > kMaxExactBits) return std::nullopt;
  const Integer numerator = Power(base.get_num(), size.get_ui());
  const Integer denominator = Power(base.get_den(), size.get_ui());
  Rational result =
      exponent > 0 ? Rational(numerator, denominator) : Rational(denominator, numerator);
  result.canonicalize();
  return result;
}

Rational Floor(const Rational& x)
{
  Integer result;
  mpz_fdiv_q(result.get_mpz_t(), x.get_num_mpz_t(), x.get_den_mpz_t());
  return result;
}

Rational Ceil(const Rational& x)
{
  return -Floor(-x);
}

}  // namespace

bool IsSmall(const Rational& number)
{
  return Bits(number.get_num()) <= kMaxExactBits && Bits(number.get_den()) <= kMaxExactBits;
}

std::optional<Rational> FoldExactly(Operation operation, const Rational& a)
{
  switch (operation) {
    case Operation::kNegate:
      return Rational(-a);
    case Operation::kAbs:
      return Rational(abs(a));
    case Operation::kSign:
      return Rational(sgn(a));
    case Operation::kFloor:
      return Floor(a);
    case Operation::kCeil:
      return Ceil(a);
    case Operation::kTrunc:
      return a < 0 ? Ceil(a) : Floor(a);
    case Operation::kNot:
      return Rational(a == 0);
    default:
      return std::nullopt;
  }
}

std::optional<Rational> FoldExactly(Operation operation, const Rational& a, const Rational& b)
{
  switch (operation) {
    case Operation::kMin:
      return std::min(a, b);
    case Operation::kMax:
      return std::max(a, b);
    case Operation::kLess:
      return Rational(a < b);
    case Operation::kLessOrEqual:
      return Rational(a <= b);
    case Operation::kAnd:
      return Rational(a != 0 && b != 0);
    case Operation::kOr:
      return Rational(a != 0 || b != 0);
    default:
      break;
  }
  if (!IsSmall(a) || !IsSmall(b)) return std::nullopt;
  std::optional<Rational> result;
  switch (operation) {
    case Operation::kAdd:
      result = a + b;
      break;
    case Operation::kSubtract:
      result = a - b;
      break;
    case Operation::kMultiply:
      result = a * b;
      break;
    case Operation::kDivide:
      if (b != 0) result = a / b;
      break;
    case Operation::kPower:
      result = Power(a, b);
      break;
    default:
      break;
  }
  if (result && !IsSmall(*result)) result.reset();
  return result;
}

}  // namespace varno::solve
