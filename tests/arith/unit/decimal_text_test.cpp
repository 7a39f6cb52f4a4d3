#include "arith/decimal_text.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/scoped_global.h"

namespace arith {

using namespace support;
using varno::ScopedGlobal;
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
    EXPECT_TRUE(SetFromDecimal(number, row.text)) << row.text;
    EXPECT_TRUE(IsExactly(row.value, number)) << row.text;
  }
}

TEST(DecimalTextTest, TextThatIsNoNumberKeepsTheOldValue)
{
  for (const char* text :
       {"", "abc", "1x", "e", "--1", "1.2.3", "0x10", "1,5", "xe9999999999999999999"}) {
    Mpf number(99.0);
    EXPECT_FALSE(SetFromDecimal(number, text)) << text;
    EXPECT_TRUE(IsExactly(99, number)) << text;
  }
}

TEST(DecimalTextTest, TheNumberKeepsItsPrecision)
{
  const ScopedGlobal global;
  Mpf narrow;
  const mp_bitcnt_t precision = mpf_get_prec(narrow);
  mpf_set_default_prec(1000);
  EXPECT_TRUE(SetFromDecimal(narrow, "0.1"));
  EXPECT_EQ(mpf_get_prec(narrow), precision);
  EXPECT_NE(mpf_cmp(narrow, Mpf("0.1")), 0);
}

TEST(DecimalTextTest, TheLargestExponentsAreAccepted)
{
  Mpf number;
  EXPECT_TRUE(SetFromDecimal(number, "1e1000000000000000"));
  EXPECT_EQ(number.Sign(), 1);
  EXPECT_TRUE(SetFromDecimal(number, "-1e-1000000000000000"));
  EXPECT_EQ(number.Sign(), -1);
}

TEST(DecimalTextTest, AnExponentBeyondThemEndsTheRun)
{
  for (const std::string text :
       {"1e1000000000000001", "1E-1000000000000001", "-3@99999999999999999999"}) {
    Mpf number;
    EXPECT_EXIT(SetFromDecimal(number, text.c_str()), testing::ExitedWithCode(1),
                ExactText("#(ERR) Number \"" + text + "\" is out of range\n"));
  }
}

}  // namespace
}  // namespace arith
