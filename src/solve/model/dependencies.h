#pragma once

#include <cstdint>
#include <vector>

#include "solve/model/declarations.h"
#include "solve/graph/graph.h"
#include "solve/model/resolution.h"
#include "solve/source/diagnostics.h"

namespace varno::solve {

/// What the declarations of a problem need of each other.
struct Dependencies {
  /// All declarations, each after those that its expression uses.
  std::vector<std::uint32_t> order;
  /// What the expression of each one depends on, by what is written: 0*t depends on t. A function
  /// is taken without its arguments.
  std::vector<Dependence> dependence;
  /// True for declarations that use themselves, or one that does: they have no value.
  std::vector<bool> broken;
};

/// Finds them, and reports every circle with its places.
Dependencies FindDependencies(const Declarations& declarations, const Resolution& resolution,
                              Diagnostics& diagnostics);

}  // namespace varno::solve
