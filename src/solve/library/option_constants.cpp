#include "solve/library/option_constants.h"

#include <algorithm>
#include <string>
#include <utility>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
#include "solve/model/binding.h"
#include "solve/model/build_model.h"
#include "solve/source/diagnostics.h"

namespace varno::solve {

namespace {

/// With which precision a constant is tried, to see whether it has a value.
constexpr mpfr_prec_t kTrialBits = 64;

/// Adds an event at the maxima of a variable, as the last one.
void AddMaxima(Model& model, const std::string& variable)
{
  const auto state = std::ranges::find(model.states, variable, &State::name);
  if (state == model.states.end())
    throw InputError("--period: there is no variable '" + variable + "'");
  model.events.push_back({.name = {},
                          .expression = state->rightHandSide,
                          .crossing = Crossing::kFalling,
                          .stops = false,
                          .assignments = {},
                          .place = state->place});
}

}  // namespace

std::vector<NodeId*> OptionConstants::Nodes()
{
  std::vector<NodeId*> nodes{&to};
  for (auto* const constant : {&from, &every, &steady}) {
    if (*constant) nodes.push_back(&**constant);
  }
  for (NodeId& time : at) nodes.push_back(&time);
  for (NodeId& variable : variables) nodes.push_back(&variable);
  return nodes;
}

BoundProblem Bind(const Model& model, const Options& options, Sources& sources,
                  const std::vector<std::uint32_t>& open)
{
  Model reading = model;
  if (options.period) AddMaxima(reading, *options.period);
  const auto read = [&](const char* option, const std::string& text) {
    return AddConstant(reading, text, option, sources);
  };
  OptionConstants constants{.from = {},
                            .every = {},
                            .steady = {},
                            .to = read("--to", options.to),
                            .at = {},
                            .variables = {}};
  if (options.from) constants.from = read("--from", *options.from);
  if (options.steady) constants.steady = read("--steady", *options.steady);
  if (const auto* every = std::get_if<RowsEvery>(&options.rows))
    constants.every = read("--every", every->interval);
  if (const auto* at = std::get_if<RowsAt>(&options.rows)) {
    for (const std::string& time : at->times) constants.at.push_back(read("--at", time));
  }

  if (options.period) {
    for (std::uint32_t i = 0; i < reading.states.size(); ++i)
      constants.variables.push_back(reading.graph.State(i, reading.states[i].place));
  }

  Model bound = BindParameters(reading, constants.Nodes(), open);
  return {std::move(bound), std::move(constants)};
}

Moment ConstantMoments::operator()(NodeId constant)
{
  if (graph.IsNumber(constant)) return Moment(graph.Value(constant));
  try {
    EvaluateConstant(graph, constant, kTrialBits);
  } catch (const DomainError& error) {
    Diagnostics diagnostics;
    diagnostics.Error(graph[error.node].place, "this constant has no value");
    throw InputError(Render(diagnostics, sources));
  }
  std::shared_ptr<const Constant>& value = known[constant];
  if (value == nullptr) {
    value = std::make_shared<const Constant>([&graph = graph, constant](mpfr_ptr result) {
      const Real exact = EvaluateConstant(graph, constant, mpfr_get_prec(result));
      mpfr_set(result, exact, MPFR_RNDN);
    });
  }
  return Moment(value);
}

}  // namespace varno::solve
