#include "solve/sweep/ordered_output.h"

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/solve/support/string_sink.h"

namespace varno::solve {

namespace {

constexpr std::size_t kPlenty = 1 << 20;
constexpr std::int64_t kRuns = 100;

class OrderedOutputTest : public testing::Test {
 protected:
  StringSink rows, messages;
};

/// Takes this many texts, then fails.
class FailingSink final : public TextSink {
 public:
  explicit FailingSink(int left) : left(left) {}
  void Write(std::string_view) override
  {
    if (left-- == 0) throw std::runtime_error("full");
  }

 private:
  int left;
};

}  // namespace

TEST_F(OrderedOutputTest, RunsComeOutInTheirOrder)
{
  OrderedOutput output(rows, messages, {}, kPlenty, kRuns);
  output.AddRows(1, "b1 ");
  output.AddRows(2, "c1 ");
  EXPECT_EQ("", rows.text);
  output.AddRows(0, "a1 ");
  EXPECT_EQ("a1 ", rows.text);  // whose turn it is need not wait
  output.Finish(2, RunOutcome::kAllRows);
  output.Finish(0, RunOutcome::kAllRows);
  EXPECT_EQ("a1 b1 ", rows.text);
  output.AddRows(1, "b2 ");
  EXPECT_EQ("a1 b1 b2 ", rows.text);
  output.Finish(1, RunOutcome::kAllRows);
  EXPECT_EQ("a1 b1 b2 c1 ", rows.text);
}

TEST_F(OrderedOutputTest, MessagesComeInOrderToo)
{
  OrderedOutput output(rows, messages, {}, kPlenty, kRuns);
  output.AddMessage(1, "second ");
  output.Finish(1, RunOutcome::kAllRows);
  output.AddMessage(0, "first ");
  output.Finish(0, RunOutcome::kAllRows);
  EXPECT_EQ("first second ", messages.text);
}

TEST_F(OrderedOutputTest, HeaderComesOnceAndSeparatorsBetweenRunsWithRows)
{
  OrderedOutput output(rows, messages, {"head ", "| "}, kPlenty, kRuns);
  output.Finish(0, RunOutcome::kAllRows);  // without rows
  EXPECT_EQ("", rows.text);
  output.AddRows(1, "a ");
  output.AddRows(1, "a ");
  output.Finish(1, RunOutcome::kAllRows);
  output.Finish(2, RunOutcome::kAllRows);
  output.AddRows(3, "b ");
  output.Finish(3, RunOutcome::kAllRows);
  EXPECT_EQ("head a a | b ", rows.text);
}

TEST_F(OrderedOutputTest, WhoIsAheadWaitsForRoom)
{
  OrderedOutput output(rows, messages, {}, 4, kRuns);
  output.AddRows(1, "12345");
  std::atomic<bool> isThrough = false;
  std::thread ahead([&] {
    output.AddRows(1, "6");
    output.Take(1);
    isThrough = true;
  });
  output.AddRows(0, "0");
  EXPECT_FALSE(isThrough);
  output.Finish(0, RunOutcome::kAllRows);
  ahead.join();
  EXPECT_TRUE(isThrough);
  EXPECT_EQ("0123456", rows.text);
}

TEST_F(OrderedOutputTest, RunsWithoutRowsTakeRoomToo)
{
  OrderedOutput output(rows, messages, {}, 100, kRuns);
  for (std::int64_t run = 1; run < 20; ++run) output.Finish(run, RunOutcome::kAllRows);
  EXPECT_EQ(0, output.Take(1)->first);  // whose turn it is may always begin
  std::atomic<bool> isThrough = false;
  std::thread ahead([&] {
    output.Take(1);
    isThrough = true;
  });
  EXPECT_FALSE(isThrough);
  output.Finish(0, RunOutcome::kAllRows);
  ahead.join();
}

TEST_F(OrderedOutputTest, FailureOfOneEndsAll)
{
  FailingSink full(1);
  OrderedOutput output(full, messages, {}, 1, kRuns);
  output.AddRows(0, "fits");
  output.AddRows(1, "waits");
  std::thread ahead([&] { EXPECT_THROW(output.AddRows(1, "more"), OrderedOutput::Stopped); });
  EXPECT_THROW(output.AddRows(0, "does not fit"), std::runtime_error);
  ahead.join();
  EXPECT_THROW(output.Take(1), OrderedOutput::Stopped);
  EXPECT_THROW(output.Finish(0, RunOutcome::kAllRows), OrderedOutput::Stopped);
}

TEST_F(OrderedOutputTest, StopWakesWhoWaits)
{
  OrderedOutput output(rows, messages, {}, 1, kRuns);
  output.AddRows(1, "waits");
  std::thread ahead([&] { EXPECT_THROW(output.AddRows(1, "more"), OrderedOutput::Stopped); });
  output.Stop();
  ahead.join();
  EXPECT_EQ("", rows.text);
}

TEST_F(OrderedOutputTest, RunsAreHandedOutInOrderAndOnce)
{
  OrderedOutput output(rows, messages, {}, kPlenty, 5);
  EXPECT_EQ(0, output.Take(2)->first);
  const auto rest = output.Take(100);
  EXPECT_EQ(2, rest->first);
  EXPECT_EQ(3, rest->count);
  EXPECT_FALSE(output.Take(1));
  EXPECT_FALSE(output.TryTake(1));
}

TEST_F(OrderedOutputTest, WhoCannotWaitIsToldThatThereIsNoRoom)
{
  OrderedOutput output(rows, messages, {}, 4, 5);
  EXPECT_EQ(2, output.TryTake(2)->count);
  output.AddRowsAtOnce(1, "12345");
  EXPECT_FALSE(output.HasRoom(1));
  EXPECT_TRUE(output.HasRoom(0));
  EXPECT_EQ(0, output.TryTake(1)->count);
  output.AddRowsAtOnce(1, "6");
  output.Finish(0, RunOutcome::kAllRows);
  EXPECT_EQ("123456", rows.text);
  EXPECT_EQ(2, output.TryTake(1)->first);
}

TEST_F(OrderedOutputTest, CountsWhatFailed)
{
  OrderedOutput output(rows, messages, {}, kPlenty, 3);
  output.Finish(2, RunOutcome::kRowWasWrong);
  output.Finish(0, RunOutcome::kFailed);
  output.Finish(1, RunOutcome::kAllRows);
  EXPECT_EQ(3, output.Result().done);
  EXPECT_EQ(2, output.Result().failed);
  EXPECT_EQ(1, output.Result().wrong);
}

/// Brings the texts of runs as if they were made; those before `stop`, of run 1 half of it, and all
/// of run 3, which is ahead.
void MakeHalf(OrderedOutput& output)
{
  output.AddRows(3, "d1 d2 ");
  output.AddMessage(3, "third ");
  output.Finish(3, RunOutcome::kFailed);
  output.AddRows(0, "a1 a2 ");
  output.Finish(0, RunOutcome::kAllRows);
  output.AddRows(1, "b1 ");
}

TEST_F(OrderedOutputTest, AnotherOneGoesOnFromItsState)
{
  OrderedOutput first(rows, messages, {"head ", "| "}, kPlenty, 5);
  MakeHalf(first);
  EXPECT_EQ("head a1 a2 | b1 ", rows.text);
  const SweepState state = first.State();
  EXPECT_EQ(static_cast<std::int64_t>(rows.text.size()), state.rowBytes);
  EXPECT_EQ(1, state.current);

  OrderedOutput second(rows, messages, {"head ", "| "}, kPlenty, 5, state);
  std::string taken;
  while (const auto range = second.Take(10)) {
    for (std::int64_t run = range->first; run < range->first + range->count; ++run) {
      taken += std::to_string(run) + " ";
      const std::string name(1, static_cast<char>('a' + run));
      second.AddRows(run, name + "1 " + name);
      second.AddRows(run, "2 ");
      second.Finish(run, RunOutcome::kAllRows);
    }
  }
  EXPECT_EQ("1 2 4 ", taken);
  EXPECT_EQ("head a1 a2 | b1 b2 | c1 c2 | d1 d2 | e1 e2 ", rows.text);
  EXPECT_EQ("third ", messages.text);
  EXPECT_EQ(5, second.Result().done);
  EXPECT_EQ(1, second.Result().failed);
  EXPECT_EQ(static_cast<std::int64_t>(rows.text.size()), second.State().rowBytes);
}

TEST_F(OrderedOutputTest, AnotherOneWritesWhatCouldNotBeWritten)
{
  const OrderedOutput::Frame frame{"head ", "| "};
  FailingSink full(1);
  OrderedOutput first(full, messages, frame, kPlenty, 2);
  first.AddRows(1, "b ");
  first.Finish(1, RunOutcome::kAllRows);
  first.AddRows(0, "a ");
  EXPECT_THROW(first.Finish(0, RunOutcome::kAllRows), std::runtime_error);
  const SweepState state = first.State();
  EXPECT_EQ(1, state.current);
  EXPECT_EQ(7, state.rowBytes);

  OrderedOutput second(rows, messages, frame, kPlenty, 2, state);
  second.GoOn();
  EXPECT_EQ("| b ", rows.text);
  EXPECT_FALSE(second.Take(1));
  EXPECT_EQ(2, second.State().current);
  EXPECT_EQ(2, second.Result().done);
}

TEST_F(OrderedOutputTest, RowsThatComeOutDifferentlyAreNoticed)
{
  OrderedOutput first(rows, messages, {}, kPlenty, 5);
  MakeHalf(first);
  const SweepState state = first.State();
  OrderedOutput other(rows, messages, {}, kPlenty, 5, state);
  EXPECT_THROW(other.AddRows(1, "B1 b2 "), TextChanged);
  OrderedOutput shorter(rows, messages, {}, kPlenty, 5, state);
  shorter.AddRows(1, "b");
  EXPECT_THROW(shorter.Finish(1, RunOutcome::kAllRows), TextChanged);
}

}  // namespace varno::solve
