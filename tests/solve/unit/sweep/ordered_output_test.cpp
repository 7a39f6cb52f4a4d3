#include "solve/sweep/ordered_output.h"

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/solve/support/string_sink.h"

namespace varno::solve {

namespace {

constexpr std::size_t kPlenty = 1 << 20;

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
  OrderedOutput output(rows, messages, {}, kPlenty);
  output.AddRows(1, "b1 ");
  output.AddRows(2, "c1 ");
  EXPECT_EQ("", rows.text);
  output.AddRows(0, "a1 ");
  EXPECT_EQ("a1 ", rows.text);  // whose turn it is need not wait
  output.Finish(2);
  output.Finish(0);
  EXPECT_EQ("a1 b1 ", rows.text);
  output.AddRows(1, "b2 ");
  EXPECT_EQ("a1 b1 b2 ", rows.text);
  output.Finish(1);
  EXPECT_EQ("a1 b1 b2 c1 ", rows.text);
}

TEST_F(OrderedOutputTest, MessagesComeInOrderToo)
{
  OrderedOutput output(rows, messages, {}, kPlenty);
  output.AddMessage(1, "second ");
  output.Finish(1);
  output.AddMessage(0, "first ");
  output.Finish(0);
  EXPECT_EQ("first second ", messages.text);
}

TEST_F(OrderedOutputTest, HeaderComesOnceAndSeparatorsBetweenRunsWithRows)
{
  OrderedOutput output(rows, messages, {"head ", "| "}, kPlenty);
  output.Finish(0);  // without rows
  EXPECT_EQ("", rows.text);
  output.AddRows(1, "a ");
  output.AddRows(1, "a ");
  output.Finish(1);
  output.Finish(2);
  output.AddRows(3, "b ");
  output.Finish(3);
  EXPECT_EQ("head a a | b ", rows.text);
}

TEST_F(OrderedOutputTest, WhoIsAheadWaitsForRoom)
{
  OrderedOutput output(rows, messages, {}, 4);
  output.AddRows(1, "12345");
  std::atomic<bool> isThrough = false;
  std::thread ahead([&] {
    output.AddRows(1, "6");
    output.AwaitRoom();
    isThrough = true;
  });
  output.AddRows(0, "0");
  EXPECT_FALSE(isThrough);
  output.Finish(0);
  ahead.join();
  EXPECT_TRUE(isThrough);
  EXPECT_EQ("0123456", rows.text);
}

TEST_F(OrderedOutputTest, RunsWithoutRowsTakeRoomToo)
{
  OrderedOutput output(rows, messages, {}, 100);
  for (std::int64_t run = 1; run < 20; ++run) output.Finish(run);
  std::atomic<bool> isThrough = false;
  std::thread ahead([&] {
    output.AwaitRoom();
    isThrough = true;
  });
  EXPECT_FALSE(isThrough);
  output.Finish(0);
  ahead.join();
}

TEST_F(OrderedOutputTest, FailureOfOneEndsAll)
{
  FailingSink full(1);
  OrderedOutput output(full, messages, {}, 1);
  output.AddRows(0, "fits");
  output.AddRows(1, "waits");
  std::thread ahead([&] { EXPECT_THROW(output.AddRows(1, "more"), OrderedOutput::Stopped); });
  EXPECT_THROW(output.AddRows(0, "does not fit"), std::runtime_error);
  ahead.join();
  EXPECT_THROW(output.AwaitRoom(), OrderedOutput::Stopped);
  EXPECT_THROW(output.Finish(0), OrderedOutput::Stopped);
}

TEST_F(OrderedOutputTest, StopWakesWhoWaits)
{
  OrderedOutput output(rows, messages, {}, 1);
  output.AddRows(1, "waits");
  std::thread ahead([&] { EXPECT_THROW(output.AwaitRoom(), OrderedOutput::Stopped); });
  output.Stop();
  ahead.join();
  EXPECT_EQ("", rows.text);
}

}  // namespace varno::solve
