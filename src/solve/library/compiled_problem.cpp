#include "solve/library/compiled_problem.h"

#include <utility>

#include "solve/piecewise/pieces.h"
#include "solve/source/diagnostics.h"
#include "solve/tape/compile.h"

namespace varno::solve {

CompiledProblem::CompiledProblem(std::shared_ptr<const Sources> sources, BoundProblem bound,
                                 std::optional<Tape> tape)
    : sources(std::move(sources)), bound(std::move(bound)), tape(std::move(tape))
{}

CompiledProblem::CompiledProblem(Sources given, const Model& model, const Options& options,
                                 const std::vector<std::uint32_t>& open)
{
  const auto texts = std::make_shared<Sources>(std::move(given));
  try {
    bound = Bind(model, options, *texts, open);
  } catch (const ProblemError& error) {
    throw InputError(error.what());
  }
  if (Pieces(bound.model).IsSmooth()) tape = Compile(bound.model);
  if (options.keepSteps) unbound = model;
  sources = texts;
}

}  // namespace varno::solve
