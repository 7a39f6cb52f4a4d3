#include "solve/model/value_faults.h"

#include <mpfr.h>

#include "solve/number/exponent_range.h"

namespace varno::solve {

namespace {

/// An irrational constant this near to a bound, relatively (log2), may lie on it.
constexpr long kNearLog2 = -60;

}  // namespace

/// The sign of constant - bound; none where it is not known.
std::optional<int> ValueFaults::Compare(NodeId constant, int bound)
{
  if (const std::optional<Rational>& value = exact.Of(constant)) return cmp(*value, bound);
  const std::optional<Real>& value = real.Of(constant);
  if (!value) return std::nullopt;
  if (bound == 0) return mpfr_sgn(static_cast<mpfr_srcptr>(*value));
  Real difference(64);
  mpfr_sub_si(difference, *value, bound, MPFR_RNDN);
  if (difference.IsZero() || mpfr_get_exp(static_cast<mpfr_srcptr>(difference)) < kNearLog2)
    return std::nullopt;
  return mpfr_sgn(static_cast<mpfr_srcptr>(difference));
}

/// Irrational constants that happen to be integers count as unknown.
std::optional<bool> ValueFaults::IsInteger(NodeId constant)
{
  if (const std::optional<Rational>& value = exact.Of(constant)) return value->get_den() == 1;
  const std::optional<Real>& value = real.Of(constant);
  if (!value) return std::nullopt;
  Real whole(value->Bits()), rest(64);
  mpfr_rint(whole, *value, MPFR_RNDN);
  mpfr_sub(rest, *value, whole, MPFR_RNDN);
  if (rest.IsZero() || mpfr_get_exp(static_cast<mpfr_srcptr>(rest)) < kNearLog2)
    return std::nullopt;
  return false;
}

/// Whether the tangent or cotangent has a pole at an angle that is no fraction, such as pi/2.
bool ValueFaults::IsPole(NodeId angle, bool ofTangent)
{
  if (exact.Of(angle)) return !ofTangent && *exact.Of(angle) == 0;
  const std::optional<Real>& value = real.Of(angle);
  // Beyond 2^64 the bits of the value do not tell.
  if (!value) return false;
  if (value->IsZero()) return !ofTangent;
  if (mpfr_get_exp(static_cast<mpfr_srcptr>(*value)) > 64) return false;
  const ScopedExponentRange range;
  Real divisor(64);
  ofTangent ? mpfr_cos(divisor, *value, MPFR_RNDN) : mpfr_sin(divisor, *value, MPFR_RNDN);
  return divisor.IsZero() || mpfr_get_exp(static_cast<mpfr_srcptr>(divisor)) <
                                 mpfr_get_exp(static_cast<mpfr_srcptr>(*value)) + kNearLog2;
}

const char* ValueFaults::OfPower(NodeId base, NodeId exponent)
{
  const std::optional<int> baseSign = Compare(base, 0);
  if (!baseSign) return "";
  if (*baseSign == 0) return Compare(exponent, 0) == -1 ? "division by zero" : "";
  return *baseSign < 0 && IsInteger(exponent) == false
             ? "a power of a negative number whose exponent is no integer"
             : "";
}

std::optional<bool> ValueFaults::Holds(NodeId condition)
{
  const std::optional<Rational>& value = exact.Of(condition);
  return value ? std::optional(*value != 0) : std::nullopt;
}

std::string ValueFaults::Of(NodeId operation)
{
  const Node& node = graph[operation];
  if (node.operandCount == 0) return {};
  const NodeId a = node.operands[0];
  const auto isBelow = [&](int bound) { return Compare(a, bound).value_or(0) < 0; };
  const auto isAbove = [&](int bound) { return Compare(a, bound).value_or(0) > 0; };
  const auto equals = [&](int bound) { return Compare(a, bound) == 0; };
  switch (node.operation) {
    case Operation::kDivide:
      return Compare(node.operands[1], 0) == 0 ? "division by zero" : "";
    case Operation::kPower:
      return OfPower(a, node.operands[1]);
    case Operation::kSqrt:
      return isBelow(0) ? "the square root of a negative number" : "";
    case Operation::kLn:
      return isBelow(0) || equals(0) ? "the logarithm of a number that is not positive" : "";
    case Operation::kAsin:
      return isBelow(-1) || isAbove(1) ? "the arcus sine of a number outside of -1 to 1" : "";
    case Operation::kAcos:
      return isBelow(-1) || isAbove(1) ? "the arcus cosine of a number outside of -1 to 1" : "";
    case Operation::kAcosh:
      return isBelow(1) ? "the inverse hyperbolic cosine of a number below 1" : "";
    case Operation::kAtanh:
      return isBelow(-1) || isAbove(1) || equals(-1) || equals(1)
                 ? "the inverse hyperbolic tangent of a number not between -1 and 1"
                 : "";
    case Operation::kAcoth:
      return (isAbove(-1) && isBelow(1)) || equals(-1) || equals(1)
                 ? "the inverse hyperbolic cotangent of a number from -1 to 1"
                 : "";
    case Operation::kTan:
      return IsPole(a, true) ? "the tangent at one of its poles" : "";
    case Operation::kCot:
      if (equals(0)) return "the cotangent of zero";
      return IsPole(a, false) ? "the cotangent at one of its poles" : "";
    case Operation::kCoth:
      return equals(0) ? "the cotangent of zero" : "";
    default:
      return {};
  }
}

}  // namespace varno::solve
