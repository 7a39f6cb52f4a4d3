#include "solve/model/evaluate_constant.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "solve/model/exact_values.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kGuardBits = 64;
constexpr mpfr_exp_t kMaxAngleExponent = 65536;
constexpr mpfr_prec_t kComparedBits = 2000;
constexpr mpfr_exp_t kAgreeingBits = 1000;

/// The widest range of exponents that MPFR has, instead of its usual one, which 1e1000000000
/// exceeds.
class ScopedExponentRange {
 public:
  ScopedExponentRange() : oldMin(mpfr_get_emin()), oldMax(mpfr_get_emax())
  {
    mpfr_set_emin(mpfr_get_emin_min());
    mpfr_set_emax(mpfr_get_emax_max());
  }
  ScopedExponentRange(const ScopedExponentRange&) = delete;
  ScopedExponentRange& operator=(const ScopedExponentRange&) = delete;
  ~ScopedExponentRange()
  {
    mpfr_set_emin(oldMin);
    mpfr_set_emax(oldMax);
  }

 private:
  mpfr_exp_t oldMin;
  mpfr_exp_t oldMax;
};

bool IsLargeAngle(mpfr_srcptr x)
{
  return mpfr_regular_p(x) != 0 && mpfr_get_exp(x) > kMaxAngleExponent;
}

using UnaryFunction = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

/// acot(x) = pi/2 - atan(x)
int ArcCotangent(mpfr_ptr result, mpfr_srcptr x, mpfr_rnd_t rounding)
{
  Real halfPi(mpfr_get_prec(result));
  mpfr_const_pi(halfPi, rounding);
  mpfr_div_2ui(halfPi, halfPi, 1, rounding);
  mpfr_atan(result, x, rounding);
  return mpfr_sub(result, halfPi, result, rounding);
}

/// acoth(x) = atanh(1/x)
int HyperbolicArcCotangent(mpfr_ptr result, mpfr_srcptr x, mpfr_rnd_t rounding)
{
  mpfr_ui_div(result, 1, x, rounding);
  return mpfr_atanh(result, result, rounding);
}

UnaryFunction FunctionOf(Operation operation)
{
  switch (operation) {
    case Operation::kNegate:
      return mpfr_neg;
    case Operation::kSqrt:
      return mpfr_sqrt;
    case Operation::kCbrt:
      return mpfr_cbrt;
    case Operation::kExp:
      return mpfr_exp;
    case Operation::kLn:
      return mpfr_log;
    case Operation::kSin:
      return mpfr_sin;
    case Operation::kCos:
      return mpfr_cos;
    case Operation::kTan:
      return mpfr_tan;
    case Operation::kCot:
      return mpfr_cot;
    case Operation::kAsin:
      return mpfr_asin;
    case Operation::kAcos:
      return mpfr_acos;
    case Operation::kAtan:
      return mpfr_atan;
    case Operation::kAcot:
      return ArcCotangent;
    case Operation::kSinh:
      return mpfr_sinh;
    case Operation::kCosh:
      return mpfr_cosh;
    case Operation::kTanh:
      return mpfr_tanh;
    case Operation::kCoth:
      return mpfr_coth;
    case Operation::kAsinh:
      return mpfr_asinh;
    case Operation::kAcosh:
      return mpfr_acosh;
    case Operation::kAtanh:
      return mpfr_atanh;
    case Operation::kAcoth:
      return HyperbolicArcCotangent;
    case Operation::kErf:
      return mpfr_erf;
    default:
      return nullptr;
  }
}

bool TakesAngle(Operation operation)
{
  return operation == Operation::kSin || operation == Operation::kCos ||
         operation == Operation::kTan || operation == Operation::kCot;
}

class Evaluation {
 public:
  Evaluation(const Graph& graph, const std::vector<Parameter>& parameters, mpfr_prec_t bits)
      : graph(graph), parameters(parameters), bits(bits)
  {}

  const Real& Of(NodeId root)
  {
    Mark(root);
    for (NodeId id = 0; id <= root; ++id) {
      if (needed[id]) Evaluate(id);
    }
    return values.at(root);
  }

 private:
  /// Marks what a node is made of. Operands, and the values of parameters, have smaller numbers.
  void Mark(NodeId root)
  {
    needed.assign(root + 1, false);
    needed[root] = true;
    for (NodeId id = root + 1; id-- > 0;) {
      if (!needed[id]) continue;
      const Node& node = graph[id];
      if (node.operation == Operation::kParameter) needed[parameters[node.index].value] = true;
      for (int i = 0; i < node.operandCount; ++i) needed[node.operands[i]] = true;
    }
  }

