#include "solve/command/progress_line.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace varno::solve {

namespace {

constexpr double kTerminalDelay = 0.5;
constexpr double kTerminalInterval = 0.1;
constexpr double kLineInterval = 1;
constexpr double kRareDelay = 60;
constexpr double kMuchLonger = 100;
constexpr std::string_view kClearLine = "\r\033[K";

/// A time to wait: "25 s", "3 min 20 s", "5 h 7 min", "12 d 3 h".
std::string TimeText(double seconds)
{
  constexpr double kMost = 1e15;
  if (!(seconds < kMost)) return "for ever";
  const auto whole = std::llround(seconds);
  if (whole < 60) return fmt::format("{} s", whole);
  if (whole < 3600) return fmt::format("{} min {} s", whole / 60, whole % 60);
  if (whole < 86400) return fmt::format("{} h {} min", whole / 3600, whole / 60 % 60);
  return fmt::format("{} d {} h", whole / 86400, whole / 3600 % 24);
}

}  // namespace

double ProgressLine::FirstUpdate() const
{
  switch (mode) {
    case Mode::kOff:
      return std::numeric_limits<double>::infinity();
    case Mode::kRarely:
      return kRareDelay;
    case Mode::kOn:
      return console.errorsAreTerminal ? kTerminalDelay : 0;
  }
  return 0;
}

void ProgressLine::Update(const Progress& progress)
{
  if (mode == Mode::kRarely) {
    ShowRarely(progress);
  } else {
    Show(progress);
  }
}

void ProgressLine::Update(const SweepProgress& progress)
{
  Show(progress);
}

/// A long run is never without a word, even where nobody looks at it.
void ProgressLine::ShowRarely(const Progress& progress)
{
  if (progress.seconds < std::max(nextSeconds, kRareDelay)) return;
  nextSeconds = 2 * progress.seconds;
  const double toGo = progress.seconds / progress.fraction - progress.seconds;
  std::string text = fmt::format(", {:.2g} s to go at this pace", toGo);
  const double inSteps =
      progress.seconds / static_cast<double>(progress.steps) * progress.stepsAhead;
  if (inSteps > kMuchLonger * toGo)
    text += fmt::format(", but {:.2g} s in steps as short as the latest", inSteps);
  console.Say(ProgressText(progress) + text);
}

template <typename AnyProgress>
void ProgressLine::Show(const AnyProgress& progress)
{
  if (mode != Mode::kOn) return;
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

std::string ProgressText(const SweepProgress& progress)
{
  const auto made = static_cast<double>(progress.done - progress.before);
  const double rate = made / std::max(progress.seconds, 1e-9);
  const double left = static_cast<double>(progress.count - progress.done) / rate;
  return fmt::format("runs {} of {}, {:.3g} per second, {} left", progress.done, progress.count,
                     rate, TimeText(left));
}

}  // namespace varno::solve
