#include "solve/mpi/records.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

struct Seen {
  RecordKind kind;
  std::int64_t number;
  std::string text;
};

std::vector<Seen> Read(const std::string& parcel)
{
  std::vector<Seen> records;
  ForEachRecord(parcel, [&](RecordKind kind, std::int64_t number, std::string_view text) {
    records.push_back({kind, number, std::string(text)});
  });
  return records;
}

}  // namespace

TEST(Records, ComeBackInOrder)
{
  std::string parcel;
  AppendRecord(parcel, RecordKind::kTake, 5);
  AppendRecord(parcel, RecordKind::kRows, 1LL << 40, std::string("1 2\n\0", 5));
  AppendRecord(parcel, RecordKind::kEnded, 0, "why");
  const std::vector<Seen> records = Read(parcel);
  ASSERT_EQ(3U, records.size());
  EXPECT_EQ(RecordKind::kTake, records[0].kind);
  EXPECT_EQ(5, records[0].number);
  EXPECT_EQ("", records[0].text);
  EXPECT_EQ(1LL << 40, records[1].number);
  EXPECT_EQ(std::string("1 2\n\0", 5), records[1].text);
  EXPECT_EQ(RecordKind::kEnded, records[2].kind);
  EXPECT_EQ("why", records[2].text);
}

TEST(Records, LongTextsComeInPieces)
{
  const std::string text(2 * kMostRecordBytes + 1, 'x');
  std::string parcel;
  AppendRecord(parcel, RecordKind::kRows, 3, text);
  std::string joined;
  for (const Seen& record : Read(parcel)) {
    EXPECT_EQ(3, record.number);
    EXPECT_LE(record.text.size(), kMostRecordBytes);
    joined += record.text;
  }
  EXPECT_EQ(text, joined);
}

TEST(Records, RangesLeaveWorkForAllRanks)
{
  EXPECT_EQ(1, MostInRange(10, 4));
  EXPECT_EQ(4096, MostInRange(1'000'000'000, 4));
  for (const int ranks : {2, 16, 64}) EXPECT_LE(MostInRange(100'000, ranks) * ranks * 8, 100'000);
}

}  // namespace varno::solve
