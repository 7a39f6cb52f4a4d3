#include "solve/evaluation/edges.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace varno::solve {

namespace {

/// Where an operation has an edge: a whole number, of its first operand or its second.
struct Place {
  int edge;
  bool isSecond;
  double power;
};

constexpr double kRoot = 0.5;

int SignOf(mpfr_srcptr x)
{
  return mpfr_sgn(x) < 0 ? -1 : 1;
}

std::optional<Place> PlaceOf(Operation operation, bool hasWholeExponent, mpfr_srcptr a,
                             mpfr_srcptr b)
{
  switch (operation) {
    case Operation::kSqrt:
      return Place{0, false, kRoot};
    case Operation::kLn:
    case Operation::kAcot:
    case Operation::kCot:
    case Operation::kCoth:
      return Place{0, false, 0};
    case Operation::kDivide:
      return Place{0, true, 0};
    case Operation::kPower:
      if (hasWholeExponent && mpfr_sgn(b) >= 0) return std::nullopt;
      return Place{0, false, std::max(0.0, mpfr_get_d(b, MPFR_RNDN))};
    case Operation::kAsin:
    case Operation::kAcos:
      return Place{SignOf(a), false, kRoot};
    case Operation::kAcosh:
      return Place{1, false, kRoot};
    case Operation::kAtanh:
    case Operation::kAcoth:
      return Place{SignOf(a), false, 0};
    case Operation::kAtan2:
      // The angle jumps to the left of the origin.
      if (mpfr_sgn(b) >= 0) return std::nullopt;
      return Place{0, false, 0};
    default:
      return std::nullopt;
  }
}

/// The integer that a is nearest to; for trunc none at 0, where it does not jump.
std::optional<Real> NearestJump(Operation operation, mpfr_srcptr a)
{
  Real jump(mpfr_get_prec(a));
  if (operation != Operation::kSign) mpfr_rint(jump, a, MPFR_RNDN);
  if (operation == Operation::kTrunc && jump.IsZero()) return std::nullopt;
  return jump;
}

/// Whether an argument is at an edge, from the distance to it and the size of both. Throws
/// EdgeInDoubt.
bool IsAt(mpfr_srcptr distance, double size, const EdgeRule& rule)
{
  const double relative = Log2Size(distance) - size;
  if (relative >= -rule.noiseBits) return false;
  if (!rule.mayDeclareZero || relative >= -rule.zeroBits) throw EdgeInDoubt();
  return true;
}

std::optional<Edge> JumpAt(Operation operation, const SizedValue& a, const SizedValue& b,
                           const EdgeRule& rule)
{
  const bool isComparison = operation == Operation::kLess || operation == Operation::kLessOrEqual;
  const double size = isComparison ? std::max(a.size, b.size) : a.size;
  if (std::isinf(size) && size < 0) return std::nullopt;
  std::optional<Real> jump(std::in_place, mpfr_get_prec(a.value));
  if (isComparison) {
    mpfr_set(*jump, b.value, MPFR_RNDN);
  } else {
    jump = NearestJump(operation, a.value);
  }
  if (!jump) return std::nullopt;
  Real distance(64);
  mpfr_sub(distance, a.value, *jump, MPFR_RNDN);
  if (!IsAt(distance, size, rule)) return std::nullopt;
  return Edge{std::move(*jump), false, 0};
}

/// Whether an operation jumps by itself, inside of its domain.
bool Jumps(Operation operation)
{
  switch (operation) {
    case Operation::kSign:
    case Operation::kFloor:
    case Operation::kCeil:
    case Operation::kTrunc:
    case Operation::kLess:
    case Operation::kLessOrEqual:
      return true;
    default:
      return false;
  }
}

}  // namespace

std::optional<Edge> EdgeAt(Operation operation, bool hasWholeExponent, const SizedValue& a,
                           const SizedValue& b, const EdgeRule& rule)
{
  if (Jumps(operation)) return JumpAt(operation, a, b, rule);
  const std::optional<Place> place = PlaceOf(operation, hasWholeExponent, a.value, b.value);
  if (!place) return std::nullopt;
  const SizedValue& argument = place->isSecond ? b : a;
  if (std::isinf(argument.size) && argument.size < 0) return std::nullopt;

  Real distance(64);
  mpfr_sub_si(distance, argument.value, place->edge, MPFR_RNDN);
  if (!IsAt(distance, argument.size, rule)) return std::nullopt;
  Edge edge{Real(mpfr_get_prec(argument.value)), place->isSecond, place->power};
  mpfr_set_si(edge.argument, place->edge, MPFR_RNDN);
  return edge;
}

bool IsOnPole(Operation operation, mpfr_srcptr result, double angleSize, const EdgeRule& rule)
{
  if (operation != Operation::kTan && operation != Operation::kCot) return false;
  const double relative = -Log2Size(result) - angleSize;
  if (relative >= -rule.noiseBits) return false;
  if (!rule.mayDeclareZero || relative >= -rule.zeroBits) throw EdgeInDoubt();
  return true;
}

double SizeAtEdge(const Edge& edge, mpfr_srcptr result, double argumentSize, const EdgeRule& rule)
{
  const double own = Log2Size(result);
  if (edge.power == 0) return own;
  // acos(1 - d) is about (2 d)^(1/2).
  const double nearby = edge.power * (argumentSize - rule.zeroBits + 1);
  return std::max(own, nearby + rule.zeroBits);
}

}  // namespace varno::solve
