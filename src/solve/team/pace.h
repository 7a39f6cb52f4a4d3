#pragma once

#include <cstddef>

namespace varno::solve {

/// Whether the jobs of a team are done sooner by all of its members than by one of them, which also
/// depends on what else the machine has to do: of long jobs alike some rounds are timed, now and
/// then in the other way.
class Pace {
 public:
  bool IsTogether() const { return way != Way::kAlone; }
  /// The same of the rounds that are timed.
  bool IsSampleTogether() const { return way == Way::kTogether; }
  /// The rounds of a job of so many that are timed: from the first one on, some
  static std::size_t FirstOfSample(std::size_t rounds) { return rounds / 2; }
  static std::size_t BehindSample(std::size_t rounds) { return rounds / 2 + rounds / 8; }
  /// Those of a job of so many rounds, done in this way, took so long.
  void Took(std::size_t rounds, double seconds);

 private:
  enum class Way { kTogether, kSampleAlone, kAlone };
  void Go(Way newWay, int jobs);

  Way way = Way::kTogether;
  std::size_t timedRounds = 0;  // of the jobs that are timed; 0: there was none
  double secondsAlone = 0;      // 0: not known
  int jobsLeft = 0;             // in the present way
  int pause = 0;                // jobs alone behind the next one that did not pay
};

}  // namespace varno::solve
