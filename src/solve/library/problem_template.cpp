#include "solve/library/problem_template.h"

#include <utility>

namespace varno::solve {

namespace {

template <class WithGraph>
WithGraph WithoutGraph(WithGraph whole)
{
  whole.graph = Graph();
  return whole;
}

/// Changes all nodes of a problem to their copies.
void MoveInto(SubstitutedGraph substituted, BoundProblem& bound)
{
  const std::vector<NodeId>& copies = substituted.copies;
  for (NodeId* const node : bound.model.Nodes()) *node = copies[*node];
  for (NodeId* const node : bound.constants.Nodes()) *node = copies[*node];
  bound.model.graph = std::move(substituted.graph);
}

/// The times of the run, which are read before values come in.
std::vector<NodeId> Times(const BoundProblem& bound)
{
  const OptionConstants& constants = bound.constants;
  std::vector<NodeId> times = constants.at;
  times.push_back(constants.to);
  for (const auto& time : {constants.from, constants.every, bound.model.startPoint}) {
    if (time) times.push_back(*time);
  }
  return times;
}

}  // namespace

TapeTemplate::TapeTemplate(const Tape& given)
    : graph(given.graph), substitution(graph), tape(WithoutGraph(given))
{}

std::optional<Tape> TapeTemplate::With(std::span<const Rational> values,
                                       std::uint32_t firstFree) const
{
  std::optional<SubstitutedGraph> substituted = substitution.Apply(graph, values, firstFree);
  if (!substituted) return std::nullopt;
  Tape filled = tape;
  for (Line& line : filled.lines) line.node = substituted->copies[line.node];
  for (NodeId& constant : filled.constants) constant = substituted->copies[constant];
  filled.graph = std::move(substituted->graph);
  return filled;
}

ProblemTemplate::ProblemTemplate(CompiledProblem compiled, std::vector<std::uint32_t> parameterOf,
                                 std::uint32_t firstStart)
    : problem(std::move(compiled)),
      inModel(problem.bound.model.graph, Times(problem.bound)),
      parameterOf(std::move(parameterOf)),
      firstStart(firstStart),
      model(WithoutGraph(problem.bound.model))
{
  if (problem.tape) tape.emplace(*problem.tape);
}

bool ProblemTemplate::IsStructural(std::size_t name) const
{
  const std::uint32_t parameter = parameterOf[name];
  return inModel.IsStructural(parameter) || (tape && tape->IsStructural(parameter));
}

std::optional<CompiledProblem> ProblemTemplate::With(const std::vector<SweptValue>& values) const
{
  std::vector<Rational> numbers(firstStart + problem.bound.model.states.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (parameterOf[i] == kNone) continue;
    if (values[i].fraction.empty()) return std::nullopt;
    numbers[parameterOf[i]] = Rational(values[i].fraction);
  }
  std::optional<SubstitutedGraph> graph =
      inModel.Apply(problem.bound.model.graph, numbers, firstStart);
  if (!graph) return std::nullopt;
  BoundProblem bound{model, problem.bound.constants};
  MoveInto(*std::move(graph), bound);
  if (!tape) return CompiledProblem(problem.sources, std::move(bound), std::nullopt);
  std::optional<Tape> filled = tape->With(numbers, firstStart);
  if (!filled) return std::nullopt;
  return CompiledProblem(problem.sources, std::move(bound), std::move(filled));
}

}  // namespace varno::solve