  void Evaluate(NodeId id)
  {
    const Node& node = graph[id];
    Real value(bits);
    switch (node.operandCount) {
      case 0:
        EvaluateLeaf(value, id);
        break;
      case 1:
        EvaluateUnary(value, node.operation, values.at(node.operands[0]));
        break;
      default:
        EvaluateBinary(value, node, values.at(node.operands[0]), values.at(node.operands[1]));
        break;
    }
    values.insert_or_assign(id, std::move(value));
  }

  void EvaluateLeaf(mpfr_ptr value, NodeId id)
  {
    switch (graph[id].operation) {
      case Operation::kNumber:
        mpfr_set_q(value, graph.Value(id).get_mpq_t(), MPFR_RNDN);
        break;
      case Operation::kPi:
        mpfr_const_pi(value, MPFR_RNDN);
        break;
      case Operation::kParameter:
        mpfr_set(value, values.at(parameters[graph[id].index].value), MPFR_RNDN);
        break;
      default:
        mpfr_set_nan(value);  // no constant
        break;
    }
  }

  static void EvaluateUnary(mpfr_ptr value, Operation operation, mpfr_srcptr a)
  {
    if (TakesAngle(operation) && IsLargeAngle(a)) {
      mpfr_set_nan(value);
    } else {
      FunctionOf(operation)(value, a, MPFR_RNDN);
    }
  }

  void EvaluateBinary(mpfr_ptr value, const Node& node, mpfr_srcptr a, mpfr_srcptr b)
  {
    switch (node.operation) {
      case Operation::kAdd:
        mpfr_add(value, a, b, MPFR_RNDN);
        break;
      case Operation::kSubtract:
        mpfr_sub(value, a, b, MPFR_RNDN);
        break;
      case Operation::kMultiply:
        mpfr_mul(value, a, b, MPFR_RNDN);
        break;
      case Operation::kDivide:
        mpfr_div(value, a, b, MPFR_RNDN);
        break;
      case Operation::kPower:
        EvaluatePower(value, node, a, b);
        break;
      case Operation::kAtan2:
        mpfr_atan2(value, a, b, MPFR_RNDN);
        break;
      default:
        mpfr_set_nan(value);
        break;
    }
  }

  void EvaluatePower(mpfr_ptr value, const Node& node, mpfr_srcptr a, mpfr_srcptr b)
  {
    const NodeId exponent = node.operands[1];
    if (graph.IsNumber(exponent) && graph.Value(exponent).get_den() == 1) {
      mpfr_pow_z(value, a, graph.Value(exponent).get_num_mpz_t(), MPFR_RNDN);
    } else {
      mpfr_pow(value, a, b, MPFR_RNDN);
    }
  }

  const Graph& graph;
  const std::vector<Parameter>& parameters;
  mpfr_prec_t bits;
  std::vector<bool> needed;
  std::unordered_map<NodeId, Real> values;
};

}  // namespace

void EvaluateConstant(mpfr_ptr result, const Graph& graph, const std::vector<Parameter>& parameters,
                      NodeId id)
{
  const ScopedExponentRange range;
  Evaluation evaluation(graph, parameters, mpfr_get_prec(result) + kGuardBits);
  mpfr_set(result, evaluation.Of(id), MPFR_RNDN);
}

bool AreEqualConstants(const Graph& graph, const std::vector<Parameter>& parameters, NodeId a,
                       NodeId b)
{
  if (a == b) return true;
  ExactValues exact(graph, parameters);
  const std::optional<Rational> exactA = exact.Of(a);
  const std::optional<Rational> exactB = exact.Of(b);
  if (exactA && exactB) return *exactA == *exactB;

  Real x(kComparedBits), y(kComparedBits);
  EvaluateConstant(x, graph, parameters, a);
  EvaluateConstant(y, graph, parameters, b);
  if (mpfr_number_p(x) == 0 || mpfr_number_p(y) == 0) return false;
  const ScopedExponentRange range;
  Real difference(kComparedBits);
  mpfr_sub(difference, x, y, MPFR_RNDN);
  if (difference.IsZero()) return true;
  // Where the one is 0, the other is noise if it is as small beside 1.
  mpfr_exp_t size = 1;
  if (!x.IsZero() && !y.IsZero()) size = std::max(mpfr_get_exp(x), mpfr_get_exp(y));
  return mpfr_get_exp(difference) < size - kAgreeingBits;
}

}  // namespace varno::solve
