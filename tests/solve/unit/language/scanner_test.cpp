#include "solve/language/scanner.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Kind = Grammar::token;

struct Scanned {
  explicit Scanned(std::string text) : source(sources.Add("f", std::move(text)))
  {
    tokens = Scan(sources, source, diagnostics);
  }
  std::vector<std::string> Texts() const
  {
    std::vector<std::string> texts;
    for (const Token& token : tokens) texts.emplace_back(sources.Text(token.place));
    texts.pop_back();  // the end
    return texts;
  }
  std::vector<int> Kinds() const
  {
    std::vector<int> kinds;
    for (const Token& token : tokens) kinds.push_back(token.kind);
    kinds.pop_back();
    return kinds;
  }

  Sources sources;
  std::uint32_t source;
  Diagnostics diagnostics;
  std::vector<Token> tokens;
};

TEST(Scanner, Numbers)
{
  const Scanned scanned("1 1. .5 1e3 1.5E-3 2.e+7 .5e0");
  EXPECT_THAT(scanned.Texts(), ElementsAre("1", "1.", ".5", "1e3", "1.5E-3", "2.e+7", ".5e0"));
  EXPECT_THAT(scanned.Kinds(), testing::Each(int{Kind::TOKEN_NUMBER}));
}

TEST(Scanner, AnExponentNeedsDigits)
{
  EXPECT_THAT(Scanned("2e").Texts(), ElementsAre("2", "e"));
  EXPECT_THAT(Scanned("2e+").Texts(), ElementsAre("2", "e", "+"));
  EXPECT_THAT(Scanned("1..5").Texts(), ElementsAre("1.", ".5"));
  EXPECT_THAT(Scanned(".").Texts(), ElementsAre("."));
}

TEST(Scanner, DerivativeMarks)
{
  const Scanned scanned("y' y''' y'12 y''2 y'0");
  std::vector<std::uint32_t> orders;
  for (const Token& token : scanned.tokens) {
    if (token.kind == Kind::TOKEN_DERIVATIVE) orders.push_back(token.order);
  }
  EXPECT_THAT(orders, ElementsAre(1, 3, 12, 2, 0));
  EXPECT_THAT(scanned.Texts(),
              ElementsAre("y", "'", "y", "'''", "y", "'12", "y", "''", "2", "y", "'0"));
}

TEST(Scanner, OrdersBeyondTheirTypeAreCut)
{
  EXPECT_EQ(Scanned("'99999999999999999999999999").tokens[0].order, UINT32_MAX);
}

TEST(Scanner, NamesAndReservedNames)
{
  EXPECT_THAT(Scanned("t t1 pi pi2 _a Sin").Kinds(),
              ElementsAre(Kind::TOKEN_TIME, Kind::TOKEN_NAME, Kind::TOKEN_PI, Kind::TOKEN_NAME,
                          Kind::TOKEN_NAME, Kind::TOKEN_NAME));
}

TEST(Scanner, CommentsAndBlanks)
{
  EXPECT_THAT(Scanned("a// b\nc /* d\n* / ** e */ f\v\f\r\tg /**/ h /***/ i // j").Texts(),
              ElementsAre("a", "c", "f", "g", "h", "i"));
}

TEST(Scanner, AnOpenCommentEndsWithTheTextAndIsNoted)
{
  const Scanned scanned("a /* b ; c **");
  EXPECT_THAT(scanned.Texts(), ElementsAre("a"));
  ASSERT_EQ(scanned.diagnostics.All().size(), 1U);
  EXPECT_EQ(scanned.diagnostics.All()[0].severity, Severity::kNote);
  EXPECT_EQ(scanned.diagnostics.All()[0].place, (Place{scanned.source, 2, 4}));
}

TEST(Scanner, HashCommentsAreReportedAndSkipped)
{
  const Scanned scanned("a # b\nc");
  EXPECT_THAT(scanned.Texts(), ElementsAre("a", "c"));
  ASSERT_EQ(scanned.diagnostics.All().size(), 1U);
  EXPECT_EQ(scanned.diagnostics.All()[0].hint, "comments begin with //");
}

TEST(Scanner, OperatorsOfOtherLanguagesAreOneTokenEach)
{
  const Scanned scanned("a**b&&c||d==e!=f:=g");
  EXPECT_THAT(scanned.Texts(),
              ElementsAre("a", "**", "b", "&&", "c", "||", "d", "==", "e", "!=", "f", ":=", "g"));
}

TEST(Scanner, SignsAfterAnEqualsSignStayAlone)
{
  EXPECT_THAT(Scanned("x=-3<-2").Texts(), ElementsAre("x", "=", "-", "3", "<", "-", "2"));
}

TEST(Scanner, CharactersOfSeveralBytesAreOneToken)
{
  EXPECT_THAT(Scanned("x\u2032\u00e9\U0001F600").Texts(),
              ElementsAre("x", "\u2032", "\u00e9", "\U0001F600"));
  EXPECT_THAT(Scanned("\xe2\x80x").Texts(), ElementsAre("\xe2", "\x80", "x"));
}

TEST(Scanner, NulBytesAreTokensThatNoRuleAllows)
{
  const Scanned scanned(std::string("a\0b", 3));
  EXPECT_THAT(scanned.Kinds(),
              ElementsAre(Kind::TOKEN_NAME, Kind::TOKEN_FOREIGN, Kind::TOKEN_NAME));
}

TEST(Scanner, AByteOrderMarkIsSkipped)
{
  const Scanned scanned("\xEF\xBB\xBFx");
  EXPECT_THAT(scanned.Texts(), ElementsAre("x"));
  EXPECT_EQ(scanned.tokens[0].place, (Place{scanned.source, 3, 4}));
}

TEST(Scanner, AnEmptyTextIsTheEndAlone)
{
  EXPECT_THAT(Scanned("").Texts(), IsEmpty());
}

TEST(Scanner, LongTokens)
{
  const std::string name(1000000, 'a'), digits(1000000, '7'), comment(1000000, '*');
  const Scanned scanned(name + " " + digits + "/*" + comment + "*/b");
  EXPECT_THAT(scanned.Texts(), ElementsAre(name, digits, "b"));
}

TEST(Scanner, EveryByteHasAToken)
{
  std::string text;
  for (int byte = 0; byte < 256; ++byte) text += std::string(1, static_cast<char>(byte)) + "\n";
  EXPECT_NO_THROW(Scanned{text});
}

}  // namespace
}  // namespace varno::solve
