#include "solve/language/token_stream.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Kind = Grammar::token;

struct Stream {
  explicit Stream(std::string text)
      : source(sources.Add("f", std::move(text))),
        tokens(Kind::TOKEN_FILE_TEXT, sources, source, diagnostics)
  {}
  std::vector<int> Kinds()
  {
    std::vector<int> kinds;
    while (tokens.Next().kind != Kind::TOKEN_END) kinds.push_back(tokens.At(0).kind);
    kinds.erase(kinds.begin());  // the kind of the text
    return kinds;
  }
  int CountOf(TokenKind kind)
  {
    int count = 0;
    for (const int each : Kinds()) count += each == kind ? 1 : 0;
    return count;
  }

  Sources sources;
  Diagnostics diagnostics;
  std::uint32_t source;
  TokenStream tokens;
};

TEST(TokenStream, BeginsWithTheKindOfTheTextAndStaysAtTheEnd)
{
  Stream stream("x");
  EXPECT_EQ(stream.tokens.Next().kind, Kind::TOKEN_FILE_TEXT);
  EXPECT_EQ(stream.tokens.Next().kind, Kind::TOKEN_NAME);
  EXPECT_EQ(stream.tokens.Next().kind, Kind::TOKEN_END);
  EXPECT_EQ(stream.tokens.Next().kind, Kind::TOKEN_END);
  EXPECT_EQ(stream.tokens.At(-1).kind, Kind::TOKEN_NAME);
  EXPECT_EQ(stream.tokens.At(5).kind, Kind::TOKEN_END);
  EXPECT_EQ(stream.tokens.At(-9).kind, Kind::TOKEN_FILE_TEXT);
}

TEST(TokenStream, AndOrAreOperatorsAfterOperandsOnly)
{
  EXPECT_THAT(Stream("and and and").Kinds(),
              ElementsAre(Kind::TOKEN_NAME, Kind::TOKEN_AND, Kind::TOKEN_NAME));
  EXPECT_THAT(Stream("x = or + or;").Kinds(),
              ElementsAre(Kind::TOKEN_NAME, Kind::TOKEN_EQUALS, Kind::TOKEN_NAME, Kind::TOKEN_PLUS,
                          Kind::TOKEN_NAME, Kind::TOKEN_SEMICOLON));
  EXPECT_THAT(Stream("x') or").Kinds(), testing::Contains(int{Kind::TOKEN_OR}));
}

TEST(TokenStream, NotIsAnOperatorBeforeOperandsOnly)
{
  EXPECT_EQ(Stream("x = not y").CountOf(Kind::TOKEN_NOT), 1);
  EXPECT_EQ(Stream("x = not (y)").CountOf(Kind::TOKEN_NOT), 1);
  EXPECT_EQ(Stream("x = not not 3").CountOf(Kind::TOKEN_NOT), 2);
  EXPECT_EQ(Stream("x = not - 3").CountOf(Kind::TOKEN_NOT), 0);
  EXPECT_EQ(Stream("x = 2*not;").CountOf(Kind::TOKEN_NOT), 0);
  EXPECT_EQ(Stream("not(0) = 1;").CountOf(Kind::TOKEN_NOT), 0);
  EXPECT_EQ(Stream("x = not and 3").CountOf(Kind::TOKEN_NOT), 0);
}

TEST(TokenStream, FunctionAndEventBeginStatementsBeforeNames)
{
  EXPECT_EQ(Stream("function f(u) = u;").CountOf(Kind::TOKEN_FUNCTION), 1);
  EXPECT_EQ(Stream("x = 1; event e: x;").CountOf(Kind::TOKEN_EVENT), 1);
  EXPECT_EQ(Stream("function = 1; event' = function;").CountOf(Kind::TOKEN_FUNCTION), 0);
  EXPECT_EQ(Stream("event(0) = 1;").CountOf(Kind::TOKEN_EVENT), 0);
}

TEST(TokenStream, SemicolonsInsideBracketsSeparate)
{
  EXPECT_EQ(Stream("x = [t < 1 : 2; 3 : 4];").CountOf(Kind::TOKEN_SEPARATOR), 1);
  EXPECT_EQ(Stream("event e: x { x = 1; y = [t < 1 : 2; 3 : 4]; };").CountOf(Kind::TOKEN_SEPARATOR),
            3);
  EXPECT_EQ(Stream("x = (1; y = 2;").CountOf(Kind::TOKEN_SEPARATOR), 0);
  EXPECT_EQ(Stream("x = [t < (1 : 2; 3 : 4];").CountOf(Kind::TOKEN_SEPARATOR), 1);
}

TEST(TokenStream, BracketsThatNobodyClosesDoNotSwallowStatements)
{
  EXPECT_EQ(Stream("x = [t < 1 : 2; y = 2; z = 3;").CountOf(Kind::TOKEN_SEPARATOR), 0);
  EXPECT_EQ(Stream("x = [t < 1 : 2;").CountOf(Kind::TOKEN_SEPARATOR), 0);
  EXPECT_EQ(
      Stream("event e: x { x = 1; y' = 3; event f: y { y = 1; };").CountOf(Kind::TOKEN_SEPARATOR),
      1);
}

TEST(TokenStream, OpenBracketsAreKnownWhereTheyHurt)
{
  Stream stream("x = (1 + [2;");
  while (stream.tokens.Next().kind != Kind::TOKEN_SEMICOLON) continue;
  EXPECT_EQ(stream.tokens.Unclosed(), (Place{stream.source, 9, 10}));
}

TEST(TokenStream, MissingSemicolonsAreInserted)
{
  Stream stream("x' = y + 1\ny' = x\nz = 2");
  EXPECT_EQ(stream.CountOf(Kind::TOKEN_SEMICOLON), 2);
  ASSERT_EQ(stream.diagnostics.All().size(), 2U);
  EXPECT_EQ(stream.diagnostics.All()[0].message, "missing ';'");
  EXPECT_EQ(stream.diagnostics.All()[0].place, (Place{stream.source, 10, 10}));
}

TEST(TokenStream, NoSemicolonIsInsertedIntoEventsAndDeclarations)
{
  Stream stream("event e: x falling { x = 1; }; par mu = 3;");
  stream.Kinds();
  EXPECT_THAT(stream.diagnostics.All(), IsEmpty());
}

TEST(TokenStream, NamesThatSeemToBeDefined)
{
  Stream stream("par mu = 3; dx/dt = 1; function f(u) = 2; y'' = 1; z(0) = 2;");
  std::vector<std::string> names;
  for (const Place& place : stream.tokens.DefinedNames())
    names.emplace_back(stream.sources.Text(place));
  EXPECT_THAT(names, ElementsAre("mu", "x", "f", "y"));
}

}  // namespace
}  // namespace varno::solve
