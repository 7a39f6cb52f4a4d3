#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "solve/graph/substitution.h"
#include "solve/library/compiled_problem.h"
#include "solve/library/solve.h"
#include "solve/model/model.h"
#include "solve/number/rational.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The tape of a smooth problem with some values still to come.
class TapeTemplate {
 public:
  explicit TapeTemplate(const Tape& tape);

  bool IsStructural(std::uint32_t parameter) const { return substitution.IsStructural(parameter); }
  /// The tape with these values; none where one changes more than numbers: see
  /// Substitution::Apply.
  std::optional<Tape> With(std::span<const Rational> values, std::uint32_t firstFree) const;

 private:
  Graph graph;
  Substitution substitution;
  Tape tape;  // without its graph, to be copied
};

/// A problem read, and compiled where it is smooth, with some values still to come.
class ProblemTemplate {
 public:
  /// `parameterOf` has for each name the number of the leaf that stands for its value, kNone where
  /// the value is in the problem already; those of start values begin with `firstStart`.
  ProblemTemplate(CompiledProblem compiled, std::vector<std::uint32_t> parameterOf,
                  std::uint32_t firstStart);

  /// Whether the value of an open name decides more than numbers.
  bool IsStructural(std::size_t name) const;
  /// The problem with the values of the open names; none where one of them is no fraction, or
  /// changes more than numbers.
  std::optional<CompiledProblem> With(const std::vector<SweptValue>& values) const;

 private:
  CompiledProblem problem;
  Substitution inModel;
  std::vector<std::uint32_t> parameterOf;
  std::uint32_t firstStart;
  Model model;                       // without its graph, to be copied
  std::optional<TapeTemplate> tape;  // none of a piecewise smooth problem
};

}  // namespace varno::solve
