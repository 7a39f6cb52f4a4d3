#pragma once

namespace varno::solve {

/// As which of several processes this one was started.
struct MpiJob {
  int rank = 0;
  int ranks = 1;
};

/// What Open MPI, or the interface of other launchers (PMI), has written into the environment; one
/// process where there is nothing. `get` is std::getenv, or stands for it.
MpiJob MpiJobOf(char* (*get)(const char* name));

}  // namespace varno::solve
