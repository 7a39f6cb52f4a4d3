#include "solve/evaluation/size.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace varno::solve {

namespace {

/// log2 of |1 + sign u^2|, from log2 |u|.
double Log2OnePlusSquare(double u, mpfr_srcptr value, int sign)
{
  if (u > 30) return 2 * u;
  const double x = mpfr_get_d(value, MPFR_RNDN);
  return std::log2(std::abs(1 + sign * x * x));
}

/// log2 |f'(u)| for a function f of one argument.
double Log2Derivative(Operation function, mpfr_srcptr result, mpfr_srcptr argument)
{
  const double f = Log2Size(result), u = Log2Size(argument);
  switch (function) {
    case Operation::kNegate:
      return 0;
    case Operation::kSqrt:
      return -1 - f;
    case Operation::kCbrt:
      return -std::log2(3.0) - 2 * f;
    case Operation::kExp:
      return f;
    case Operation::kLn:
      return -u;
    case Operation::kSin:
      return u > 50 ? 0 : std::log2(std::abs(std::cos(mpfr_get_d(argument, MPFR_RNDN))));
    case Operation::kCos:
      return u > 50 ? 0 : std::log2(std::abs(std::sin(mpfr_get_d(argument, MPFR_RNDN))));
    case Operation::kTan:
    case Operation::kCot:
      return Log2OnePlusSquare(f, result, 1);
    case Operation::kSinh:
    case Operation::kCosh:
      return std::max(0.0, f);
    case Operation::kTanh:
    case Operation::kCoth:
      return Log2OnePlusSquare(f, result, -1);
    case Operation::kAsin:
    case Operation::kAcos:
    case Operation::kAcosh:
      return -0.5 * Log2OnePlusSquare(u, argument, -1);
    case Operation::kAsinh:
      return -0.5 * Log2OnePlusSquare(u, argument, 1);
    case Operation::kAtan:
    case Operation::kAcot:
      return -Log2OnePlusSquare(u, argument, 1);
    case Operation::kAtanh:
    case Operation::kAcoth:
      return -Log2OnePlusSquare(u, argument, -1);
    case Operation::kErf:
      return u > 10 ? f : 0.17 - std::numbers::log2e * std::exp2(2 * u);
    default:
      return 0;
  }
}

/// What errors of the operands make of one in the result, as log2.
double Effect(Operation operation, mpfr_srcptr result, const SizedValue& a, const SizedValue& b)
{
  switch (operation) {
    case Operation::kAdd:
    case Operation::kSubtract:
      return std::max(a.size, b.size);
    case Operation::kMultiply:
      return std::max(a.size + Log2Size(b.value), Log2Size(a.value) + b.size);
    case Operation::kDivide:
      return std::max(a.size, Log2Size(result) + b.size) - Log2Size(b.value);
    case Operation::kPower: {
      // a^b: relative errors b da/a and ln(a) db
      const double base = Log2Size(a.value);
      const double logarithm = std::log2(std::max(std::abs(base) * std::numbers::ln2, 1.0));
      return Log2Size(result) + std::max(Log2Size(b.value) + a.size - base, logarithm + b.size);
    }
    case Operation::kMin:
    case Operation::kMax:
      // Where they are equal, either may be the one.
      if (mpfr_equal_p(a.value, b.value) != 0) return std::max(a.size, b.size);
      return mpfr_equal_p(result, a.value) != 0 ? a.size : b.size;
    case Operation::kSign:
    case Operation::kFloor:
    case Operation::kCeil:
    case Operation::kTrunc:
    case Operation::kLess:
    case Operation::kLessOrEqual:
    case Operation::kNot:
      // Constant beside a jump.
      return -std::numeric_limits<double>::infinity();
    case Operation::kAtan2:
      return std::max(a.size, b.size) - std::max(Log2Size(a.value), Log2Size(b.value));
    default:
      return Log2Derivative(operation, result, a.value) + a.size;
  }
}

}  // namespace

double Log2Size(mpfr_srcptr x)
{
  if (mpfr_zero_p(x) != 0) return -std::numeric_limits<double>::infinity();
  if (mpfr_number_p(x) == 0) return std::numeric_limits<double>::infinity();
  // Its first 53 bits: many sizes are asked for in a step.
  const auto* const limbs = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  const std::uint64_t first = limbs[(mpfr_get_prec(x) - 1) / GMP_NUMB_BITS];
  const double mantissa = static_cast<double>(first >> 11) * 0x1p-53;
  return static_cast<double>(mpfr_get_exp(x)) + std::log2(mantissa);
}

double Log2Size(const Moment& moment)
{
  Real value(53);
  moment.Evaluate(value);
  return Log2Size(value);
}

double SizeOfResult(Operation operation, mpfr_srcptr result, const SizedValue& a,
                    const SizedValue& b)
{
  const double own = Log2Size(result), effect = Effect(operation, result, a, b);
  // NaN: a factor 0 beside an operand without bounds.
  return std::isnan(effect) ? own : std::max(own, effect);
}

}  // namespace varno::solve
