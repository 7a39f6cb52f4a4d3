#include "varno/sys/resource_report.h"

#include <array>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/runtime_child.h"

namespace varno {
namespace {

/// User seconds and microseconds, system seconds and microseconds.
using Numbers = std::array<int, 4>;

Numbers NumbersOf(const UsageDifference& used)
{
  return {used.userSeconds, used.userMicroseconds, used.systemSeconds, used.systemMicroseconds};
}

rusage Mark(timeval user, timeval system)
{
  rusage mark{};
  mark.ru_utime = user;
  mark.ru_stime = system;
  return mark;
}

struct DifferenceRow {
  const char* what;
  timeval start;
  timeval end;
  int seconds;
  int microseconds;
};

/// By hand: seconds and microseconds are subtracted apart; negative microseconds get a million, and
/// a second goes only where the difference of the seconds is above 0.
constexpr DifferenceRow kDifferences[] = {
    {"no time", {5, 7}, {5, 7}, 0, 0},
    {"microseconds only", {0, 0}, {0, 300'000}, 0, 300'000},
    {"no borrow", {1, 100'000}, {3, 100'005}, 2, 5},
    {"borrow from one second", {1, 900'000}, {2, 100'000}, 0, 200'000},
    {"borrow from several seconds", {1, 999'999}, {4, 0}, 2, 1},
    {"no borrow from zero seconds", {2, 500'000}, {2, 400'000}, 0, 900'000},
    {"no borrow from negative seconds", {3, 500'000}, {2, 400'000}, -1, 900'000},
    {"negative seconds alone", {3, 0}, {1, 2}, -2, 2},
};

TEST(DifferenceOf, BorrowsASecondOnlyFromAPositiveNumber)
{
  for (const DifferenceRow& row : kDifferences) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(NumbersOf(DifferenceOf(Mark(row.start, {}), Mark(row.end, {}))),
              (Numbers{row.seconds, row.microseconds, 0, 0}));
  }
}

TEST(DifferenceOf, TreatsSystemTimeLikeUserTime)
{
  for (const DifferenceRow& row : kDifferences) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(NumbersOf(DifferenceOf(Mark({}, row.start), Mark({}, row.end))),
              (Numbers{0, 0, row.seconds, row.microseconds}));
  }
}

TEST(DifferenceOf, KeepsUserAndSystemTimeApart)
{
  EXPECT_EQ(NumbersOf(DifferenceOf(Mark({1, 900'000}, {10, 1}), Mark({2, 100'000}, {12, 3}))),
            (Numbers{0, 200'000, 2, 2}));
}

struct ReportRow {
  UsageDifference used;
  const char* text;
};

TEST(PrintUsage, WritesPlainIntegersWithoutPadding)
{
  constexpr ReportRow kReports[] = {
      {{0, 300'000, 0, 20'000}, "#(INFO) utime=0s300000us \tstime=0s20000us\n"},
      {{1, 5000, 0, 0}, "#(INFO) utime=1s5000us \tstime=0s0us\n"},
      {{0, 0, 12, 7}, "#(INFO) utime=0s0us \tstime=12s7us\n"},
      {{-1, 900'000, -2, 2}, "#(INFO) utime=-1s900000us \tstime=-2s2us\n"},
  };
  for (const ReportRow& row : kReports) {
    const ChildOutcome child = RunInChild([&row] { PrintUsage(row.used); });
    EXPECT_EQ(child.err, row.text);
    EXPECT_EQ(child.out, "");
  }
}

/// User and system time of this process, in microseconds.
long UsedMicroseconds()
{
  rusage now{};
  getrusage(RUSAGE_SELF, &now);
  const UsageDifference used = DifferenceOf({}, now);
  return 1'000'000L * (used.userSeconds + used.systemSeconds) + used.userMicroseconds +
         used.systemMicroseconds;
}

void UseMicroseconds(long wanted)
{
  const long start = UsedMicroseconds();
  while (UsedMicroseconds() - start < wanted) continue;
}

TEST(PrintUsage, ReportsTheProcessorTimeBetweenTheMarks)
{
  const ChildOutcome child = RunInChild([] {
    UseMicroseconds(20'000);
    const long beforeStart = UsedMicroseconds();
    StartUsage();
    const long afterStart = UsedMicroseconds();
    UseMicroseconds(20'000);
    const long beforeEnd = UsedMicroseconds();
    EndUsage();
    const long afterEnd = UsedMicroseconds();
    UseMicroseconds(20'000);
    std::cout << beforeEnd - afterStart << ' ' << afterEnd - beforeStart;
    PrintUsage();
  });
  std::istringstream bounds(child.out);
  long least = 0;
  long most = 0;
  bounds >> least >> most;
  std::smatch times;
  const std::regex report("#\\(INFO\\) utime=(\\d+)s(\\d+)us \tstime=(\\d+)s(\\d+)us\n");
  ASSERT_TRUE(std::regex_match(child.err, times, report)) << child.err;
  const long reported = 1'000'000 * (std::stol(times[1]) + std::stol(times[3])) +
                        std::stol(times[2]) + std::stol(times[4]);
  EXPECT_GE(reported, least);
  EXPECT_LE(reported, most);
}

}  // namespace
}  // namespace varno
