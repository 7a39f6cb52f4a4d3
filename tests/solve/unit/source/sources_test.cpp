#include "solve/source/sources.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(Sources, PositionsCountFromOne)
{
  Sources sources;
  const std::uint32_t source = sources.Add("a", "one\ntwo\n\nfour");
  const auto position = [&](std::uint32_t byte) {
    const Position at = sources.Begin({source, byte, byte});
    return at.line * 100 + at.column;
  };
  EXPECT_EQ(position(0), 101);
  EXPECT_EQ(position(3), 104);  // the line end belongs to its line
  EXPECT_EQ(position(4), 201);
  EXPECT_EQ(position(8), 301);
  EXPECT_EQ(position(9), 401);
  EXPECT_EQ(position(13), 405);
}

TEST(Sources, ColumnsCountCharacters)
{
  Sources sources;
  const std::uint32_t source = sources.Add("a", "\u00e9\u2032x");
  EXPECT_EQ(sources.Begin({source, 5, 6}).column, 3);
}

TEST(Sources, LinesComeWithoutTheirEnds)
{
  Sources sources;
  const std::uint32_t source = sources.Add("a", "one\r\ntwo");
  EXPECT_EQ(sources.Line({source, 1, 2}), "one");
  EXPECT_EQ(sources.Line({source, 5, 8}), "two");
  EXPECT_EQ(sources.Line({source, 8, 8}), "two");
}

TEST(Sources, TextsStayWhereTheyAre)
{
  Sources sources;
  const std::uint32_t first = sources.Add("a", "x' = 1;");
  const std::string_view text = sources.Text(Place{first, 0, 1});
  for (int i = 0; i < 1000; ++i) sources.Add("--set", "x(0)=1");
  EXPECT_EQ(text, "x");
  EXPECT_EQ(sources.Name(1000), "--set");
  EXPECT_EQ(sources.Text(1000), "x(0)=1");
}

TEST(Sources, AnEmptyTextHasOneLine)
{
  Sources sources;
  const std::uint32_t source = sources.Add("a", "");
  EXPECT_EQ(sources.Begin({source, 0, 0}).line, 1);
  EXPECT_EQ(sources.Line({source, 0, 0}), "");
}

TEST(Sources, PlacesOfUnknownSourcesAreRefused)
{
  EXPECT_THROW(Sources().Begin({1, 0, 0}), std::out_of_range);
}

TEST(Sources, TooLongTextsAreRefused)
{
  Sources sources;
  EXPECT_THROW(sources.Add("a", std::string(kMaxSourceBytes + 1, ' ')), std::length_error);
}

}  // namespace
}  // namespace varno::solve
