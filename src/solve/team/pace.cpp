#include "solve/team/pace.h"

#include <algorithm>

namespace varno::solve {

namespace {

/// Jobs with fewer rounds may be anything.
constexpr std::size_t kLeastRounds = 16;
/// A sample that takes less may be of rounds in which there was nothing to do.
constexpr double kLeastSeconds = 2e-5;
/// After so many jobs together the sample of one alone tells anew how long that takes.
constexpr int kJobsTogether = 64;
/// Where it did not pay, so many jobs are done alone, twice as many each time.
constexpr int kFirstPause = 4, kLongestPause = 256;

}  // namespace

void Pace::Go(Way newWay, int jobs)
{
  way = newWay;
  jobsLeft = jobs;
}

void Pace::Took(std::size_t rounds, double seconds)
{
  if (timedRounds == 0 && rounds >= kLeastRounds) timedRounds = rounds;
  if (rounds != timedRounds || seconds < kLeastSeconds) return;
  --jobsLeft;
  if (way != Way::kTogether) {
    secondsAlone = seconds;
    if (jobsLeft <= 0) Go(Way::kTogether, kJobsTogether);
  } else if (secondsAlone > 0 && seconds >= secondsAlone) {
    pause = std::clamp(2 * pause, kFirstPause, kLongestPause);
    Go(Way::kAlone, pause);
  } else {
    if (secondsAlone > 0) pause = 0;
    if (jobsLeft <= 0) Go(Way::kSampleAlone, 1);
  }
}

}  // namespace varno::solve
