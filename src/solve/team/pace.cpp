#include "solve/team/pace.h"

#include <algorithm>

namespace varno::solve {

namespace {

/// Jobs with fewer rounds may be anything.
constexpr std::size_t kLeastRounds = 16;
/// After so many jobs together one alone tells anew how long that takes.
constexpr int kJobsTogether = 64;
/// Where it did not pay, so many jobs are done alone, twice as many each time.
constexpr int kFirstPause = 4, kLongestPause = 256;

}  // namespace

void Pace::GoAlone(int jobs)
{
  isTogether = false;
  jobsLeft = jobs;
}

void Pace::Took(std::size_t rounds, double seconds)
{
  if (timedRounds == 0 && rounds >= kLeastRounds) timedRounds = rounds;
  if (rounds != timedRounds) return;
  --jobsLeft;
  if (!isTogether) {
    secondsAlone = seconds;
    isTogether = jobsLeft <= 0;
    if (isTogether) jobsLeft = kJobsTogether;
  } else if (secondsAlone > 0 && seconds >= secondsAlone) {
    pause = std::clamp(2 * pause, kFirstPause, kLongestPause);
    GoAlone(pause);
  } else {
    if (secondsAlone > 0) pause = 0;
    if (jobsLeft <= 0) GoAlone(1);
  }
}

}  // namespace varno::solve
