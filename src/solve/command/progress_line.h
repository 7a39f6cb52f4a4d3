#pragma once

#include <cstdint>
#include <string>

#include "solve/command/console.h"
#include "solve/library/solve.h"

namespace varno::solve {

/// How far a sweep is.
struct SweepProgress {
  std::int64_t done, count;  ///< runs
  double seconds;            ///< since the start
  std::int64_t before = 0;   ///< of the runs that are done, those of earlier processes
};

/// Tells how far a run is: "t = 3.25, 32 %, 120 steps, latest 0.031, 4.1 s"; or a sweep: "runs 120
/// of 1000, 35 per second, 25 s left".
///
/// On a terminal it is one line that is written anew, ten times a second at most, and first after
/// half a second; elsewhere a line of its own each second, the first one at once. Where it is not
/// asked for, a run that takes more than a minute says so, and again whenever that time has
/// doubled, with what it will take: ", 5e+06 s to go at this pace".
class ProgressLine {
 public:
  enum class Mode { kOff, kRarely, kOn };
  ProgressLine(const Console& console, Mode mode) : console(console), mode(mode) {}

  /// Seconds of a run that pass before anything is told.
  double FirstUpdate() const;
  void Update(const Progress& progress);
  void Update(const SweepProgress& progress);
  /// Takes the line away, so that something else can be written there.
  void Clear();

 private:
  template <typename AnyProgress>
  void Show(const AnyProgress& progress);
  void ShowRarely(const Progress& progress);

  const Console& console;
  Mode mode;
  bool isShown = false;
  double nextSeconds = -1;  ///< not before this time; < 0: nothing was shown yet
};

/// The text of the line.
std::string ProgressText(const Progress& progress);
std::string ProgressText(const SweepProgress& progress);

}  // namespace varno::solve
