// Sweeps of y' = slope & 1, of which y(1) = 1 + slope is known.

#include "solve/sweep/sweep_runs.h"

#include <atomic>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/sweep/ordered_output.h"
#include "tests/solve/support/string_sink.h"

namespace varno::solve {

namespace {

constexpr std::size_t kPlenty = 1 << 20;

PrintRow PrintLastValue(TextSink& sink, const Solution&, std::int64_t,
                        const Combination& combination)
{
  return [&sink, name = combination.texts.front()](const Row& row) {
    sink.Write(name + ":" + row.values.front().Text() + " ");
  };
}

std::string Message(std::int64_t run, const Combination&, const std::string&)
{
  return std::to_string(run) + " failed ";
}

struct Outcome {
  SweepResult result;
  std::string rows, messages;
};

Outcome Solve(const std::string& text, const std::vector<std::string>& values, int jobs,
              Options options = {.rows = RowAtEnd{}, .digits = 2})
{
  const Problem problem = Problem::Parse(text, "text");
  const Sweep sweep({{{"slope", SweptValues::List(values, 5)}}});
  StringSink rows, messages;
  OrderedOutput output(rows, messages, {}, kPlenty, sweep.Count());
  const Family family(problem, options, sweep.Names());
  RunSweep({.family = family,
            .sweep = sweep,
            .interrupted = options.interrupted,
            .jobs = jobs,
            .makePrinter = PrintLastValue,
            .message = Message},
           output);
  return {output.Result(), rows.text, messages.text};
}

const char* const kLine = "slope = 1; y' = slope & 1;";

}  // namespace

TEST(SweepRuns, RowsDoNotDependOnTheNumberOfThreads)
{
  std::vector<std::string> values;
  std::string expected;
  for (int i = 0; i < 40; ++i) {
    values.push_back(std::to_string(i));
    const int y = 1 + i;
    expected += std::to_string(i) + ":" +
                (y < 10 ? std::to_string(y) + ".0e+00"
                        : std::to_string(y / 10) + "." + std::to_string(y % 10) + "e+01") +
                " ";
  }
  for (const int jobs : {1, 2, 7, 100}) {
    const Outcome outcome = Solve(kLine, values, jobs);
    EXPECT_EQ(expected, outcome.rows) << jobs;
    EXPECT_EQ(40, outcome.result.done);
    EXPECT_EQ(0, outcome.result.failed);
  }
}

TEST(SweepRuns, OthersGoOnWhenOneFails)
{
  const Outcome outcome = Solve("slope = 1; y' = 0*ln(slope) & 1;", {"1", "-1", "2", "0", "3"}, 2);
  EXPECT_EQ("1:1.0e+00 2:1.0e+00 3:1.0e+00 ", outcome.rows);
  EXPECT_EQ("1 failed 3 failed ", outcome.messages);
  EXPECT_EQ(5, outcome.result.done);
  EXPECT_EQ(2, outcome.result.failed);
}

TEST(SweepRuns, InterruptionEndsAllOfThem)
{
  std::atomic<int> asked = 0;
  Options options{.rows = RowAtEnd{}, .digits = 2};
  options.interrupted = [&asked] { return ++asked > 3; };
  const Outcome outcome = Solve(kLine, std::vector<std::string>(1000, "1"), 2, options);
  EXPECT_LT(outcome.result.done, 10);
  EXPECT_EQ(0, outcome.result.failed);
}

TEST(SweepRuns, OutputThatFailsEndsTheSweep)
{
  class FullSink final : public TextSink {
    void Write(std::string_view) override { throw std::runtime_error("full"); }
  };
  const Problem problem = Problem::Parse(kLine, "text");
  const Sweep sweep({{{"slope", SweptValues::List({"1", "2", "3"}, 5)}}});
  FullSink full;
  StringSink messages;
  OrderedOutput output(full, messages, {}, kPlenty, sweep.Count());
  const Family family(problem, {.rows = RowAtEnd{}, .digits = 2}, sweep.Names());
  EXPECT_THROW(RunSweep({.family = family,
                         .sweep = sweep,
                         .interrupted = {},
                         .jobs = 2,
                         .makePrinter = PrintLastValue,
                         .message = Message},
                        output),
               std::runtime_error);
}

}  // namespace varno::solve
