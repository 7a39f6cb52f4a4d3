#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/run.h"
#include "solve/library/solve.h"
#include "solve/number/moment.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// Says in words why runs of one problem end early.
class Ends {
 public:
  /// `graph` is the one whose nodes the errors name; `digits` are those of the times.
  Ends(const Sources& sources, const Graph& graph, std::vector<std::string> states, int digits)
      : sources(sources), graph(graph), states(std::move(states)), digits(digits)
  {}

  RunEnded Of(const DomainError& error, const Moment& time) const;
  RunEnded Of(const Singularity& singularity) const;
  /// "--max-steps 100 reached at t = 0.5"; `rowsBeyond` is the time of the last row, where that
  /// lies farther on.
  RunEnded AtLimit(const std::string& limit, const Moment& time,
                   const std::optional<Moment>& rowsBeyond) const;
  RunEnded Interrupted(const Moment& time, const std::optional<Moment>& rowsBeyond) const;

 private:
  std::string Described(NodeId node, const std::string& message) const;
  std::string TimeText(const Moment& time) const;
  std::string What(const Singularity& singularity) const;
  std::string HowFar(const Moment& time, const std::optional<Moment>& rowsBeyond) const;

  const Sources& sources;
  const Graph& graph;
  std::vector<std::string> states;  // their names
  int digits;
};

}  // namespace varno::solve
