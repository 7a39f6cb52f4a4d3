#include "solve/evaluation/edges.h"

#include <algorithm>
#include <cmath>

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

}  // namespace

std::optional<Edge> EdgeAt(Operation operation, bool hasWholeExponent, const SizedValue& a,
                           const SizedValue& b, const EdgeRule& rule)
{
  const std::optional<Place> place = PlaceOf(operation, hasWholeExponent, a.value, b.value);
  if (!place) return std::nullopt;
  const SizedValue& argument = place->isSecond ? b : a;
  if (std::isinf(argument.size) && argument.size < 0) return std::nullopt;

  Real distance(64);
  mpfr_sub_si(distance, argument.value, place->edge, MPFR_RNDN);
  const double relative = Log2Size(distance) - argument.size;
  if (relative >= -rule.noiseBits) return std::nullopt;
  if (!rule.mayDeclareZero || relative >= -rule.zeroBits) throw EdgeInDoubt();
  Edge edge{Real(mpfr_get_prec(argument.value)), place->isSecond, place->power};
  mpfr_set_si(edge.argument, place->edge, MPFR_RNDN);
  return edge;
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
