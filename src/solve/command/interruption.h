#pragma once

#include <csignal>

namespace varno::solve {

/// As long as it lives, Ctrl-C (SIGINT) and SIGTERM do not end the process but are remembered; the
/// same signal a second time ends it as usual. A signal that is ignored, as in the background of a
/// script, stays so. One at a time: signal handlers are global.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();

  /// The signal that has come, 0 while there is none.
  static int Signal();

 private:
  struct sigaction oldInt, oldTerm;
};

}  // namespace varno::solve
