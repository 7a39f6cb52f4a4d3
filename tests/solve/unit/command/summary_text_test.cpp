#include "solve/command/summary_text.h"

#include <gtest/gtest.h>

namespace varno::solve {

TEST(SummaryText, ThreeLines)
{
  Summary summary;
  summary.steps = 120;
  summary.order = 43;
  summary.bits = 192;
  summary.digits = 30;
  summary.seconds = 0.01234;
  EXPECT_EQ(SummaryText(summary),
            "120 steps, order 43, 192 bits\n"
            "30 digits, not verified: one run\n"
            "0.0123 seconds\n");
}

TEST(SummaryText, SaysHowDigitsWereVerified)
{
  Summary summary;
  summary.steps = 1;
  summary.order = 12;
  summary.bits = 64;
  summary.digits = 1;
  summary.rows = 2;
  summary.verified = true;
  summary.remark = "the row t = 2 stands on a jump";
  summary.seconds = 86400;
  EXPECT_EQ(SummaryText(summary),
            "1 step, order 12, 64 bits\n"
            "1 digit, verified by a second run; the row t = 2 stands on a jump\n"
            "86400 seconds\n");
}

TEST(SummaryText, OfASweep)
{
  EXPECT_EQ(SummaryText({.done = 3, .failed = 1, .wrong = 0}, 3, {.digits = 9}, 1.25),
            "3 runs, 1 failed\n"
            "9 digits, each run verified by a second one\n"
            "1.25 seconds\n");
  EXPECT_EQ(SummaryText({.done = 1, .failed = 0, .wrong = 0}, 5, {.check = false}, 1),
            "1 of 5 runs, 0 failed\n"
            "15 digits, not verified: one run each\n"
            "1 seconds\n");
}

TEST(SummaryText, ClaimsNothingOfRowsThatAreNotThere)
{
  Summary summary;
  summary.steps = 3;
  summary.order = 23;
  summary.bits = 107;
  summary.digits = 15;
  summary.verified = true;
  summary.seconds = 2;
  EXPECT_EQ(SummaryText(summary),
            "3 steps, order 23, 107 bits\n"
            "15 digits: no row could be verified\n"
            "2 seconds\n");
}

}  // namespace varno::solve
