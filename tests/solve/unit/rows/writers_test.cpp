#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "solve/rows/csv_writer.h"
#include "solve/rows/json_writer.h"
#include "solve/rows/table_writer.h"

namespace varno::solve {

namespace {

class StringSink final : public TextSink {
 public:
  void Write(std::string_view addition) override
  {
    text += addition;
    ++pieces;
  }
  std::string text;
  int pieces = 0;
};

class FullSink final : public TextSink {
 public:
  void Write(std::string_view) override { throw std::runtime_error("full"); }
};

void WriteRow(RowWriter& writer, std::string_view time, std::vector<std::string_view> values)
{
  writer.Write(time, values);
}

}  // namespace

TEST(TableWriter, ColumnsAreAligned)
{
  StringSink sink;
  TableWriter table(sink, {"a", "p"}, 2, 30);
  table.Begin();
  WriteRow(table, "0", {"2.00000000000000000000000000000e+00", "0"});
  WriteRow(table, "2",
           {"1.46966235155697942570376505176e-01", "-1.67652421620050017604502156991e+00"});
  WriteRow(table, "10", {"-1.00000000000000000000000000000e+00", "0e-30"});
  EXPECT_EQ(sink.text,
            "# t  a  p\n"
            "0    2.00000000000000000000000000000e+00   0\n"
            "2    1.46966235155697942570376505176e-01  -1.67652421620050017604502156991e+00\n"
            "10  -1.00000000000000000000000000000e+00   0e-30\n");
  EXPECT_EQ(sink.pieces, 4);
}

TEST(TableWriter, ShortValuesAreFilledUpExceptTheLast)
{
  StringSink sink;
  TableWriter table(sink, {"x", "y", "z"}, 3, 2);
  WriteRow(table, "0.5", {"0", "nan", "0"});
  WriteRow(table, "1", {"-1.0e+00", "1.0e+00", "-0"});
  EXPECT_EQ(sink.text,
            "0.5   0         nan       0\n"
            "1    -1.0e+00   1.0e+00  -0\n");
}

TEST(TableWriter, LongTextsPushWhatFollows)
{
  StringSink sink;
  TableWriter table(sink, {"x", "y"}, 1, 1);
  WriteRow(table, "1000", {"1e-1000", "1e+00"});
  EXPECT_EQ(sink.text, "1000   1e-1000   1e+00\n");
}

TEST(TableWriter, NoColumns)
{
  StringSink sink;
  TableWriter table(sink, {}, 3, 15);
  table.Begin();
  WriteRow(table, "1", {});
  EXPECT_EQ(sink.text, "# t\n1\n");
}

TEST(CsvWriter, HeaderAndRowsWithoutBlanks)
{
  StringSink sink;
  CsvWriter csv(sink, {"x", "x'"});
  csv.Begin();
  WriteRow(csv, "0.1", {"1.0e+00", "-2.0e+00"});
  EXPECT_EQ(sink.text, "t,x,x'\n0.1,1.0e+00,-2.0e+00\n");
  EXPECT_EQ(sink.pieces, 2);
}

TEST(CsvWriter, NamesAreQuotedWhereTheyNeedIt)
{
  StringSink sink;
  CsvWriter csv(sink, {"a,b", "say \"x\"", "plain", "two\nlines"});
  csv.Begin();
  EXPECT_EQ(sink.text, "t,\"a,b\",\"say \"\"x\"\"\",plain,\"two\nlines\"\n");
}

TEST(JsonWriter, OneObjectALineWithStrings)
{
  StringSink sink;
  JsonWriter json(sink, {"x", "v"});
  json.Begin();
  WriteRow(json, "0", {"1.0e+00", "0"});
  WriteRow(json, "0.1", {"9.9e-01", "nan"});
  EXPECT_EQ(sink.text,
            "{\"t\":\"0\",\"x\":\"1.0e+00\",\"v\":\"0\"}\n"
            "{\"t\":\"0.1\",\"x\":\"9.9e-01\",\"v\":\"nan\"}\n");
  EXPECT_EQ(sink.pieces, 2);
}

TEST(JsonWriter, NamesAreEscaped)
{
  StringSink sink;
  JsonWriter json(sink, {"a\"b\\c", "\xff"});
  WriteRow(json, "1", {"2", "3"});
  const auto object = nlohmann::json::parse(sink.text);
  EXPECT_EQ(object.at("a\"b\\c"), "2");
  EXPECT_EQ(object.at("\xef\xbf\xbd"), "3");
}

TEST(Writers, FailuresOfTheSinkReachTheCaller)
{
  FullSink sink;
  TableWriter table(sink, {"x"}, 1, 1);
  CsvWriter csv(sink, {"x"});
  JsonWriter json(sink, {"x"});
  EXPECT_THROW(table.Begin(), std::runtime_error);
  EXPECT_THROW(csv.Begin(), std::runtime_error);
  for (RowWriter* writer : {static_cast<RowWriter*>(&table), static_cast<RowWriter*>(&csv),
                            static_cast<RowWriter*>(&json)}) {
    EXPECT_THROW(WriteRow(*writer, "0", {"1"}), std::runtime_error);
  }
}

// A comment of a table, an object of json, nothing in csv.
TEST(Writers, TellAPeriodWhereTheFormatHasRoom)
{
  StringSink table, csv, json;
  TableWriter(table, {"x"}, 1, 1).WritePeriod("x'", "6.28e+00");
  CsvWriter(csv, {"x"}).WritePeriod("x'", "6.28e+00");
  JsonWriter(json, {"x"}, {{"mu"}, {"1"}}).WritePeriod("x'", "6.28e+00");
  EXPECT_EQ(table.text, "# period of x'  6.28e+00\n");
  EXPECT_EQ(csv.text, "");
  EXPECT_EQ(json.text, "{\"period\":\"6.28e+00\",\"mu\":\"1\",\"of\":\"x'\"}\n");
}

// What a sweep has set comes first.
TEST(CsvWriter, LeadingFieldsComeBeforeTheTime)
{
  StringSink sink;
  CsvWriter csv(sink, {"x"}, {{"mu", "x(0)"}, {"1", "0.5"}});
  csv.Begin();
  WriteRow(csv, "0.1", {"2e+00"});
  EXPECT_EQ(sink.text, "mu,x(0),t,x\n1,0.5,0.1,2e+00\n");
}

TEST(JsonWriter, LeadingFieldsComeBeforeTheTime)
{
  StringSink sink;
  JsonWriter json(sink, {"x"}, {{"mu", "x(0)"}, {"1", "0.5"}});
  json.Begin();
  WriteRow(json, "0.1", {"2e+00"});
  EXPECT_EQ(sink.text, "{\"mu\":\"1\",\"x(0)\":\"0.5\",\"t\":\"0.1\",\"x\":\"2e+00\"}\n");
}

}  // namespace varno::solve
