#include "arith/decimal_text.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/support/scoped_precision.h"

namespace arith {

using namespace support;
namespace {

TEST(DecimalTextTest, SetsTheValueOfADecimalText)
{
  const struct {
    const char* text;
    Rational value;
  } rows[] = {
      {"0", 0},
      {"1.5", Rational(3, 2)},
      {"-2e3", -2000},
      {"25E-2", Rational(1, 4)},
      {".5", Rational(1, 2)},
      {"5@2", 500},
      {" 7", 7},
      {"1 2.5", Rational(25, 2)},
      {"0e9999999999999999999", 0},
  };
  for (const auto& row : rows) {
    Mpf number(99.0);
    EXPECT_EQ(SetFromDecimal(number, row.text), DecimalText::kNumber) << row.text;
    EXPECT_TRUE(IsExactly(row.value, number)) << row.text;
  }
}

TEST(DecimalTextTest, TextThatIsNoNumberKeepsTheOldValue)
{
  for (const char* text :
       {"", "abc", "1x", "e", "--1", "1.2.3", "0x10", "1,5", "xe9999999999999999999"}) {
    Mpf number(99.0);
    EXPECT_EQ(SetFromDecimal(number, text), DecimalText::kNoNumber) << text;
    EXPECT_TRUE(IsExactly(99, number)) << text;
  }
}

TEST(DecimalTextTest, TheNumberKeepsItsPrecision)
{
  const ScopedPrecision runPrecision(80);
  Mpf narrow;
  const mp_bitcnt_t precision = mpf_get_prec(narrow);
  mpf_set_default_prec(1000);
  EXPECT_EQ(SetFromDecimal(narrow, "0.1"), DecimalText::kNumber);
  EXPECT_EQ(mpf_get_prec(narrow), precision);
  EXPECT_NE(mpf_cmp(narrow, Mpf("0.1")), 0);
}

TEST(DecimalTextTest, TheLargestExponentsAreAccepted)
{
  Mpf number;
  EXPECT_EQ(SetFromDecimal(number, "1e5553000000000000000"), DecimalText::kNumber);
  EXPECT_EQ(number.Sign(), 1);
  EXPECT_EQ(SetFromDecimal(number, "-1e-5553000000000000000"), DecimalText::kNumber);
  EXPECT_EQ(number.Sign(), -1);
}

TEST(DecimalTextTest, TheValueCountsNotTheExponentAlone)
{
  Mpf number, plain;
  const std::string small = "0." + std::string(99, '0') + "1e5553000000000000100";
  EXPECT_EQ(SetFromDecimal(number, small.c_str()), DecimalText::kNumber);
  EXPECT_EQ(SetFromDecimal(plain, "1e5553000000000000000"), DecimalText::kNumber);
  EXPECT_EQ(mpf_eq(number, plain, 60), 1);
}

TEST(DecimalTextTest, ANumberBeyondThemIsReportedAndKeepsTheOldValue)
{
  for (const std::string& text :
       {std::string("1e5553000000000000040"), std::string("1E-5553000000000000040"),
        std::string("1e9000000000000000000"), std::string("1e-9223372036854775807"),
        std::string("-3@99999999999999999999"), std::string(30, '1') + "e5553000000000000000"}) {
    Mpf number(99.0);
    EXPECT_EQ(SetFromDecimal(number, text.c_str()), DecimalText::kOutOfRange) << text;
    EXPECT_TRUE(IsExactly(99, number)) << text;
  }
}

}  // namespace
}  // namespace arith
