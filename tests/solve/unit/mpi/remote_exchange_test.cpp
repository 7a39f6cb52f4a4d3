// The exchange of a rank, with the first rank played by hand.

#include "solve/mpi/remote_exchange.h"

#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

class RemoteExchangeTest : public testing::Test {
 protected:
  /// What has been told since the last call: "take 3; rows 1 text; ".
  std::string Told()
  {
    std::string told;
    for (std::string parcel = exchange.TakeParcel(); !parcel.empty();
         parcel = exchange.TakeParcel()) {
      ForEachRecord(parcel, [&](RecordKind kind, std::int64_t number, std::string_view text) {
        const char* const names[] = {"take", "rows", "message", "finish", "ask", "stop", "ended"};
        told += names[static_cast<int>(kind)] + (" " + std::to_string(number));
        if (kind != RecordKind::kFinish) told += " " + std::string(text.substr(0, 10));
        told += "; ";
      });
    }
    return told;
  }
  /// Waits until something has been told.
  std::string NextTold()
  {
    for (;;) {
      if (std::string told = Told(); !told.empty()) return told;
      std::this_thread::yield();
    }
  }

  RemoteExchange exchange;
};

}  // namespace

TEST_F(RemoteExchangeTest, TakesTheRunsThatItGets)
{
  std::optional<RunRange> first, second;
  std::thread taker([&] {
    first = exchange.Take(8);
    second = exchange.Take(9);
  });
  EXPECT_EQ("take 8 ; ", NextTold());
  exchange.Receive({OrderKind::kRuns, 30, 5});
  EXPECT_EQ("take 9 ; ", NextTold());
  exchange.Receive({OrderKind::kRuns, 0, 0});
  taker.join();
  ASSERT_TRUE(first);
  EXPECT_EQ(30, first->first);
  EXPECT_EQ(5, first->count);
  EXPECT_FALSE(second);
}

TEST_F(RemoteExchangeTest, ShortRunsNeedNoAnswer)
{
  exchange.AddRows(7, "row");
  exchange.AddMessage(7, "why");
  exchange.Finish(7, RunOutcome::kFailed);
  exchange.AddRows(8, "other");
  exchange.Finish(8, RunOutcome::kAllRows);
  EXPECT_EQ("rows 7 row; message 7 why; finish 7; rows 8 other; finish 8; ", Told());
}

TEST_F(RemoteExchangeTest, FurtherRowsWaitForRoom)
{
  exchange.AddRows(7, "first");
  EXPECT_EQ("rows 7 first; ", Told());
  std::thread adder([&] { exchange.AddRows(7, "second"); });
  EXPECT_EQ("ask 7 ; ", NextTold());
  exchange.Receive({OrderKind::kGrant, 8, 0});
  EXPECT_EQ("", Told());
  exchange.Receive({OrderKind::kGrant, 7, 0});
  EXPECT_EQ("rows 7 second; ", NextTold());
  adder.join();
}

TEST_F(RemoteExchangeTest, StopWakesWhoWaits)
{
  std::thread taker([&] { EXPECT_THROW(exchange.Take(1), RunExchange::Stopped); });
  NextTold();
  exchange.Receive({OrderKind::kStop, 0, 0});
  taker.join();
  EXPECT_THROW(exchange.AddRows(1, ""), RunExchange::Stopped);
  EXPECT_THROW(exchange.Finish(1, RunOutcome::kAllRows), RunExchange::Stopped);
  exchange.End("");
  EXPECT_EQ("ended 0 ; ", Told());
}

TEST_F(RemoteExchangeTest, OwnStopIsTold)
{
  exchange.Stop();
  exchange.Stop();
  exchange.End("error");
  EXPECT_EQ("stop 0 ; ended 0 error; ", Told());
}

TEST_F(RemoteExchangeTest, NoParcelGrowsWithARow)
{
  exchange.AddRows(1, std::string(5 * kMostRecordBytes, 'x'));
  int parcels = 0;
  for (std::string parcel = exchange.TakeParcel(); !parcel.empty();
       parcel = exchange.TakeParcel()) {
    EXPECT_LT(parcel.size(), 3 * kMostRecordBytes);
    ++parcels;
  }
  EXPECT_GE(parcels, 2);
}

}  // namespace varno::solve
