#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "solve/library/option_constants.h"
#include "solve/library/solve.h"
#include "solve/model/model.h"
#include "solve/source/sources.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// A problem with the options of a run, read and compiled.
struct CompiledProblem {
  /// `texts` are those of the model. Throws InputError. `open`: see BindParameters.
  CompiledProblem(Sources texts, const Model& model, const Options& options,
                  const std::vector<std::uint32_t>& open = {});
  CompiledProblem(std::shared_ptr<const Sources> sources, BoundProblem bound,
                  std::optional<Tape> tape);

  std::shared_ptr<const Sources> sources;  ///< also those of the options
  BoundProblem bound;
  std::optional<Tape> tape;      ///< none of a piecewise smooth problem
  std::optional<Model> unbound;  ///< with its parameters, where options.keepSteps asks for them
};

}  // namespace varno::solve
