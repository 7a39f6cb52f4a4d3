#include "varno/config/setting_text.h"

#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/scoped_global.h"

namespace varno {

using arith::Mpf;
using namespace support;
namespace {

TEST(SettingTextTest, AnIntegerIsTheNumberThatTheTextBeginsWith)
{
  const struct {
    const char* text;
    int value;
  } rows[] = {
      {"12", 12},
      {"-3", -3},
      {"+4", 4},
      {"  7", 7},
      {"007", 7},
      {"12abc", 12},
      {"2.9", 2},
      {"1e3", 1},
      {"0x10", 0},
      {"abc", 0},
      {"", 0},
      {"-", 0},
      {"2147483647", INT_MAX},
      {"-2147483648", INT_MIN},
  };
  for (const auto& row : rows) EXPECT_EQ(IntegerFromText(row.text), row.value) << row.text;
}

TEST(SettingTextTest, AnIntegerBeyondTheRangeIsTheNearestInt)
{
  for (const char* text : {"2147483648", "99999999999", "99999999999999999999999"}) {
    EXPECT_EQ(IntegerFromText(text), INT_MAX) << text;
  }
  for (const char* text : {"-2147483649", "-99999999999", "-99999999999999999999999"}) {
    EXPECT_EQ(IntegerFromText(text), INT_MIN) << text;
  }
}

TEST(SettingTextTest, AFlagIsOnOnlyForTheNumber1)
{
  for (const char* text : {"1", "01", "+1", " 1", "1x", "1.9"}) {
    EXPECT_TRUE(FlagFromText(text)) << text;
  }
  for (const char* text : {"0", "2", "-1", "11", "", "true", "yes", "x1", "4294967297"}) {
    EXPECT_FALSE(FlagFromText(text)) << text;
  }
}

TEST(SettingTextTest, AFloatingPointNumberIsTheOneThatTheTextBeginsWith)
{
  const struct {
    const char* text;
    double value;
  } rows[] = {
      {"0.1", 0.1}, {"-2.5e-3", -2.5e-3}, {" 4", 4.0},     {"5x", 5.0}, {"abc", 0.0},
      {"", 0.0},    {"0x10", 16.0},       {"1e-400", 0.0},
  };
  for (const auto& row : rows) EXPECT_EQ(DoubleFromText(row.text), row.value) << row.text;
}

TEST(SettingTextTest, AFloatingPointNumberThatIsNotFiniteEndsTheRun)
{
  for (const std::string text : {"1e400", "-1e400", "inf", "nan"}) {
    EXPECT_EXIT(DoubleFromText(text.c_str()), testing::ExitedWithCode(1),
                ExactText("#(ERR) Number \"" + text + "\" is out of range\n"));
  }
}

TEST(SettingTextTest, APrecisionHoldsForNumbersMadeAfterwardsOnly)
{
  const ScopedGlobal global;
  const Mpf before;
  const mp_bitcnt_t precision = mpf_get_prec(before);
  SetPrecisionFromText("200");
  EXPECT_EQ(mpf_get_prec(before), precision);
  EXPECT_LT(precision, 200U);
  EXPECT_GE(mpf_get_prec(Mpf()), 200U);
}

TEST(SettingTextTest, APrecisionOf0OrNoNumberIsTheSmallestThereIs)
{
  const ScopedGlobal global;
  mpf_set_default_prec(1);
  const mp_bitcnt_t smallest = mpf_get_default_prec();
  for (const char* text : {"0", "many"}) {
    mpf_set_default_prec(500);
    SetPrecisionFromText(text);
    EXPECT_EQ(mpf_get_default_prec(), smallest) << text;
  }
}

TEST(SettingTextTest, APrecisionThatCannotBeAllocatedEndsTheRun)
{
  // The last is 2^31 - 2 limbs of 64 bits; GMP counts them in an int and adds one.
  for (const char* text : {"-1", "99999999999999999999", "137438953344"}) {
    EXPECT_EXIT(SetPrecisionFromText(text), testing::ExitedWithCode(1),
                ExactText("#(ERR) Out of memory\n"))
        << text;
  }
}

}  // namespace
}  // namespace varno
