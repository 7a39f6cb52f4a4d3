#include "varno/parser/scanner.h"

#include <cctype>
#include <climits>
#include <cstdio>
#include <string>
#include <string_view>

#include <gmp.h>
#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/support/exact_text.h"
#include "tests/varno/support/log_capture.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/parser/semantic_value.h"

namespace varno {

using arith::Mpf;
using namespace support;

namespace {

using namespace std::literals;

enum Token : int {
  kEnd = 0,
  kName = 257,
  kInteger = 258,
  kReal = 259,
  kDeriv = 260,
  kLastToken = 282,
};

std::string Decimal(const Mpf& number)
{
  char text[64];
  gmp_snprintf(text, sizeof text, "%.15Fg", static_cast<mpf_srcptr>(number));
  return text;
}

/// A token in words: its kind and value, the character itself, or the code of a keyword.
std::string Described(int token, const SemanticValue& value)
{
  switch (token) {
    case kName:
      return "name " + value.text;
    case kInteger:
      return "integer " + Decimal(*value.number);
    case kReal:
      return "real " + Decimal(*value.number);
    case kDeriv:
      return "deriv " + std::to_string(value.order);
    default:
      if (token < 256 && std::isgraph(token) != 0) return std::string(1, static_cast<char>(token));
      return token <= kLastToken ? '<' + std::to_string(token) + '>' : "<unknown>";
  }
}

/// All tokens of a text, a blank between each two.
std::string Scanned(std::string_view text)
{
  const ScannerInput input(text);
  std::string tokens;
  for (;;) {
    SemanticValue value;
    const int token = yylex(&value);
    if (token == kEnd) return tokens;
    tokens += (tokens.empty() ? "" : " ") + Described(token, value);
  }
}

/// The line that the scanner has reached at the end of a text.
int LinesScanned(std::string_view text)
{
  const ScannerInput input(text);
  SemanticValue value;
  while (yylex(&value) != kEnd) {
  }
  return CurrentLine();
}

/// The first token of a text, which must be the only one.
SemanticValue OnlyToken(std::string_view text, int expectedToken)
{
  const ScannerInput input(text);
  SemanticValue value, rest;
  EXPECT_EQ(yylex(&value), expectedToken);
  EXPECT_EQ(yylex(&rest), kEnd);
  return value;
}

struct TextAndTokens {
  std::string_view text;
  std::string tokens;
};

void ExpectTokens(std::initializer_list<TextAndTokens> rows)
{
  for (const auto& [text, tokens] : rows) EXPECT_EQ(Scanned(text), tokens) << text;
}

class Scanner : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(Scanner, NumbersAreIntegersWithoutPointAndExponentAndRealsWithOne)
{
  ExpectTokens({
      {"1", "integer 1"},
      {"007", "integer 7"},
      {"1.", "real 1"},
      {"1.0", "real 1"},
      {".5", "real 0.5"},
      {"1e3", "real 1000"},
      {"1E3", "real 1000"},
      {"2.e3", "real 2000"},
      {".5e1", "real 5"},
      {"1.5E-3", "real 0.0015"},
      {"1.5e+3", "real 1500"},
      {"2e007", "real 20000000"},
  });
}

TEST_F(Scanner, WhatIsNoWellFormedExponentIsNotPartOfTheNumber)
{
  ExpectTokens({
      {"1e", "integer 1 name e"},
      {"2e", "integer 2 name e"},
      {"2e+", "integer 2 name e +"},
      {"2e+x", "integer 2 name e + name x"},
      {"2.E-", "real 2 name E -"},
      {"2e 3", "integer 2 name e integer 3"},
      {"2ex3", "integer 2 name ex3"},
      {"1e5x", "real 100000 name x"},
      {"2e1.5", "real 20 real 0.5"},
      {".e1", ". name e1"},
  });
}

TEST_F(Scanner, APointWithoutDigitsIsACharacter)
{
  ExpectTokens({
      {".", "."},
      {"..", ". ."},
      {"1.2.3", "real 1.2 real 0.3"},
      {"1..2", "real 1 real 0.2"},
      {"y.5", "name y real 0.5"},
  });
}

TEST_F(Scanner, ASignIsNotPartOfANumber)
{
  EXPECT_EQ(Scanned("-1+2"), "- integer 1 + integer 2");
}

TEST_F(Scanner, IntegersKeepTheirExactValueBeyondTheRangeOfInt)
{
  for (const char* const digits :
       {"2147483647", "2147483648", "4294967297", "9223372036854775808", "123456789012345678901"}) {
    const SemanticValue value = OnlyToken(digits, kInteger);
    EXPECT_EQ(mpf_cmp(*value.number, Mpf(digits)), 0) << digits;
    char text[64];
    gmp_snprintf(text, sizeof text, "%.0Ff", static_cast<mpf_srcptr>(*value.number));
    EXPECT_STREQ(text, digits);
  }
}

TEST_F(Scanner, NumbersAreReadAtThePrecisionInForce)
{
  mpf_set_default_prec(300);
  const SemanticValue value = OnlyToken("0.1", kReal);
  Mpf error;
  mpf_mul_ui(error, *value.number, 10);
  mpf_sub(error, error, Expr::Global->_ONE);
  mpf_abs(error, error);
  EXPECT_LT(mpf_cmp(error, Mpf("1e-80")), 0);
}

TEST_F(Scanner, ANumberWhoseExponentGmpCannotHoldEndsTheRun)
{
  EXPECT_EXIT(Scanned("1e9999999999999999999"), testing::ExitedWithCode(1),
              ExactText("#(ERR) Number \"1e9999999999999999999\" is out of range\n"));
}

TEST_F(Scanner, NamesBeginWithALetterOrUnderscore)
{
  ExpectTokens({
      {"y", "name y"},
      {"_", "name _"},
      {"_a1_B2", "name _a1_B2"},
      {"y1 y2", "name y1 name y2"},
      {"1y", "integer 1 name y"},
      {"1_2", "integer 1 name _2"},
      {"a%b", "name a % name b"},
  });
}

TEST_F(Scanner, KeywordsAreWholeWords)
{
  ExpectTokens({
      {"t", "<262>"},
      {"t1", "name t1"},
      {"tt", "name tt"},
      {"pi", "<261>"},
      {"pi2", "name pi2"},
      {"2pi", "integer 2 <261>"},
      {"tan", "<265>"},
      {"tg", "<265>"},
      {"sin(t)", "<263> ( <262> )"},
      {"Sin", "name Sin"},
      {"sinx", "name sinx"},
      {"acotgh", "name acotgh"},
      {"argcotgh", "<278>"},
      {"trunc", "<282>"},
  });
}

TEST_F(Scanner, ADerivativeMarkIsANumberBehindOneApostropheOrARunOfThem)
{
  ExpectTokens({
      {"y'", "name y deriv 1"},
      {"y''", "name y deriv 2"},
      {"y'''", "name y deriv 3"},
      {"y'2", "name y deriv 2"},
      {"y'12", "name y deriv 12"},
      {"y'0", "name y deriv 0"},
      {"y' 2", "name y deriv 1 integer 2"},
      {"y' '", "name y deriv 1 deriv 1"},
      {"y'2.5", "name y deriv 2 real 0.5"},
      {"y'2e1", "name y deriv 2 name e1"},
  });
}

TEST_F(Scanner, TwoApostrophesBeforeANumberAreOrderTwoAndTheNumber)
{
  EXPECT_EQ(Scanned("y''2"), "name y deriv 2 integer 2");
}

TEST_F(Scanner, ADerivativeOrderBeyondTheRangeOfIntIsTheLargestInt)
{
  EXPECT_EQ(OnlyToken("'2147483648", kDeriv).order, INT_MAX);
  EXPECT_EQ(OnlyToken("'99999999999999999999", kDeriv).order, INT_MAX);
}

TEST_F(Scanner, OperatorsAreTheirOwnCharacters)
{
  EXPECT_EQ(Scanned("+-*/()=&;,^<>[]:!"), "+ - * / ( ) = & ; , ^ < > [ ] : !");
}

TEST_F(Scanner, EveryByteThatBeginsNothingElseIsItsOwnCode)
{
  for (int byte = 1; byte < 256; ++byte) {
    if (std::isalnum(byte) != 0 || std::isspace(byte) != 0 || byte == '_' || byte == '\'') continue;
    const char text = static_cast<char>(byte);
    const ScannerInput input({&text, 1});
    SemanticValue value;
    EXPECT_EQ(yylex(&value), byte);
    EXPECT_EQ(yylex(&value), kEnd) << byte;
  }
}

TEST_F(Scanner, ANulByteIsAnUnknownCharacterAndNotTheEnd)
{
  EXPECT_EQ(Scanned("a\0b"sv), "name a <unknown> name b");
  EXPECT_EQ(Scanned("\0"sv), "<unknown>");
}

TEST_F(Scanner, BlankSpaceSeparatesAndCountsNoLine)
{
  EXPECT_EQ(Scanned(" \t\v\f\ra \t b\r"), "name a name b");
  EXPECT_EQ(LinesScanned(" \t\v\f\ra \t b\r"), 1);
}

TEST_F(Scanner, CommentsAreSkipped)
{
  ExpectTokens({
      {"// all of it", ""},
      {"a // b\nc", "name a name c"},
      {"a // b\r\nc", "name a name c"},
      {"// a /* b\nc", "name c"},
      {"//\nc", "name c"},
      {"a /* b */ c", "name a name c"},
      {"a/**/c", "name a name c"},
      {"a/***/c", "name a name c"},
      {"a /* * / ** */ c", "name a name c"},
      {"a /* // */ c", "name a name c"},
      {"a /* b\n c */ d", "name a name d"},
      {"a / / b", "name a / / name b"},
      {"a /= b", "name a / = name b"},
      {"/* \0 */ a // \0\n b"sv, "name a name b"},
  });
}

TEST_F(Scanner, TheStarThatOpensACommentDoesNotCloseIt)
{
  EXPECT_EQ(Scanned("/*/ a */ b"), "name b");
}

TEST_F(Scanner, CommentsDoNotNest)
{
  EXPECT_EQ(Scanned("/* /* a */ b */ c"), "name b * / name c");
}

TEST_F(Scanner, ACommentThatIsNotClosedEndsWithTheInput)
{
  const LogCapture log;
  ExpectTokens({
      {"a /* b; c", "name a"},
      {"a /*", "name a"},
      {"a /* b *", "name a"},
      {"a /* b **", "name a"},
      {"a /*/", "name a"},
  });
  EXPECT_EQ(log.Text(), "");
}

TEST_F(Scanner, LinesAreCountedFromOne)
{
  EXPECT_EQ(LinesScanned(""), 1);
  EXPECT_EQ(LinesScanned("a"), 1);
  EXPECT_EQ(LinesScanned("a\n"), 2);
  EXPECT_EQ(LinesScanned("\n\na\r\n\n"), 5);
}

TEST_F(Scanner, ALineCommentCountsItsLineAlsoWithoutANewline)
{
  EXPECT_EQ(LinesScanned("a // b\n"), 2);
  EXPECT_EQ(LinesScanned("a // b"), 2);
  EXPECT_EQ(LinesScanned("//"), 2);
  EXPECT_EQ(LinesScanned("//\n//\n"), 3);
}

TEST_F(Scanner, ABlockCommentCountsItsNewlines)
{
  EXPECT_EQ(LinesScanned("/* a */"), 1);
  EXPECT_EQ(LinesScanned("/* a\nb\n*/"), 3);
  EXPECT_EQ(LinesScanned("/* // a\n*/"), 2);
  EXPECT_EQ(LinesScanned("/* a\n"), 2);
  EXPECT_EQ(LinesScanned("/* a\n\n*"), 3);
}

TEST_F(Scanner, TheLineIsThatOfTheTokenLastRead)
{
  const ScannerInput input("a\nb /* \n */ c\n\nd\n");
  SemanticValue value;
  for (const int line : {1, 2, 3, 5}) {
    EXPECT_EQ(yylex(&value), kName);
    EXPECT_EQ(CurrentLine(), line) << value.text;
  }
  EXPECT_EQ(yylex(&value), kEnd);
  EXPECT_EQ(CurrentLine(), 6);
}

TEST_F(Scanner, ANewInputBeginsWithLineOne)
{
  EXPECT_EQ(LinesScanned("\n\n\n"), 4);
  EXPECT_EQ(LinesScanned("\n"), 2);
}

/// Longer than any buffer that the scanner begins with.
constexpr std::size_t kManyCharacters = 100'000;

TEST_F(Scanner, NamesOfAnyLengthAreOneToken)
{
  const std::string name(kManyCharacters, 'n');
  EXPECT_EQ(OnlyToken(name, kName).text, name);
}

TEST_F(Scanner, NumbersOfAnyLengthAreOneToken)
{
  const std::string zeros(kManyCharacters, '0');
  EXPECT_EQ(Scanned(zeros + '7'), "integer 7");
  EXPECT_EQ(Scanned(zeros + "7.5" + zeros), "real 7.5");
  EXPECT_EQ(Scanned("75e-" + zeros + '1'), "real 7.5");
}

TEST_F(Scanner, RunsOfApostrophesOfAnyLengthAreOneToken)
{
  const std::string run(kManyCharacters, '\'');
  EXPECT_EQ(OnlyToken(run, kDeriv).order, static_cast<int>(kManyCharacters));
}

TEST_F(Scanner, CommentsOfAnyLengthAreSkipped)
{
  std::string lines;
  for (std::size_t i = 0; i < kManyCharacters / 10; ++i) lines += "123456789\n";
  EXPECT_EQ(Scanned("/*" + lines + "*/ a"), "name a");
  EXPECT_EQ(LinesScanned("/*" + lines + "*/"), 10'001);
  EXPECT_EQ(Scanned("//" + std::string(kManyCharacters, '/') + "\na"), "name a");
}

TEST_F(Scanner, TokensMayLieAcrossTheEndOfABuffer)
{
  // Names of different lengths, so that some begin before and end behind every likely buffer size.
  std::string text, tokens;
  for (int i = 0; i < 10'000; ++i) {
    const std::string name = 'n' + std::to_string(i * i);
    text += name + ' ';
    tokens += (i == 0 ? "name " : " name ") + name;
  }
  EXPECT_EQ(Scanned(text), tokens);
}

TEST_F(Scanner, AnErrorNamesTheMessageTheTokenAndTheLine)
{
  const ScannerInput input("a\nbcd e");
  SemanticValue value;
  yylex(&value);
  yylex(&value);
  const LogCapture log;
  yyerror("some message");
  EXPECT_EQ(log.Text(), "#(ERR) ERROR: some message \"bcd\" at line #2\n");
}

TEST_F(Scanner, AnErrorAtTheEndOfTheInputHasAnEmptyToken)
{
  const ScannerInput input("a\n");
  SemanticValue value;
  yylex(&value);
  yylex(&value);
  const LogCapture log;
  yyerror("some message");
  EXPECT_EQ(log.Text(), "#(ERR) ERROR: some message \"\" at line #2\n");
}

TEST_F(Scanner, AnInputThatCannotBeReadEndsTheRun)
{
  const auto scanFolder = [] {
    SetScannerInput(std::fopen(".", "r"));
    SemanticValue value;
    yylex(&value);
  };
  EXPECT_EXIT(scanFolder(), testing::ExitedWithCode(1),
              ExactText("#(ERR) Cannot read the input: Is a directory\n"));
}

}  // namespace

}  // namespace varno
