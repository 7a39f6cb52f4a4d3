#include "solve/command/option_value.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
using Strings = std::vector<std::string>;

}  // namespace

TEST(WholeNumber, LimitsAreIncluded)
{
  EXPECT_EQ(WholeNumber("--n", "1", 1, 10), 1);
  EXPECT_EQ(WholeNumber("--n", "10", 1, 10), 10);
  EXPECT_EQ(WholeNumber("--n", "007", 1, 10), 7);
  EXPECT_EQ(WholeNumber("--n", "9223372036854775807", 1, kMost), kMost);
}

TEST(WholeNumber, EverythingElseIsAnError)
{
  for (const char* text : {"0", "11", "", " 1", "1 ", "+1", "-1", "1.0", "1e1", "0x1", "x",
                           "9223372036854775808", "99999999999999999999999"}) {
    EXPECT_THROW(WholeNumber("--n", text, 1, 10), UsageError) << text;
  }
  EXPECT_THROW(WholeNumber("--n", "9223372036854775808", 1, kMost), UsageError);
}

TEST(Seconds, DecimalNumbersAboveZero)
{
  EXPECT_EQ(Seconds("--s", "0.25"), 0.25);
  EXPECT_EQ(Seconds("--s", "1e3"), 1000);
  for (const char* text :
       {"", "0", "-1", "nan", "inf", "infinity", "1s", " 1", "+1", "1e999", "1e-999", "0x1p3"}) {
    EXPECT_THROW(Seconds("--s", text), UsageError) << text;
  }
}

TEST(SplitAtCommas, BlanksAroundPartsAreTakenOff)
{
  EXPECT_EQ(SplitAtCommas("--c", "x"), Strings{"x"});
  EXPECT_EQ(SplitAtCommas("--c", "x,y', z "), (Strings{"x", "y'", "z"}));
  EXPECT_EQ(SplitAtCommas("--c", "a b,\tc"), (Strings{"a b", "c"}));
}

TEST(SplitAtCommas, CommasInBracketsSeparateNothing)
{
  EXPECT_EQ(SplitAtCommas("--c", "atan2(1,2),[t<1,2:3],f((1,2),3)"),
            (Strings{"atan2(1,2)", "[t<1,2:3]", "f((1,2),3)"}));
}

TEST(SplitAtCommas, UnbalancedBracketsAreLeftToTheReader)
{
  EXPECT_EQ(SplitAtCommas("--c", "a),b"), (Strings{"a)", "b"}));
  EXPECT_EQ(SplitAtCommas("--c", "f(a,b"), Strings{"f(a,b"});
}

TEST(SplitAtCommas, EmptyPartIsAnError)
{
  for (const char* text : {"", " ", ",", "a,", ",a", "a,,b", "a, ,b"}) {
    EXPECT_THROW(SplitAtCommas("--c", text), UsageError) << text;
  }
}

}  // namespace varno::solve
