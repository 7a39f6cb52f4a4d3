#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "solve/library/solve.h"
#include "solve/model/model.h"
#include "solve/number/moment.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// The constant expressions among the options of a run, as nodes of a model's graph.
struct OptionConstants {
  std::optional<NodeId> from, every, steady;
  NodeId to;
  std::vector<NodeId> at;
  std::vector<NodeId> variables;  ///< all of them, where a period is looked for

  /// All of these nodes.
  std::vector<NodeId*> Nodes();
};

/// A model with its parameters bound, and the options' constants in its graph.
struct BoundProblem {
  Model model;
  OptionConstants constants;
};

/// Reads the constants of the options, which may use the model's parameters. Throws ProblemError.
/// `open`: see BindParameters.
BoundProblem Bind(const Model& model, const Options& options, Sources& sources,
                  const std::vector<std::uint32_t>& open = {});

/// Makes exact times of constants. Equal constants are the same one in all moments, so that their
/// difference is 0.
class ConstantMoments {
 public:
  /// The graph must outlive the moments.
  ConstantMoments(const Graph& graph, const Sources& sources) : graph(graph), sources(sources) {}

  /// Throws InputError where the constant has no value.
  Moment operator()(NodeId constant);

 private:
  const Graph& graph;
  const Sources& sources;
  std::unordered_map<NodeId, std::shared_ptr<const Constant>> known;
};

}  // namespace varno::solve
