#include "solve/model/equal_constants.h"

#include <optional>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
#include "solve/model/exact_values.h"
#include "solve/number/exponent_range.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kComparedBits = 2000;
constexpr mpfr_exp_t kAgreeingBits = 1000;

}  // namespace

bool AreEqualConstants(const Graph& graph, const std::vector<Parameter>& parameters, NodeId a,
                       NodeId b)
{
  if (a == b) return true;
  ExactValues exact(graph, parameters);
  const std::optional<Rational> exactA = exact.Of(a), exactB = exact.Of(b);
  if (exactA && exactB) return *exactA == *exactB;

  const ScopedExponentRange range;
  std::vector<NodeId> values;
  values.reserve(parameters.size());
  for (const Parameter& parameter : parameters) values.push_back(parameter.value);
  try {
    const Real x = EvaluateConstant(graph, a, kComparedBits, values);
    const Real y = EvaluateConstant(graph, b, kComparedBits, values);
    Real difference(kComparedBits);
    mpfr_sub(difference, x, y, MPFR_RNDN);
    return difference.IsZero() ||
           (!x.IsZero() && mpfr_get_exp(difference) < mpfr_get_exp(x) - kAgreeingBits);
  } catch (const DomainError&) {
    return false;
  }
}

}  // namespace varno::solve
