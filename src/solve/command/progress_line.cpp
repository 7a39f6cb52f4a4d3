#include "solve/command/progress_line.h"

#include <cmath>

#include <fmt/format.h>

namespace varno::solve {

namespace {

constexpr double kTerminalDelay = 0.5;
constexpr double kTerminalInterval = 0.1;
constexpr double kLineInterval = 1;
constexpr std::string_view kClearLine = "\r\033[K";

}  // namespace

void ProgressLine::Update(const Progress& progress)
{
  if (mode == Mode::kOff) return;
  const bool isTerminal = console.errorsAreTerminal;
  if (nextSeconds < 0) nextSeconds = isTerminal ? kTerminalDelay : 0;
  if (progress.seconds < nextSeconds) return;

  nextSeconds = progress.seconds + (isTerminal ? kTerminalInterval : kLineInterval);
  if (isTerminal) {
    console.errors.Write(std::string(kClearLine) + ProgressText(progress));
    isShown = true;
  } else {
    console.Print(ProgressText(progress));
  }
}

void ProgressLine::Clear()
{
  if (!isShown) return;
  console.errors.Write(kClearLine);
  isShown = false;
}

std::string ProgressText(const Progress& progress)
{
  // Rounded down: a run is at 100 % when it is there.
  return fmt::format("t = {:.6g}, {:.0f} %, {} step{}, latest {:.3g}, {:.1f} s", progress.time,
                     std::floor(100 * progress.fraction), progress.steps,
                     progress.steps == 1 ? "" : "s", std::abs(progress.step), progress.seconds);
}

}  // namespace varno::solve
