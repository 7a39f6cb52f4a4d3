#pragma once

#include <cstddef>

namespace varno::solve {

/// Whether the jobs of a team are done sooner by all of its members than by one of them, which also
/// depends on what else the machine has to do: long jobs alike are timed, now and then one of the
/// other way.
class Pace {
 public:
  bool IsTogether() const { return isTogether; }
  /// A job of so many rounds, done in this way, took so long.
  void Took(std::size_t rounds, double seconds);

 private:
  void GoAlone(int jobs);

  bool isTogether = true;
  std::size_t timedRounds = 0;  // of the jobs that are timed; 0: there was none
  double secondsAlone = 0;      // 0: not known
  int jobsLeft = 0;             // in the present way
  int pause = 0;                // jobs alone behind the next one that did not pay
};

}  // namespace varno::solve
