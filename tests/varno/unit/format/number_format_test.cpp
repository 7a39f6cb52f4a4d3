#include "varno/format/number_format.h"

#include <initializer_list>
#include <string>

#include <gmp.h>
#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/support/scoped_precision.h"

namespace varno {

using arith::Mpf;
using support::ScopedPrecision;

namespace {

std::string Blanks(std::size_t count)
{
  return std::string(count, ' ');
}

struct NumberAndText {
  const char* number;
  std::string text;
};

class NumberFormatTest : public testing::Test {
 protected:
  std::string Formatted(mpf_srcptr number) const
  {
    std::string text;
    AppendNumber(text, number, format);
    return text;
  }
  std::string Formatted(const char* decimal) const { return Formatted(Mpf(decimal)); }

  void ExpectTexts(std::initializer_list<NumberAndText> rows) const
  {
    for (const auto& [number, text] : rows) EXPECT_EQ(Formatted(number), text) << number;
  }

  /// Sets the width W and the digits P.
  void SetFormat(int width, int digits)
  {
    format.width = width;
    format.digits = digits;
  }

  const ScopedPrecision precision{80};
  NumberFormat format;
};

class ExponentForm : public NumberFormatTest {};

TEST_F(ExponentForm, EighteenCharactersByDefault)
{
  ExpectTexts({
      {"1", " 1.00000000000e+00"},
      {"-1", "-1.00000000000e+00"},
      {"0.5", " 5.00000000000e-01"},
      {"-0.5", "-5.00000000000e-01"},
      {"12345.678", " 1.23456780000e+04"},
      {"-0.000123", "-1.23000000000e-04"},
      {"0", " 0.00000000000e+00"},
  });
}

TEST_F(ExponentForm, DigitsBeyondThePrecisionAreCutOff)
{
  ExpectTexts({
      {"1.23456789012999", " 1.23456789012e+00"},
      {"1.999999999999", " 1.99999999999e+00"},
  });
}

TEST_F(ExponentForm, AnExponentHasTwoDigitsAtLeast)
{
  ExpectTexts({
      {"1e9", " 1.00000000000e+09"},
      {"1e10", " 1.00000000000e+10"},
      {"1e99", " 1.00000000000e+99"},
      {"1e100", " 1.00000000000e+100"},
      {"1e-100", " 1.00000000000e-100"},
      {"-1e1000", "-1.00000000000e+1000"},
      {"1e999999", " 1.00000000000e+999999"},
  });
  format.exponentDigits = 4;
  EXPECT_EQ(Formatted("1e-10"), " 1.00000000000e-0010");
  format.exponentDigits = 1;
  EXPECT_EQ(Formatted("1"), " 1.00000000000e+0");
}

TEST_F(ExponentForm, WhatTheWidthHasOverGoesInFront)
{
  SetFormat(17, 11);
  EXPECT_EQ(Formatted("1"), " 1.00000000000e+00");
  SetFormat(18, 11);
  EXPECT_EQ(Formatted("1"), Blanks(1) + " 1.00000000000e+00");
  EXPECT_EQ(Formatted("-1"), Blanks(1) + "-1.00000000000e+00");
  EXPECT_EQ(Formatted("0"), Blanks(1) + " 0.00000000000e+00");
  SetFormat(100, 11);
  EXPECT_EQ(Formatted("1"), Blanks(83) + " 1.00000000000e+00");
  EXPECT_EQ(Formatted("0"), Blanks(83) + " 0.00000000000e+00");
}

TEST_F(ExponentForm, ThePointStaysWithoutDigitsBehindIt)
{
  for (const int digits : {0, -1, -20}) {
    SetFormat(6 + digits, digits);
    EXPECT_EQ(Formatted("0"), " 0.e+00") << digits;
  }
  SetFormat(15, 0);
  ExpectTexts({
      {"1", Blanks(9) + " 1.e+00"},
      {"-25", Blanks(9) + "-2.e+01"},
      {"0", Blanks(9) + " 0.e+00"},
  });
  SetFormat(15, -2);
  EXPECT_EQ(Formatted("1"), Blanks(11) + " 1.e+00");
}

TEST_F(ExponentForm, ZerosFollowTheLastDigit)
{
  SetFormat(15, 30);
  EXPECT_EQ(Formatted("0.25"), " 2.5" + std::string(29, '0') + "e-01");
  EXPECT_EQ(Formatted("-123"), "-1.23" + std::string(28, '0') + "e+02");
}

TEST_F(ExponentForm, TheDigitAtTheWidthPlusOneRounds)
{
  // 16 digits are not longer than W + 1: nothing is rounded.
  SetFormat(15, 17);
  EXPECT_EQ(Formatted("0.1234567890123456"), " 1.23456789012345600e-01");
  // s[16] = '4' leaves the digits, '5' rounds the one before up and becomes '0'.
  EXPECT_EQ(Formatted("0.12345678901234564"), " 1.23456789012345640e-01");
  EXPECT_EQ(Formatted("0.12345678901234565"), " 1.23456789012345700e-01");
  EXPECT_EQ(Formatted("0.12345678901234595"), " 1.23456789012346000e-01");
}

TEST_F(ExponentForm, DigitsBehindTheRoundedOneStay)
{
  SetFormat(15, 17);
  EXPECT_EQ(Formatted("0.123456789012345678"), " 1.23456789012345708e-01");
  SetFormat(3, 8);
  // Six digits, s[4] = '5'.
  EXPECT_EQ(Formatted("0.123456"), " 1.23506000e-01");
  EXPECT_EQ(Formatted("0.123446"), " 1.23446000e-01");
}

TEST_F(ExponentForm, NegativeNumbersRoundOneDigitEarlier)
{
  SetFormat(15, 17);
  // The '-' counts: s[16] is the 16th digit, and the last two stay.
  EXPECT_EQ(Formatted("-0.123456789012345678"), "-1.23456789012346078e-01");
  // 15 digits and the sign are not longer than W + 1.
  EXPECT_EQ(Formatted("-0.123456789012345"), "-1.23456789012345000e-01");
  EXPECT_EQ(Formatted("-0.1234567890123455"), "-1.23456789012346000e-01");
}

TEST_F(ExponentForm, ACarryRunsThroughNines)
{
  SetFormat(15, 17);
  ExpectTexts({
      {"0.129999999999999950", " 1.30000000000000000e-01"},
      {"-0.129999999999999500", "-1.30000000000000000e-01"},
      // The 18th digit stays.
      {"1.99999999999999999", " 2.00000000000000009e+00"},
      {"3.99999999999999999", " 4.00000000000000009e+00"},
  });
}

TEST_F(ExponentForm, ACarryThatMakesTheFirstDigitFiveOrMoreGivesOneAndZeros)
{
  SetFormat(15, 17);
  for (const char* const number :
       {"4.99999999999999999", "5.99999999999999999", "6.99999999999999999", "7.99999999999999999",
        "8.99999999999999999"}) {
    EXPECT_EQ(Formatted(number), " 1.00000000000000000e+00") << number;
  }
}

TEST_F(ExponentForm, AllNinesGiveOneAndZerosWithTheOldExponent)
{
  ExpectTexts({
      {"9.99999999999999999", " 1.00000000000e+00"},
      {"0.0999999999999999999", " 1.00000000000e-02"},
      {"999999999999999999", " 1.00000000000e+17"},
      // More nines than digits are asked for: GMP has rounded to 10.
      {"9.99999999999999999999", " 1.00000000000e+01"},
  });
}

TEST_F(ExponentForm, ACarryIntoTheMinusSignMakesItAPoint)
{
  ExpectTexts({
      {"-9.99999999999999999", " ..00000000000e+00"},
      {"-1.99999999999999999", "-2.00000000000e+00"},
      {"-4.99999999999999999", "-5.00000000000e+00"},
      {"-8.99999999999999999", "-9.00000000000e+00"},
  });
  SetFormat(15, 17);
  // s is a point, 16 zeros and the last two nines, which stay.
  EXPECT_EQ(Formatted("-9.99999999999999999"), " ..00000000000000009e+00");
}

TEST_F(ExponentForm, SmallWidthsAskForFewDigits)
{
  SetFormat(1, 4);
  ExpectTexts({
      {"0.1234", " 1.2340e-01"},
      // Four digits, s[2] = '9'.
      {"0.12999", " 1.3000e-01"},
      {"0.1291", " 1.3010e-01"},
  });
  SetFormat(0, 4);
  ExpectTexts({
      {"0.12345", " 1.2300e-01"},
      // Three digits, s[1] = '6': the first digit rounds.
      {"0.163", " 2.0300e-01"},
      // With the sign, s[1] is the first digit.
      {"-0.163", "-1.6300e-01"},
      {"-0.563", " ..0630e-01"},
  });
}

TEST_F(ExponentForm, AtWidthZeroACarryIntoFiveLeavesNoDigits)
{
  SetFormat(0, 4);
  ExpectTexts({
      {"0.463", " 0.0000e-01"},
      {"463", " 0.0000e+02"},
  });
}

TEST_F(ExponentForm, NegativeWidthsDoNotRound)
{
  // Two digits are asked for, then one: only GMP rounds.
  SetFormat(-1, 4);
  ExpectTexts({
      {"0.196", " 2.0000e-01"},
      {"0.464", " 4.6000e-01"},
      {"-0.464", "-4.6000e-01"},
      {"0.964", " 9.6000e-01"},
  });
  SetFormat(-2, 4);
  ExpectTexts({{"0.464", " 5.0000e-01"}, {"0.964", " 1.0000e+00"}});
}

TEST_F(ExponentForm, FromWidthMinusThreeDownAllDigitsAreWritten)
{
  for (const int width : {-3, -4, -1000}) {
    SetFormat(width, 30);
    EXPECT_EQ(Formatted("0.1234567890123456789"), " 1.234567890123456789000000000000e-01") << width;
  }
}

TEST_F(ExponentForm, TheSignCharacterStandsWhereNegativeNumbersHaveTheirSign)
{
  format.noSign = '+';
  ExpectTexts({
      {"1", "+1.00000000000e+00"},
      {"-1", "-1.00000000000e+00"},
      {"0", "+0.00000000000e+00"},
  });
}

class FixedForm : public NumberFormatTest {
 protected:
  void SetUp() override { format.exponentForm = false; }
};

TEST_F(FixedForm, TwelveDigitsByDefaultWithThePointBehindTheIntegerPart)
{
  ExpectTexts({
      {"1", Blanks(4) + " 1.00000000000"},
      {"-1", Blanks(4) + "-1.00000000000"},
      {"123.456", Blanks(4) + " 123.456000000"},
      {"-123.456", Blanks(4) + "-123.456000000"},
      {"10000000000", Blanks(4) + " 10000000000.0"},
  });
}

TEST_F(FixedForm, BelowOneThereIsNoZeroBeforeThePoint)
{
  ExpectTexts({
      {"0.5", Blanks(4) + " .500000000000"},
      {"-0.125", Blanks(4) + "-.125000000000"},
  });
}

TEST_F(FixedForm, BelowATenthLeadingZerosTakeTheirPlaces)
{
  ExpectTexts({
      {"0.05", Blanks(4) + " .05000000000"},
      {"-0.0123456789012", Blanks(4) + "-.01234567890"},
      {"1e-11", Blanks(4) + " .00000000001"},
      {"1e-12", Blanks(4) + " .00000000000"},
      {"1e-1000", Blanks(4) + " .00000000000"},
  });
}

TEST_F(FixedForm, LongIntegerPartsAreFilledWithZerosAndHaveNoPoint)
{
  ExpectTexts({
      {"123456789012", Blanks(5) + " 123456789012"},
      {"1234567890123", Blanks(5) + " 1234567890120"},
      {"-1e20", Blanks(5) + "-1" + std::string(20, '0')},
  });
}

TEST_F(FixedForm, ZeroHasAZeroBeforeThePoint)
{
  EXPECT_EQ(Formatted("0"), Blanks(4) + " 0.00000000000");
  SetFormat(5, 11);
  EXPECT_EQ(Formatted("0"), " 0.00000000000");
}

TEST_F(FixedForm, WithoutDigitsOneIsWrittenAndWithFewerNone)
{
  SetFormat(15, 0);
  ExpectTexts({
      {"7", Blanks(16) + " 7"},
      {"78", Blanks(16) + " 70"},
      {"0.5", Blanks(15) + " .5"},
      {"0.05", Blanks(15) + " ."},
      {"0", Blanks(15) + " 0."},
  });
  SetFormat(15, -1);
  ExpectTexts({
      {"78", Blanks(17) + " 00"},
      {"0.05", Blanks(16) + " ."},
      {"0", Blanks(16) + " 0."},
  });
}

TEST_F(FixedForm, RoundingIsThatOfTheExponentForm)
{
  SetFormat(15, 17);
  ExpectTexts({
      {"1.23456789012345678", " 1.23456789012345708"},
      {"9.99999999999999999", " 1.00000000000000000"},
      {"-9.99999999999999999", " ..00000000000000009"},
  });
}

class PlainForm : public NumberFormatTest {
 protected:
  void SetUp() override { format.plain = true; }
};

TEST_F(PlainForm, DigitsBehindAPointAndAnExponent)
{
  ExpectTexts({
      {"0.5", " 0.5e0"},
      {"-0.5", "-0.5e0"},
      {"1", " 0.1e1"},
      {"-12.25", "-0.1225e2"},
      {"1e-10", " 0.1e-9"},
      {"1e100", " 0.1e101"},
      {"0", "0.0"},
  });
}

TEST_F(PlainForm, TheWidthIsTheNumberOfDigits)
{
  EXPECT_EQ(Formatted("0.12345678901234567"), " 0.123456789012346e0");
  SetFormat(3, 11);
  ExpectTexts({
      {"123456", " 0.123e6"},
      {"-1.2355", "-0.124e1"},
      {"0.9999", " 0.1e1"},
  });
  for (const int width : {0, -1, -1000}) {
    SetFormat(width, 11);
    EXPECT_EQ(Formatted("0.1234567890123456789"), " 0.1234567890123456789e0") << width;
  }
}

TEST_F(NumberFormatTest, NumbersOfAnyPrecisionAreWritten)
{
  mpf_set_default_prec(1000);
  Mpf third(1.0);
  mpf_div_ui(third, third, 3);
  SetFormat(60, 50);
  EXPECT_EQ(Formatted(third), Blanks(4) + " 3." + std::string(50, '3') + "e-01");
}

}  // namespace

}  // namespace varno
