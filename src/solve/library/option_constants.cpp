#include "solve/library/option_constants.h"

#include <varno/solve.h>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/model/constant_expression.h"
#include "solve/source/diagnostics.h"

namespace varno::solve {

namespace {

/// With which precision a constant is tried, to see whether it has a value.
constexpr mpfr_prec_t kTrialBits = 64;
/// Bits beyond those asked for, against what cancels inside an expression.
constexpr mpfr_prec_t kGuardBits = 64;

}  // namespace

Moment OptionConstants::Read(const std::string& option, const std::string& text)
{
  Diagnostics diagnostics;
  const std::optional<NodeId> constant = ReadConstantExpression(option, text, model, sources, diagnostics);
  if (!constant) throw InputError(Render(diagnostics, sources));
  return Of(*constant);
}

Moment OptionConstants::Of(NodeId constant)
{
  if (model.graph.IsNumber(constant)) return Moment(model.graph.Value(constant));
  try {
    EvaluateConstant(model.graph, constant, kTrialBits);
  } catch (const DomainError& error) {
    Diagnostics diagnostics;
    diagnostics.Error(model.graph[error.node].place, "this constant has no value");
    throw InputError(Render(diagnostics, sources));
  }
  std::shared_ptr<const Constant>& value = known[constant];
  if (value == nullptr) {
    value = std::make_shared<const Constant>([&graph = model.graph, constant](mpfr_ptr result) {
      const Real exact = EvaluateConstant(graph, constant, mpfr_get_prec(result) + kGuardBits);
      mpfr_set(result, exact, MPFR_RNDN);
    });
  }
  return Moment(value);
}

}  // namespace varno::solve
