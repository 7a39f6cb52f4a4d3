#include "solve/command/progress_line.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/solve/support/string_sink.h"

namespace varno::solve {

namespace {

Progress At(double seconds)
{
  return {.time = 0.5, .fraction = 0.25, .steps = 7, .step = 0.03125, .seconds = seconds};
}

}  // namespace

TEST(ProgressText, TellsTimeStepsAndSeconds)
{
  EXPECT_EQ(ProgressText(At(4.07)), "t = 0.5, 25 %, 7 steps, latest 0.0312, 4.1 s");
  EXPECT_EQ(ProgressText({-31.41592653589793, 1, 1, 1e-12, 0}),
            "t = -31.4159, 100 %, 1 step, latest 1e-12, 0.0 s");
}

TEST(ProgressText, UnfinishedRunsAreNotAtHundredPercent)
{
  EXPECT_EQ(ProgressText({1, 0.9999, 2, 1, 0}), "t = 1, 99 %, 2 steps, latest 1, 0.0 s");
}

TEST(ProgressText, FitsALine)
{
  EXPECT_LT(ProgressText({-1.23456789e-300, 1, 1'000'000'000'000, -1.23456789e-300, 1e7}).size(),
            80U);
}

TEST(ProgressLine, OnATerminalOneLineIsWrittenAnew)
{
  StringSink errors;
  const Console console{errors, true};
  ProgressLine line(console, ProgressLine::Mode::kOn);
  line.Update(At(0.4));
  EXPECT_EQ(errors.text, "");  // short runs show none
  line.Update(At(0.5));
  EXPECT_EQ(errors.text, "\r\033[K" + ProgressText(At(0.5)));
  errors.text.clear();
  line.Update(At(0.55));
  EXPECT_EQ(errors.text, "");  // too early
  line.Update(At(0.65));
  EXPECT_EQ(errors.text, "\r\033[K" + ProgressText(At(0.65)));
}

TEST(ProgressLine, ALongRunSaysSoRarely)
{
  StringSink errors;
  const Console console{errors, false};
  ProgressLine line(console, ProgressLine::Mode::kRarely);
  line.Update(At(59));
  EXPECT_EQ(errors.text, "");
  line.Update(At(60));
  const std::string first =
      "varno-solve: " + ProgressText(At(60)) + ", 1.8e+02 s to go at this pace\n";
  EXPECT_EQ(errors.text, first);
  line.Update(At(119));
  EXPECT_EQ(errors.text, first);
  line.Update(At(120));
  EXPECT_EQ(errors.text,
            first + "varno-solve: " + ProgressText(At(120)) + ", 3.6e+02 s to go at this pace\n");
}

// Steps that shrink towards a point say little about the part of the way that is done.
TEST(ProgressLine, ALongRunTellsOfShortSteps)
{
  StringSink errors;
  const Console console{errors, false};
  ProgressLine line(console, ProgressLine::Mode::kRarely);
  Progress progress = At(70);
  progress.stepsAhead = 1e6;
  line.Update(progress);
  EXPECT_EQ(errors.text, "varno-solve: " + ProgressText(progress) +
                             ", 2.1e+02 s to go at this pace, but 1e+07 s in steps as short as the "
                             "latest\n");
}

TEST(ProgressLine, ClearsWhatIsShownAndNothingElse)
{
  StringSink errors;
  const Console console{errors, true};
  ProgressLine line(console, ProgressLine::Mode::kOn);
  line.Clear();
  EXPECT_EQ(errors.text, "");
  line.Update(At(1));
  errors.text.clear();
  line.Clear();
  line.Clear();
  EXPECT_EQ(errors.text, "\r\033[K");
}

TEST(ProgressLine, ElsewhereALineForEachSecond)
{
  StringSink errors;
  const Console console{errors, false};
  ProgressLine line(console, ProgressLine::Mode::kOn);
  line.Update(At(0));
  line.Update(At(0.9));
  line.Update(At(1.0));
  line.Clear();
  EXPECT_EQ(errors.text, ProgressText(At(0)) + "\n" + ProgressText(At(1)) + "\n");
}

TEST(ProgressLine, CanBeOff)
{
  StringSink errors;
  const Console console{errors, true};
  ProgressLine line(console, ProgressLine::Mode::kOff);
  line.Update(At(100));
  EXPECT_EQ(errors.text, "");
}

TEST(ProgressLine, TellsHowManyRunsAreDone)
{
  EXPECT_EQ(ProgressText(SweepProgress{.done = 120, .count = 1000, .seconds = 4}),
            "runs 120 of 1000, 30 per second, 29 s left");
}

}  // namespace varno::solve
