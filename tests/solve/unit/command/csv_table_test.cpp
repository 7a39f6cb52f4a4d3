#include "solve/command/csv_table.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

using Fields = std::vector<std::string>;

std::vector<Fields> Read(const std::string& text)
{
  std::vector<Fields> all;
  for (const CsvRecord& record : ReadCsv(text, "file")) all.push_back(record.fields);
  return all;
}

std::string ErrorOf(const std::string& text)
{
  try {
    ReadCsv(text, "file");
  } catch (const UsageError& error) {
    return error.what();
  }
  return {};
}

}  // namespace

TEST(CsvTable, FieldsAndLines)
{
  EXPECT_EQ((std::vector<Fields>{{"a", "b"}, {"1", "2"}}), Read("a,b\n1,2\n"));
  EXPECT_EQ((std::vector<Fields>{{"a", "b"}, {"1", "2"}}), Read("a , b\r\n 1,\t2 "));
  EXPECT_EQ((std::vector<Fields>{{"a", ""}, {"", "2"}}), Read("a,\n,2"));
  EXPECT_EQ((std::vector<Fields>{{"a"}, {"1"}}), Read("\n\na\n\n1\n\n"));
  EXPECT_TRUE(Read("").empty());
}

TEST(CsvTable, QuotedFields)
{
  EXPECT_EQ((std::vector<Fields>{{"atan2(1,2)", "x"}}), Read("\"atan2(1,2)\",x\n"));
  EXPECT_EQ((std::vector<Fields>{{"say \"a\"", " b "}}), Read("\"say \"\"a\"\"\" , \" b \"\r\n"));
  EXPECT_EQ((std::vector<Fields>{{"two\nlines"}, {"1"}}), Read("\"two\nlines\"\n1"));
}

TEST(CsvTable, LinesAreCounted)
{
  const auto records = ReadCsv("\n\"two\nlines\"\n\n1", "file");
  ASSERT_EQ(2U, records.size());
  EXPECT_EQ(2, records[0].line);
  EXPECT_EQ(5, records[1].line);
}

TEST(CsvTable, QuotesThatAreNotRightAreTold)
{
  EXPECT_EQ("file:2: a quote is not closed", ErrorOf("a\n\"b\nc"));
  EXPECT_EQ("file:1: a comma must follow the quote, not 'c'", ErrorOf("\"b\"c\n"));
}

}  // namespace varno::solve
