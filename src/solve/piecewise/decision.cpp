#include "solve/piecewise/decision.h"

#include <algorithm>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/number/real.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kBits = 64;
/// No larger number is asked which integer it is.
constexpr mpfr_exp_t kMostIntegerBits = 1L << 20;

/// 2n and the sign of a distance from n.
Decision Beside(const Integer& n, int sign)
{
  return 2 * n + sign;
}

Integer NearestInteger(mpfr_srcptr value)
{
  Integer result;
  mpfr_get_z(result.get_mpz_t(), value, MPFR_RNDN);
  return result;
}

int SignOf(const Real& value)
{
  return mpfr_sgn(static_cast<mpfr_srcptr>(value));
}

mpfr_exp_t Exponent(const Real& value)
{
  return value.IsZero() ? 0 : mpfr_get_exp(static_cast<mpfr_srcptr>(value));
}

/// Bits that hold a number's whole part and some more.
mpfr_prec_t BitsFor(const Moment& moment)
{
  Real value(kBits);
  moment.Evaluate(value);
  return kBits + std::max<mpfr_exp_t>(Exponent(value), 0);
}

}  // namespace

Decision DecisionOf(ConditionKind kind, const Rational& value)
{
  if (kind == ConditionKind::kSign) return sgn(value);
  Integer floor;
  mpz_fdiv_q(floor.get_mpz_t(), value.get_num_mpz_t(), value.get_den_mpz_t());
  return Beside(floor, value.get_den() == 1 ? 0 : 1);
}

Decision DecisionOf(ConditionKind kind, const TimeForm& form, const Moment& time, bool backwards)
{
  const Moment value = time * form.slope + Moment(form.constant);
  Integer n = 0;
  if (kind == ConditionKind::kInteger) {
    Real number(BitsFor(value));
    value.Evaluate(number);
    n = NearestInteger(number);
  }
  const int sign = (value - Moment(Rational(n))).Sign();
  if (sign != 0) return Beside(n, sign);
  return Beside(n, backwards ? -sgn(form.slope) : sgn(form.slope));
}

Nearest NearestBoundary(ConditionKind kind, NodeId node, const Real& value)
{
  if (Exponent(value) > kMostIntegerBits) throw DomainError{Outcome::kOutOfRange, node, value};
  Nearest nearest{0, 0, 0};
  if (kind == ConditionKind::kInteger) nearest.integer = NearestInteger(value);
  Real distance(value.Bits());
  mpfr_sub_z(distance, value, nearest.integer.get_mpz_t(), MPFR_RNDN);
  nearest.decision = Beside(nearest.integer, SignOf(distance));
  nearest.distance = Log2Size(distance);
  return nearest;
}

Decision DecisionOfConstant(ConditionKind kind, Graph& graph, NodeId constant)
{
  if (graph.IsNumber(constant)) return DecisionOf(kind, graph.Value(constant));
  const Real rough = EvaluateConstant(graph, constant, kBits);
  if (kind == ConditionKind::kSign) return SignOf(rough);

  const mpfr_prec_t wholeBits = std::clamp<mpfr_exp_t>(Exponent(rough), 0, kMostIntegerBits);
  const Real value = EvaluateConstant(graph, constant, kBits + wholeBits);
  const Integer n = NearestBoundary(kind, constant, value).integer;
  const NodeId distance =
      graph.Make(Operation::kSubtract, constant, graph.Number(n, {}), graph[constant].place);
  return Beside(n, SignOf(EvaluateConstant(graph, distance, kBits)));
}

}  // namespace varno::solve
